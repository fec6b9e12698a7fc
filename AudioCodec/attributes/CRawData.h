// An owned block of bytes that is all zeros when it is new. Large blocks start on a page boundary. Each
// operation is guarded; the pointers that GetDataAt hands out are not.
#pragma once

#include <cstdint>
#include <memory>

#include "AudioCodec/shell/object/ResultCodes.h"
#include "platform/base/UniqueHandle.h"

class CRawData {
public:
    // A block that can't be had reads as size 0.
    CRawData(uint32_t size /*bytes*/, bool pageAligned);
    CRawData(const CRawData&) = delete;
    CRawData& operator=(const CRawData&) = delete;
    virtual ~CRawData() = default;

    // Makes the block `size` bytes of zeros; its contents are lost. The same size again keeps the memory, and
    // then `pageAligned` is not looked at. RESULT_NO_MEMORY leaves the block empty.
    Result Allocate(uint32_t size /*bytes*/, bool pageAligned);
    // The byte at `offset`, or the last one where the block ends before it. Null for an empty block.
    uint8_t* GetDataAt(uint32_t offset) const;
    uint32_t GetSize() const;  // bytes

private:
    void Drop();
    bool TakeBlock(uint32_t size);

    uint32_t m_size = 0;
    uint8_t* m_data = nullptr;           // start of the block, within m_block
    std::unique_ptr<uint8_t[]> m_block;  // as the heap gave it
    uint32_t m_blockSize = 0;            // bytes in m_block, m_slack included
    uint32_t m_alignOffset = 0;          // from m_block to m_data
    uint32_t m_slack = 0;                // bytes on top, to move the start to a page boundary
    bool m_pageAligned = false;          // as asked for
    UniqueHandle m_mutex;                // null if there was none to be had: see MutexGuard
};
