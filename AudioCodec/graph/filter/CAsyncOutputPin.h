// The output pin of a source that is read from: offers IAsyncReader on top of its filter's request queue.
// Times of samples are byte positions times kTimeUnitsPerSecond. Takes no connection with a pin that doesn't
// ask for IAsyncReader.
//
// Any thread, but one at a time flushes. Reading takes no lock of the filter.
#pragma once

#include "AudioCodec/graph/filter/CAsyncRequestQueue.h"
#include "AudioCodec/graph/filter/CBasePin.h"
#include "platform/media/TransportInterfaces.h"

class CAsyncReader;

class CAsyncOutputPin final : public IAsyncReader, public CBasePin {
public:
    // Part of the filter. Throws std::bad_alloc.
    CAsyncOutputPin(CAsyncReader* reader, CAsyncRequestQueue* queue, CCritSec* lock);

    HRESULT QueryInterface(const GUID& iid, void** object) override {
        return CBasePin::QueryInterface(iid, object);
    }
    uint32_t AddRef() override { return CBasePin::AddRef(); }
    uint32_t Release() override { return CBasePin::Release(); }
    HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) override;

    HRESULT RequestAllocator(IMemAllocator* preferred, ALLOCATOR_PROPERTIES* properties,
                             IMemAllocator** actual) override;
    // Beside what the contract tells: E_INVALIDARG for a sample whose times lie in front of the source, after
    // it, or the wrong way round, VFW_E_BUFFER_OVERFLOW for one that asks for more than its buffer holds.
    HRESULT Request(IMediaSample* sample, DWORD_PTR user) override;
    HRESULT WaitForNext(DWORD milliseconds, IMediaSample** sample, DWORD_PTR* user) override;
    HRESULT SyncReadAligned(IMediaSample* sample) override;
    HRESULT SyncRead(LONGLONG position, LONG length, BYTE* buffer) override;
    HRESULT Length(LONGLONG* total, LONGLONG* available) override;
    HRESULT BeginFlush() override;  // of both faces
    HRESULT EndFlush() override;

    HRESULT Connect(IPin* receiver, const AM_MEDIA_TYPE* type) override;
    HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override;
    HRESULT CheckConnect(IPin* peer) override;
    HRESULT BreakConnect() override;
    HRESULT CompleteConnect(IPin* receiver) override;
    HRESULT GetMediaType(int index, MediaType* type) override;

private:
    HRESULT PrepareRead(IMediaSample& sample, CAsyncReadRequest::Wish& wish);
    HRESULT NewAllocator(ALLOCATOR_PROPERTIES* properties, IMemAllocator** actual);
    // S_OK if the allocator takes the properties and returns an alignment that fits.
    HRESULT Settle(IMemAllocator& allocator, ALLOCATOR_PROPERTIES* properties);

    CAsyncReader* const m_reader;
    CAsyncRequestQueue* const m_queue;
    std::atomic<bool> m_queriedForAsyncReader = false;  // since the connection began
};
