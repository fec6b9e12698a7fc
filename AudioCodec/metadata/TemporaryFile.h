// A new, empty file in the temporary folder that only its user may read, and that is gone with this object.
#pragma once

#include "platform/file/TempFile.h"

class TemporaryFile {
public:
    TemporaryFile(const char16_t* prefix, const char16_t* extension /*with its dot*/)
        : m_made(VlCreateTempFile(prefix, extension, m_path, kRoom) != 0) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (m_made) DeleteFileW(m_path);
    }

    const char16_t* Path() const { return m_made ? m_path : nullptr; }  // null if it could not be made

private:
    static constexpr uint32_t kRoom = 1040;  // characters

    char16_t m_path[kRoom] = {};
    const bool m_made;
};
