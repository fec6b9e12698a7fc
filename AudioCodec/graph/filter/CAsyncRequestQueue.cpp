// Each request is in one place at a time: (1) m_work, (2) the worker's own list while it runs, counted by
// m_itemsOut, (3) m_done, (4) the collector. It changes places under m_listsLock, and the events of both
// lists are set and reset under it too, so an event never tells of a list as it was before.
#include "AudioCodec/graph/filter/CAsyncRequestQueue.h"

#include <new>

#include "platform/base/LastError.h"
#include "platform/sync/Thread.h"

namespace {
// A last error as a result; values that are results already stay.
HRESULT ResultOfError(DWORD error) {
    constexpr uint32_t kFailureOfTheSystem = 0x80070000;
    const auto value = static_cast<int32_t>(error);
    return value > 0 ? static_cast<HRESULT>((error & 0xFFFF) | kFailureOfTheSystem) : value;
}
}  // namespace

CAsyncRequestQueue::~CAsyncRequestQueue() {
    // Nothing new is taken from here on, and the request that runs ends before the worker is told to.
    BeginFlush();
    m_stopEvent.Set();
    if (m_thread) WaitForSingleObject(m_thread.get(), INFINITE);
    m_thread.reset();
    while (CAsyncReadRequest* request = m_done.RemoveHead()) delete request;
}

HRESULT CAsyncRequestQueue::SubmitRequest(const Wish& wish) {
    if (wish.aligned && !(IsAligned(wish.start) && IsAligned(wish.length) && IsAligned(wish.buffer))) {
        return VFW_E_BADALIGN;
    }
    std::unique_ptr<CAsyncReadRequest> request(new (std::nothrow) CAsyncReadRequest(m_source, wish));
    if (!request) return E_OUTOFMEMORY;
    const CritSecGuard guard(m_listsLock);
    if (m_flushing) return VFW_E_WRONG_STATE;
    // Before the request is queued: what no thread can be had for must not wait in the list.
    if (const HRESULT result = StartThread(); FAILED(result)) return result;
    // (1) The only step for which a node is made. It goes on with the request from list to list.
    if (!m_work.AddTail(request.get())) return E_OUTOFMEMORY;
    static_cast<void>(request.release());  // the list's
    m_workEvent.Set();
    return S_OK;
}

HRESULT CAsyncRequestQueue::CollectRequest(DWORD milliseconds, void** context, DWORD_PTR* user,
                                           LONG* delivered) {
    if (!context || !user || !delivered) return E_POINTER;
    *context = nullptr;
    // The event is for all collectors: who comes second waits again, for the whole time.
    while (m_doneEvent.Wait(milliseconds)) {
        bool none = false;
        const auto request = TakeDone(none);
        if (none) return VFW_E_WRONG_STATE;
        if (!request) continue;  // another thread was faster
        *context = request->Context();
        *user = request->User();
        // (4) Of a request that ran: what came, no longer what was asked for.
        *delivered = request->Length();
        return request->Outcome();
    }
    return VFW_E_TIMEOUT;
}

HRESULT CAsyncRequestQueue::SyncReadAligned(int64_t position, LONG length, BYTE* buffer, LONG* delivered,
                                            void* context) {
    if (!delivered) return E_POINTER;
    if (!IsAligned(position) || !IsAligned(length) || !IsAligned(buffer)) return VFW_E_BADALIGN;
    CAsyncReadRequest request(m_source, {position, length, TRUE, buffer, context, 0});
    // On this thread; the source's own lock keeps it apart from the request that the worker runs.
    const HRESULT result = request.Execute();
    *delivered = request.Length();
    return result;
}

HRESULT CAsyncRequestQueue::SyncRead(int64_t position, LONG length, BYTE* buffer) {
    const BOOL aligned = IsAligned(position) && IsAligned(length) && IsAligned(buffer);
    return CAsyncReadRequest(m_source, {position, length, aligned, buffer, nullptr, 0}).Execute();
}

