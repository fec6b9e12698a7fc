#include "capi/input/FileInput.h"

#include "capi/SystemFailure.h"

FileInput::FileInput(Descriptor file, uint64_t start, uint64_t size, FileLabel label, UniqueHandle kept)
    : Input(size, std::move(label)), m_file(std::move(file)), m_start(start), m_kept(std::move(kept)) {}

size_t FileInput::Get(uint64_t place, void* buffer, size_t count) {
    size_t done = 0;
    const int error = m_file.ReadAt(buffer, count, m_start + place, done);
    if (done == 0) RequireSystem(error, "Reading", Label());  // else the next call meets it again
    return done;
}
