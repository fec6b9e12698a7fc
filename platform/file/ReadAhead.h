// Makes large reads of small ones: a read that goes on where the last one ended takes the bytes that follow
// along, and the next ones cost no call of the system. Large blocks, and reads elsewhere, go straight to the
// caller's buffer. For files that nobody changes meanwhile: what was read once isn't asked for again. Knows
// no handle and no share mode.
//
// Decisions: there is none for writing. A write that fails has to fail in the very call that brings the
// bytes, since whoever writes is told nothing when the file is closed.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/file/SystemFile.h"

class ReadAhead {
public:
    // Takes the memory that it reads ahead into, so that no read does. Where there is none, nothing is read
    // ahead.
    void TakeMemory();

    // As SystemFile::ReadAt, but after an error `done` may tell of fewer bytes than came.
    int ReadAt(const SystemFile& file, void* buffer, size_t size, int64_t place, size_t& done);

private:
    int Fill(const SystemFile& file, int64_t place);
    size_t Take(uint8_t* buffer, size_t size, int64_t place) const;

    std::unique_ptr<uint8_t[]> m_bytes;  // may be null
    int64_t m_at = 0;                    // their place in the file
    size_t m_count = 0;
    int64_t m_next = -1;  // where the last read ended
};