HRESULT CAsyncRequestQueue::BeginFlush() {
    {
        const CritSecGuard guard(m_listsLock);
        m_flushing = true;
        // From (1) to (3) without running: they come out as VFW_E_TIMEOUT, so whoever sent them gets
        // each one back.
        while (m_work.MoveHeadTo(m_done)) m_doneEvent.Set();
        m_workEvent.Reset();
        // While this is set no collector is told that nothing will come: the request that runs will.
        m_waiting = m_itemsOut != 0;
        if (!m_waiting) {
            m_doneEvent.Set();
            return S_OK;
        }
    }
    for (;;) {
        // Without the lock, which the worker needs to bring the request to m_done.
        m_allDoneEvent.Wait();
        const CritSecGuard guard(m_listsLock);
        if (m_itemsOut != 0) continue;
        m_waiting = false;
        m_doneEvent.Set();
        return S_OK;
    }
}

HRESULT CAsyncRequestQueue::EndFlush() {
    const CritSecGuard guard(m_listsLock);
    m_flushing = false;
    // The flush let collectors pass; from here on they wait for what is there.
    if (m_done.IsEmpty()) {
        m_doneEvent.Reset();
    } else {
        m_doneEvent.Set();
    }
    return S_OK;
}

HRESULT CAsyncRequestQueue::Length(int64_t* total, int64_t* available) {
    if (!total) return E_POINTER;
    *total = m_source->Size(available);
    return S_OK;
}

HRESULT CAsyncRequestQueue::Alignment(LONG* alignment) {
    if (!alignment) return E_POINTER;
    *alignment = static_cast<LONG>(m_source->Alignment());
    return S_OK;
}

bool CAsyncRequestQueue::IsAligned(int64_t value) const {
    return (value & (int64_t{m_source->Alignment()} - 1)) == 0;
}

HRESULT CAsyncRequestQueue::StartThread() {
    if (m_thread) return S_OK;
    m_stopEvent.Reset();
    m_thread.reset(CreateThread(nullptr, 0, &RunWorker, this, 0, nullptr));
    return m_thread ? S_OK : ResultOfError(GetLastError());
}

DWORD CAsyncRequestQueue::RunWorker(void* queue) {
    static_cast<CAsyncRequestQueue*>(queue)->Work();
    return 0;
}

void CAsyncRequestQueue::Work() {
    constexpr DWORD kWork = WAIT_OBJECT_0 + 1;
    const HANDLE events[] = {m_stopEvent.Handle(), m_workEvent.Handle()};  // stop wins
    // Its node takes a request from list to list, so that a finished one can't be lost for want of memory.
    CPointerList<CAsyncReadRequest> running;
    while (WaitForMultipleObjects(2, events, FALSE, INFINITE) == kWork) RunAll(running);
}

// Runs requests until none waits.
void CAsyncRequestQueue::RunAll(CPointerList<CAsyncReadRequest>& running) {
    for (;;) {
        CAsyncReadRequest* request = nullptr;
        {
            const CritSecGuard guard(m_listsLock);
            request = m_work.MoveHeadTo(running);
            if (m_work.IsEmpty()) m_workEvent.Reset();
            if (!request) return;
            ++m_itemsOut;
        }
        // (2) Without the lock: a slow source must hold up neither those who submit nor those who collect.
        request->Execute();
        const CritSecGuard guard(m_listsLock);
        // (3) In one go with the count: when BeginFlush returns, the request can be collected.
        running.MoveHeadTo(m_done);
        m_doneEvent.Set();
        --m_itemsOut;
        if (m_itemsOut == 0 && m_waiting) m_allDoneEvent.Set();
    }
}

std::unique_ptr<CAsyncReadRequest> CAsyncRequestQueue::TakeDone(bool& none) {
    const CritSecGuard guard(m_listsLock);
    std::unique_ptr<CAsyncReadRequest> request(m_done.RemoveHead());
    const bool flushed = m_flushing && !m_waiting;
    // After a flush the event stays set, so that no collector can block.
    if (m_done.IsEmpty() && !flushed) m_doneEvent.Reset();
    none = !request && flushed;
    return request;
}
