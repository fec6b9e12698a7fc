// The file behind a handle, for the layer's own functions.
#pragma once

#include "platform/base/HandleObject.h"
#include "platform/file/ReadAhead.h"
#include "platform/file/SystemFile.h"

class FileObject final : public HandleObject {
public:
    static constexpr uint32_t kKind = kFile;
    FileObject() : HandleObject(kKind) {}

    SystemFile m_file;
    DWORD m_access = 0;   // rights of this handle; the descriptor may have more
    int64_t m_place = 0;  // bytes from the start; one thread at a time uses a handle
    // Whether nobody, this handle included, can change the file as long as it is open.
    bool m_isSteady = false;
    ReadAhead m_ahead;  // of a steady one
};
