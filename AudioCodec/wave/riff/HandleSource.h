// An open file, by its handle, as a source of blocks. Moves the handle's place; the handle is the caller's.
// To its reader a read that the system refuses looks like the end of the file; whoever must know asks after.
#pragma once

#include "platform/base/Types.h"
#include "riff/BlockSource.h"

class HandleSource final : public BlockSource {
public:
    explicit HandleSource(HANDLE file);  // stands at the start; the size is asked for once

    bool HasFailed() const { return m_failed; }  // the system refused a read, ever

private:
    size_t ReadAt(uint64_t place, void* buffer, size_t count) override;

    HANDLE m_file;
    bool m_failed = false;
};
