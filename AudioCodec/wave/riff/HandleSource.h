// An open file, by its handle, as a source of blocks. Moves the handle's place; the handle is the caller's.
#pragma once

#include "platform/base/Types.h"
#include "riff/BlockSource.h"

class HandleSource final : public BlockSource {
public:
    explicit HandleSource(HANDLE file);  // stands at the start; the size is asked for once

private:
    size_t ReadAt(uint64_t place, void* buffer, size_t count) override;

    HANDLE m_file;
};
