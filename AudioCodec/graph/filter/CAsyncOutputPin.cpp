#include "AudioCodec/graph/filter/CAsyncOutputPin.h"

#include <new>

#include "AudioCodec/graph/filter/CAsyncReader.h"
#include "AudioCodec/graph/filter/CMemAllocator.h"

CAsyncOutputPin::CAsyncOutputPin(CAsyncReader* reader, CAsyncRequestQueue* queue, CCritSec* lock)
    : CBasePin(reader, lock, u"Output", PINDIR_OUTPUT), m_reader(reader), m_queue(queue) {}

HRESULT CAsyncOutputPin::NonDelegatingQueryInterface(const GUID& iid, void** object) {
    if (iid != IID_IAsyncReader) return CBasePin::NonDelegatingQueryInterface(iid, object);
    // What CompleteConnect looks at: a receiver that doesn't ask for this would wait for samples
    // that nobody sends.
    m_queriedForAsyncReader = true;
    return GetInterface(static_cast<IAsyncReader*>(this), object);
}

HRESULT CAsyncOutputPin::RequestAllocator(IMemAllocator* preferred, ALLOCATOR_PROPERTIES* properties,
                                          IMemAllocator** actual) {
    if (!properties || !actual) return E_POINTER;
    *actual = nullptr;
    // Reads go straight into the samples, so their alignment must be one that the source can read into.
    if (properties->cbAlign == 0 || !m_queue->IsAligned(properties->cbAlign)) {
        m_queue->Alignment(&properties->cbAlign);
    }
    // One that doesn't fit is no failure: the receiver gets another.
    if (preferred && SUCCEEDED(Settle(*preferred, properties))) {
        preferred->AddRef();
        *actual = preferred;
        return S_OK;
    }
    return NewAllocator(properties, actual);
}

HRESULT CAsyncOutputPin::Request(IMediaSample* sample, DWORD_PTR user) {
    if (!sample) return E_POINTER;
    CAsyncReadRequest::Wish wish = {.aligned = TRUE, .context = sample, .user = user};
    const HRESULT result = PrepareRead(*sample, wish);
    return FAILED(result) ? result : m_queue->SubmitRequest(wish);
}

HRESULT CAsyncOutputPin::WaitForNext(DWORD milliseconds, IMediaSample** sample, DWORD_PTR* user) {
    if (!sample) return E_POINTER;
    void* context = nullptr;
    LONG delivered = 0;
    const HRESULT result = m_queue->CollectRequest(milliseconds, &context, user, &delivered);
    *sample = static_cast<IMediaSample*>(context);
    // After a failure the sample comes back all the same, with the length that it had.
    if (SUCCEEDED(result)) (*sample)->SetActualDataLength(delivered);
    return result;
}

HRESULT CAsyncOutputPin::SyncReadAligned(IMediaSample* sample) {
    if (!sample) return E_POINTER;
    CAsyncReadRequest::Wish wish;
    if (const HRESULT result = PrepareRead(*sample, wish); FAILED(result)) return result;
    LONG delivered = 0;
    const HRESULT result = m_queue->SyncReadAligned(wish.start, wish.length, wish.buffer, &delivered, sample);
    sample->SetActualDataLength(delivered);
    return result;
}

HRESULT CAsyncOutputPin::SyncRead(LONGLONG position, LONG length, BYTE* buffer) {
    return m_queue->SyncRead(position, length, buffer);
}

HRESULT CAsyncOutputPin::Length(LONGLONG* total, LONGLONG* available) {
    return m_queue->Length(total, available);
}

HRESULT CAsyncOutputPin::BeginFlush() { return m_queue->BeginFlush(); }

HRESULT CAsyncOutputPin::EndFlush() { return m_queue->EndFlush(); }

HRESULT CAsyncOutputPin::Connect(IPin* receiver, const AM_MEDIA_TYPE* type) {
    return m_reader->Connect(receiver, type);
}

