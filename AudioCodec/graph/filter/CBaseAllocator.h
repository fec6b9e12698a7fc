// The pool of samples behind an allocator: the free ones, those who wait for one, and the life of the pool
// from commit to decommit. Leaves the memory, and how sizes are agreed on, to the class derived from it.
//
// Any thread. It is its own lock, left before callbacks, waits and the dropping of references.
#pragma once

#include "AudioCodec/graph/filter/CCritSec.h"
#include "AudioCodec/graph/filter/CUnknown.h"
#include "platform/base/UniqueHandle.h"
#include "platform/com/RefPtr.h"
#include "platform/media/TransportInterfaces.h"

class CMediaSample;

class CBaseAllocator : public CUnknown, public IMemAllocatorCallbackTemp, public CCritSec {
public:
    // Without a reference; the outer object may be null. `result` gets E_OUTOFMEMORY if the allocator can't
    // be used, and stays untouched otherwise. Without release callbacks it shows IMemAllocator alone.
    CBaseAllocator(IUnknown* outer, HRESULT* result, bool hasReleaseCallbacks = true);
    ~CBaseAllocator() override;

    HRESULT QueryInterface(const GUID& iid, void** object) override {
        return GetOwner()->QueryInterface(iid, object);
    }
    uint32_t AddRef() override { return GetOwner()->AddRef(); }
    uint32_t Release() override { return GetOwner()->Release(); }
    HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) override;

    HRESULT GetProperties(ALLOCATOR_PROPERTIES* properties) override;
    // A committed allocator holds a reference on itself.
    HRESULT Commit() override;
    HRESULT Decommit() override;
    HRESULT GetBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* end,
                      DWORD flags) override;
    HRESULT ReleaseBuffer(IMediaSample* sample) override;
    HRESULT SetNotify(IMemAllocatorNotifyCallbackTemp* notify) override;
    HRESULT GetFreeCount(LONG* free) override;

protected:
    // All samples are back after a decommit.
    virtual void Free() VL_REQUIRES(this) = 0;
    // Makes the memory and the samples, and adds them to the free ones.
    virtual HRESULT Alloc() VL_REQUIRES(this) = 0;

    void AddFree(CMediaSample* sample) VL_REQUIRES(this);
    CMediaSample* TakeFree() VL_REQUIRES(this);  // null if there is none
    void DeleteFreeSamples() VL_REQUIRES(this);

    ALLOCATOR_PROPERTIES m_wanted VL_GUARDED_BY(this) = {};  // cbBuffer without the prefix
    LONG m_freeCount VL_GUARDED_BY(this) = 0;
    LONG m_allocated VL_GUARDED_BY(this) = 0;    // samples there are
    bool m_changed VL_GUARDED_BY(this) = false;  // m_wanted, since the last Alloc
    bool m_committed VL_GUARDED_BY(this) = false;

private:
    void WakeWaiters() VL_REQUIRES(this);

    const UniqueHandle m_semaphore;  // those who wait for a sample
    const bool m_hasReleaseCallbacks;
    CMediaSample* m_free VL_GUARDED_BY(this) = nullptr;
    LONG m_waiting VL_GUARDED_BY(this) = 0;
    bool m_decommitting VL_GUARDED_BY(this) = false;  // until the last sample is back
    RefPtr<IMemAllocatorNotifyCallbackTemp> m_notify VL_GUARDED_BY(this);
};
