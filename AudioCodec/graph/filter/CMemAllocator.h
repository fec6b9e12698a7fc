// An allocator whose buffers are slices of one block of memory, which stays until the allocator goes or other
// sizes are committed. Any thread.
#pragma once

#include <memory>

#include "AudioCodec/graph/filter/CBaseAllocator.h"

class CMemAllocator final : public CBaseAllocator {
public:
    // As CBaseAllocator.
    CMemAllocator(IUnknown* outer, HRESULT* result) : CBaseAllocator(outer, result) {}
    ~CMemAllocator() override;

    // Beside what the contract tells: E_INVALIDARG for a negative prefix, and for buffers that don't fit into
    // 31 bits once they are rounded up to the alignment.
    HRESULT SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override;

private:
    void Free() override {}
    HRESULT Alloc() override VL_REQUIRES(this);
    bool MakeSamples(int64_t slice) VL_REQUIRES(this);
    void FreeMemory() VL_REQUIRES(this);

    struct Unmap {
        void operator()(BYTE* block) const;
    };
    std::unique_ptr<BYTE, Unmap> m_block VL_GUARDED_BY(this);
};
