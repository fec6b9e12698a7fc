#include "AudioCodec/wave/riff/HandleSource.h"

#include "platform/base/LastError.h"
#include "platform/file/File.h"

namespace {

uint64_t SizeOf(HANDLE file) {
    DWORD high = 0;
    const DWORD low = GetFileSize(file, &high);
    return uint64_t{high} << 32 | low;
}

}  // namespace

HandleSource::HandleSource(HANDLE file) : BlockSource(SizeOf(file)), m_file(file) {}

size_t HandleSource::ReadAt(uint64_t place, void* buffer, size_t count) {
    auto high = static_cast<LONG>(place >> 32);
    SetLastError(ERROR_SUCCESS);
    SetFilePointer(m_file, static_cast<LONG>(place), &high, FILE_BEGIN);
    DWORD done = 0;
    if (GetLastError() != ERROR_SUCCESS) return 0;
    return ReadFile(m_file, buffer, static_cast<DWORD>(count), &done, nullptr) ? done : 0;
}
