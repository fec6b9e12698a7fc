// A small WAV file of silence with the "INFO" list of a source, as a stream: so every kind of audio, cut or
// not, gives its tags to whoever reads WAV. Reads the list out of the source, block by block, and keeps none
// of it.
#pragma once

#include <exception>
#include <span>

#include "capi/audio/ReadOnlyStream.h"
#include "capi/input/Input.h"
#include "capi/input/InputSource.h"
#include "capi/input/SourceFacts.h"

class ListFile final : public ReadOnlyStream {
public:
    // Both are borrowed. Of a list that the source's end cuts off it has the entries before the end. Throws
    // Failure, VLW_DAMAGED for a list of more than 64 MiB.
    ListFile(Input& input, const SourceFacts& facts);

    bool HasEntries() const { return m_size != 0; }

    int32_t Read(void* buffer, uint32_t size, uint32_t* done) override;
    // Throws what failed in a read.
    void ThrowFailure() const;

private:
    static constexpr size_t kHeadSize = 58;

    uint64_t SizeOfStream() const override { return kHeadSize + m_size; }
    void ReadEntries(uint64_t at, uint8_t* buffer, size_t size);
    uint64_t WholeEntries();

    const std::span<const uint8_t> m_held;  // of an input in order
    InputBlocks m_blocks;
    uint64_t m_listAt = 0;
    uint64_t m_size = 0;  // of the entries
    uint8_t m_head[kHeadSize] = {};
    std::exception_ptr m_failure;
};
