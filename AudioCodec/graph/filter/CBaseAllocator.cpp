// The life of the pool:
//
//   idle --(1) Commit--> committed --(2) Decommit, all samples in--> idle
//                          ^   '-----(3) Decommit, some are out--> decommitting --(4) last one back--> idle
//                          '---------(5) Commit--------------------'
//
// The allocator holds a reference on itself whenever it isn't idle: samples that are out need it to
// go back to.
#include "AudioCodec/graph/filter/CBaseAllocator.h"

#include <limits>
#include <memory>
#include <utility>

#include "AudioCodec/graph/filter/CMediaSample.h"
#include "platform/sync/Waitable.h"

CBaseAllocator::CBaseAllocator(IUnknown* outer, HRESULT* result, bool hasReleaseCallbacks)
    : CUnknown(outer),
      m_semaphore(CreateSemaphoreA(nullptr, 0, std::numeric_limits<LONG>::max(), nullptr)),
      m_hasReleaseCallbacks(hasReleaseCallbacks) {
    if (!m_semaphore) *result = E_OUTOFMEMORY;
}

CBaseAllocator::~CBaseAllocator() = default;

HRESULT CBaseAllocator::NonDelegatingQueryInterface(const GUID& iid, void** object) {
    if (iid == IID_IMemAllocator || (m_hasReleaseCallbacks && iid == IID_IMemAllocatorCallbackTemp)) {
        return GetInterface(static_cast<IMemAllocatorCallbackTemp*>(this), object);
    }
    return CUnknown::NonDelegatingQueryInterface(iid, object);
}

HRESULT CBaseAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties) {
    if (!properties) return E_POINTER;
    const CritSecGuard guard(*this);
    *properties = m_wanted;
    return S_OK;
}

HRESULT CBaseAllocator::Commit() {
    const CritSecGuard guard(*this);
    if (std::exchange(m_committed, true)) return S_OK;
    // (5) The memory of a decommit that is under way is still there, and so is its reference.
    if (std::exchange(m_decommitting, false)) return S_OK;
    if (const HRESULT result = Alloc(); FAILED(result)) {  // (1)
        m_committed = false;
        return result;
    }
    AddRef();
    return S_OK;
}

HRESULT CBaseAllocator::Decommit() {
    {
        const CritSecGuard guard(*this);
        if (!m_committed && !m_decommitting) return S_OK;
        m_committed = false;
        // (3) Memory that someone still writes into can't go.
        m_decommitting = m_freeCount < m_allocated;
        WakeWaiters();  // to fail
        if (m_decommitting) return S_OK;
        Free();  // (2)
    }
    // Outside the lock: this may be the last reference, and the lock goes with the object.
    Release();
    return S_OK;
}

HRESULT CBaseAllocator::GetBuffer(IMediaSample** sample, REFERENCE_TIME* /*start*/, REFERENCE_TIME* /*end*/,
                                  DWORD flags) {
    if (!sample) return E_POINTER;
    *sample = nullptr;
    const bool waits = (flags & AM_GBF_NOWAIT) == 0;
    for (;;) {
        CMediaSample* taken = nullptr;
        {
            const CritSecGuard guard(*this);
            if (!m_committed) return VFW_E_NOT_COMMITTED;
            taken = TakeFree();
            // Counted under the same lock as the look for a sample, so that whoever returns one in between
            // can't miss this waiter.
            if (!taken && waits) ++m_waiting;
        }
        if (taken) {
            taken->m_references.Begin();
            *sample = taken;
            return S_OK;
        }
        if (!waits) return VFW_E_TIMEOUT;
        // Then everything is asked anew: the sample may have gone to another, and the pool
        // may be decommitted.
        WaitForSingleObject(m_semaphore.get(), INFINITE);
    }
}

HRESULT CBaseAllocator::ReleaseBuffer(IMediaSample* sample) {
    if (!sample) return E_POINTER;
    bool wasLast = false;
    RefPtr<IMemAllocatorNotifyCallbackTemp> notify;
    {
        const CritSecGuard guard(*this);
        AddFree(static_cast<CMediaSample*>(sample));
        WakeWaiters();
        if (m_decommitting && m_freeCount == m_allocated) {  // (4)
            Free();
            m_decommitting = false;
            wasLast = true;
        }
        notify = m_notify;
    }
    // Called without the lock, since the callback may ask for a sample.
    if (notify) notify->NotifyRelease();
    if (wasLast) Release();
    return S_OK;
}

HRESULT CBaseAllocator::SetNotify(IMemAllocatorNotifyCallbackTemp* notify) {
    // Declared in front of the guard, so the old one is dropped after the lock is left.
    auto old = RefPtr<IMemAllocatorNotifyCallbackTemp>::Retain(notify);
    const CritSecGuard guard(*this);
    std::swap(m_notify, old);
    return S_OK;
}

HRESULT CBaseAllocator::GetFreeCount(LONG* free) {
    if (!free) return E_POINTER;
    const CritSecGuard guard(*this);
    // Before Alloc all of the wanted ones count as free.
    *free = m_wanted.cBuffers - m_allocated + m_freeCount;
    return S_OK;
}

void CBaseAllocator::AddFree(CMediaSample* sample) {
    sample->m_next = std::exchange(m_free, sample);
    ++m_freeCount;
}

CMediaSample* CBaseAllocator::TakeFree() {
    CMediaSample* sample = m_free;
    if (sample) {
        m_free = sample->m_next;
        --m_freeCount;
    }
    return sample;
}

void CBaseAllocator::DeleteFreeSamples() {
    while (CMediaSample* sample = TakeFree()) delete sample;
}

// As many as wait, and the count goes to 0 with them: a count left over would let a later waiter
// through without need.
void CBaseAllocator::WakeWaiters() {
    if (const LONG waiting = std::exchange(m_waiting, 0); waiting > 0) {
        ReleaseSemaphore(m_semaphore.get(), waiting, nullptr);
    }
}
