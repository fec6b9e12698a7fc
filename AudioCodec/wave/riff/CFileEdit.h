// Reads and writes at places of an open file, and takes its writes back unless they are to stay: what was
// begun and not kept is undone by the destructor, the last change first. Knows nothing of chunks. One thread
// at a time; the handle is the caller's, and nobody else writes through it meanwhile.
//
// Decisions: A change that can't be taken back ends the undoing, so that no older one is taken back under a
// newer one that stays.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/base/Types.h"

class CFileEdit {
public:
    explicit CFileEdit(HANDLE file);  // open for reading and writing
    CFileEdit(const CFileEdit&) = delete;
    CFileEdit& operator=(const CFileEdit&) = delete;
    ~CFileEdit();

    uint64_t Size() const { return m_size; }  // of the file, in bytes

    // All of these return false for a failure of the system.

    // False also for fewer bytes than asked.
    bool Read(uint64_t place, void* buffer, size_t count) const;

    // Writes fewer than 4 GiB; after the end too, zeros fill the gap. Before Keep, bytes that stand there
    // already are not written again. May throw bad_alloc before Keep, with nothing written.
    bool Write(uint64_t place, const void* bytes, size_t count);

    // Cuts the file. Where that takes away bytes that were there at first, neither this nor what was written
    // before can be taken back then.
    bool Cut(uint64_t size);

    // Waits until all changes are on the medium; does nothing where there are no new ones.
    bool Flush();

    // What was written so far stays, and what is written from now on too.
    void Keep();

private:
    struct Change {
        uint64_t place;
        std::vector<uint8_t> before;  // what the file held there
        uint64_t size;                // of the file before it
    };

    bool MoveTo(uint64_t place) const;
    size_t Put(uint64_t place, const void* bytes, size_t count);
    bool Resize(uint64_t size);
    bool TakeBack(const Change& change);

    HANDLE m_file;
    uint64_t m_size;
    uint64_t m_firstSize;  // what lies after it is taken back by a cut
    bool m_kept = false;
    bool m_flushed = true;  // nothing was changed since
    std::vector<Change> m_changes;
};
