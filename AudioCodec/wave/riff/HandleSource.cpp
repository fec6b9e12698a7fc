#include "AudioCodec/wave/riff/HandleSource.h"

#include "platform/file/FilePointer.h"

HandleSource::HandleSource(HANDLE file) : BlockSource(SizeOfFile(file)), m_file(file) {}

size_t HandleSource::ReadAt(uint64_t place, void* buffer, size_t count) {
    DWORD done = 0;
    const bool read = MoveFilePointer(m_file, static_cast<int64_t>(place), FILE_BEGIN) &&
                      ReadFile(m_file, buffer, static_cast<DWORD>(count), &done, nullptr);
    m_failed |= !read;
    return read ? done : 0;
}
