#include "platform/file/TempFile.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>

#include "platform/base/Border.h"
#include "platform/base/LastError.h"
#include "platform/base/Utf.h"
#include "platform/file/ErrorTable.h"
#include "platform/file/SystemFile.h"
#include "platform/file/TempFolder.h"

namespace {

constexpr std::string_view kMarks = "XXXXXX";  // what the system replaces, in plain letters

// Runs `work`, which returns an errno.
template <class Work>
BOOL Answered(Work work) {
    const auto onThrow = [](bool) { return FailWith(ERROR_NOT_ENOUGH_MEMORY); };
    return AtBorder(onThrow, [&] {
        const int error = work();
        return error == 0 ? TRUE : FailWith(ErrorFromErrno(error));
    });
}

}  // namespace

BOOL VlCreateTempFile(const WCHAR* prefix, const WCHAR* extension, WCHAR* path, DWORD room) {
    if (!prefix || !extension || !path) return FailWith(ERROR_INVALID_PARAMETER);
    return Answered([&] {
        const std::string suffix = Utf::ToUtf8(extension);
        std::string name = TempFolderPath() + Utf::ToUtf8(prefix) + "-" + std::string(kMarks) + suffix;
        const std::u16string wide = Utf::FromUtf8(name);
        if (wide.size() >= room) return ENOBUFS;
        path[wide.copy(path, room - 1)] = 0;
        const int error = SystemFile::CreateTemporary(name, static_cast<int>(suffix.size()));
        // From here on nothing may fail: there is a file.
        const char* const made = name.data() + name.size() - suffix.size() - kMarks.size();
        std::copy_n(made, kMarks.size(), path + wide.rfind(u"-XXXXXX") + 1);
        return error;
    });
}

BOOL DeleteFileW(const WCHAR* path) {
    if (!path) return FailWith(ERROR_INVALID_PARAMETER);
    return Answered([&] { return SystemFile::Remove(Utf::ToUtf8(path)); });
}
