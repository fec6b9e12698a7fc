// Runs read requests against one source, in order, on one thread of its own, and keeps them until they are
// collected. The thread lives from the first request to the end of the queue.
//
//   SubmitRequest --> m_work --(worker: Execute)--> m_done --> CollectRequest
//                        +-----(BeginFlush)-----------^
//
// Any thread, but one at a time in BeginFlush and EndFlush; nobody may be inside when the queue ends.
#pragma once

#include <memory>

#include "AudioCodec/graph/filter/CAsyncReadRequest.h"
#include "AudioCodec/graph/filter/CCritSec.h"
#include "AudioCodec/graph/filter/CEventObject.h"
#include "AudioCodec/graph/filter/CPointerList.h"
#include "platform/base/UniqueHandle.h"

class CAsyncRequestQueue {
public:
    using Wish = CAsyncReadRequest::Wish;

    // The source outlives the queue's requests, but is not touched by the end of a queue that runs none.
    // Throws std::bad_alloc.
    explicit CAsyncRequestQueue(CAsyncStream* source) : m_source(source) {}
    // Cancels what waits, lets the request that runs come to its end, and ends the thread.
    ~CAsyncRequestQueue();
    CAsyncRequestQueue(const CAsyncRequestQueue&) = delete;
    CAsyncRequestQueue& operator=(const CAsyncRequestQueue&) = delete;

    // Queues a read. VFW_E_BADALIGN for one that says it is aligned and isn't, E_OUTOFMEMORY,
    // VFW_E_WRONG_STATE while flushing, or why there can be no thread.
    HRESULT SubmitRequest(const Wish& wish);
    // Waits up to `milliseconds` for a request to be done and returns its outcome, context, user value and
    // bytes delivered. A cancelled one returns VFW_E_TIMEOUT with its context; VFW_E_TIMEOUT with a null
    // context means that none was done in time, VFW_E_WRONG_STATE that a flush has left none.
    HRESULT CollectRequest(DWORD milliseconds, void** context /*out*/, DWORD_PTR* user /*out*/,
                           LONG* delivered /*out: bytes*/);
    // Reads on the calling thread, beside the worker. S_FALSE with fewer bytes than asked for.
    HRESULT SyncReadAligned(int64_t position, LONG length, BYTE* buffer, LONG* delivered /*out*/,
                            void* context);
    // The same for any position, length and buffer; nobody is told how many bytes came.
    HRESULT SyncRead(int64_t position, LONG length, BYTE* buffer);
    // Cancels all that waits; returns when the request that runs has come to its end. Until EndFlush no
    // request is taken, and nobody waits in CollectRequest.
    HRESULT BeginFlush();
    HRESULT EndFlush();
    HRESULT Length(int64_t* total /*out: bytes*/, int64_t* available /*out: bytes, may be null*/);
    HRESULT Alignment(LONG* alignment /*out: bytes*/);

    bool IsAligned(int64_t value) const;
    bool IsAligned(const BYTE* buffer) const {
        return IsAligned(static_cast<int64_t>(reinterpret_cast<intptr_t>(buffer)));
    }

private:
    static DWORD RunWorker(void* queue);
    void Work();
    void RunAll(CPointerList<CAsyncReadRequest>& running /*empty before and after*/);
    HRESULT StartThread() VL_REQUIRES(m_listsLock);
    // The next request to collect, or null. `none` tells whether there will be none before the flush ends.
    std::unique_ptr<CAsyncReadRequest> TakeDone(bool& none);

    CAsyncStream* const m_source;
    CCritSec m_listsLock;  // never held across Execute or a wait
    bool m_flushing VL_GUARDED_BY(m_listsLock) = false;
    // Both lists own their requests, which move between them with their nodes.
    CPointerList<CAsyncReadRequest> m_work VL_GUARDED_BY(m_listsLock);  // waiting to run
    CPointerList<CAsyncReadRequest> m_done VL_GUARDED_BY(m_listsLock);  // waiting to be collected
    CEventObject m_workEvent{CEventObject::ResetKind::Manual};          // set while m_work holds something
    // Set while a collector need not wait: m_done holds something, or a flush has left nothing.
    CEventObject m_doneEvent{CEventObject::ResetKind::Manual};
    int32_t m_itemsOut VL_GUARDED_BY(m_listsLock) = 0;  // requests on neither list: running now
    bool m_waiting VL_GUARDED_BY(m_listsLock) = false;  // BeginFlush waits for m_itemsOut to reach 0
    CEventObject m_allDoneEvent{CEventObject::ResetKind::Automatic};  // it has
    CEventObject m_stopEvent{CEventObject::ResetKind::Manual};        // ends the worker
    UniqueHandle m_thread VL_GUARDED_BY(m_listsLock);
};