HRESULT CAsyncOutputPin::CheckMediaType(const AM_MEDIA_TYPE& type) {
    const CritSecGuard guard(*m_lock);
    const AM_MEDIA_TYPE& own = m_reader->SourceType();
    // A source that doesn't know its subtype fits any.
    const bool fits =
        own.majortype == type.majortype && (own.subtype == GUID_NULL || own.subtype == type.subtype);
    return fits ? S_OK : S_FALSE;
}

HRESULT CAsyncOutputPin::CheckConnect(IPin* peer) {
    // An attempt that failed may have left it set, for a receiver that is no longer asked.
    m_queriedForAsyncReader = false;
    return CBasePin::CheckConnect(peer);
}

HRESULT CAsyncOutputPin::BreakConnect() {
    m_queriedForAsyncReader = false;
    return CBasePin::BreakConnect();
}

HRESULT CAsyncOutputPin::CompleteConnect(IPin* /*receiver*/) {
    return m_queriedForAsyncReader ? S_OK : VFW_E_NO_TRANSPORT;
}

HRESULT CAsyncOutputPin::GetMediaType(int index, MediaType* type) {
    if (index < 0) return E_INVALIDARG;
    if (index > 0) return VFW_S_NO_MORE_ITEMS;
    if (!type) return E_POINTER;
    if (!m_reader) return E_UNEXPECTED;
    return type->Assign(m_reader->SourceType());
}

// What the sample asks for, cut to the end of the source.
HRESULT CAsyncOutputPin::PrepareRead(IMediaSample& sample, CAsyncReadRequest::Wish& wish) {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    if (const HRESULT result = sample.GetTime(&start, &stop); FAILED(result)) return result;
    if (start < 0 || stop < start) return E_INVALIDARG;
    wish.start = start / kTimeUnitsPerSecond;
    int64_t length = (stop - start) / kTimeUnitsPerSecond;

    int64_t total = 0;
    LONG alignment = 1;
    m_queue->Length(&total, nullptr);
    m_queue->Alignment(&alignment);
    // A sample may reach up to the next aligned place: the last block of an unbuffered read does.
    const int64_t rounded = (total + alignment - 1) / alignment * alignment;
    if (wish.start + length > rounded) {
        if (wish.start > total) return E_INVALIDARG;
        // The sample's times are cut with it, so that whoever collects it can tell where its bytes end.
        length = total - wish.start;
        stop = total * kTimeUnitsPerSecond;  // below the sample's own: no overflow
        if (const HRESULT result = sample.SetTime(&start, &stop); FAILED(result)) return result;
    }
    // Before it is narrowed: a sample's size has 32 bits, so what passes here fits.
    if (length > sample.GetSize()) return VFW_E_BUFFER_OVERFLOW;
    wish.length = static_cast<LONG>(length);
    return sample.GetPointer(&wish.buffer);
}

HRESULT CAsyncOutputPin::NewAllocator(ALLOCATOR_PROPERTIES* properties, IMemAllocator** actual) {
    HRESULT result = S_OK;
    std::unique_ptr<CMemAllocator> fresh(new (std::nothrow) CMemAllocator(nullptr, &result));
    if (!fresh) return E_OUTOFMEMORY;
    if (FAILED(result)) return result;
    void* object = nullptr;
    if (FAILED(fresh->NonDelegatingQueryInterface(IID_IMemAllocator, &object))) return E_NOINTERFACE;
    static_cast<void>(fresh.release());  // from here on its count owns it
    auto allocator = RefPtr<IMemAllocator>::Adopt(static_cast<IMemAllocator*>(object));
    result = Settle(*allocator, properties);
    if (SUCCEEDED(result)) *actual = allocator.Detach();
    return result;
}

HRESULT CAsyncOutputPin::Settle(IMemAllocator& allocator, ALLOCATOR_PROPERTIES* properties) {
    ALLOCATOR_PROPERTIES actual = {};
    const HRESULT result = allocator.SetProperties(properties, &actual);
    if (FAILED(result)) return result;
    return m_queue->IsAligned(actual.cbAlign) ? S_OK : VFW_E_BADALIGN;
}
