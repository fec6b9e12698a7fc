#include "platform/file/TempFolder.h"

#include <cstdlib>
#include <filesystem>

#include "platform/base/Border.h"
#include "platform/base/LastError.h"

DWORD GetTempPathA(DWORD size, char* buffer) {
    const auto onThrow = [](bool) { return SetLastError(ERROR_NOT_ENOUGH_MEMORY), DWORD{0}; };
    return AtBorder(onThrow, [&] {
        const char* const named = std::getenv("TMPDIR");
        std::error_code error;
        std::string folder = std::filesystem::absolute(named && *named ? named : "/tmp", error).string();
        if (folder.empty() || folder.back() != '/') folder += '/';
        const auto length = static_cast<DWORD>(folder.size());
        if (!buffer || size <= length) return length + 1;
        buffer[folder.copy(buffer, length)] = 0;
        return length;
    });
}
