// An allocator as its users hold it.
#pragma once

#include "AudioCodec/graph/filter/CMemAllocator.h"

inline RefPtr<IMemAllocator> NewTestAllocator() {
    HRESULT result = S_OK;
    return RefPtr<IMemAllocator>::Retain(new CMemAllocator(nullptr, &result));
}

// Agrees on sizes and commits.
inline HRESULT CommitBuffers(IMemAllocator& allocator, LONG count, LONG size) {
    ALLOCATOR_PROPERTIES wanted = {.cBuffers = count, .cbBuffer = size, .cbAlign = 1, .cbPrefix = 0}, actual;
    const HRESULT result = allocator.SetProperties(&wanted, &actual);
    return FAILED(result) ? result : allocator.Commit();
}

inline RefPtr<IMediaSample> TakeSample(IMemAllocator& allocator, DWORD flags = 0) {
    RefPtr<IMediaSample> sample;
    allocator.GetBuffer(sample.Put(), nullptr, nullptr, flags);
    return sample;
}
