#include "platform/file/TempFolder.h"

#include <cstdlib>
#include <string>

DWORD GetTempPathA(DWORD size, char* buffer) {
    const char* const named = std::getenv("TMPDIR");
    std::string folder = named && *named == '/' ? named : "/tmp";
    if (folder.back() != '/') folder += '/';
    const auto length = static_cast<DWORD>(folder.size());
    if (!buffer || size <= length) return length + 1;
    buffer[folder.copy(buffer, length)] = 0;
    return length;
}
