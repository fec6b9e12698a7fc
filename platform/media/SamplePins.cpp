#include "platform/media/SamplePins.h"

HRESULT SampleInputPin::QueryInterface(const GUID& iid, void** object) {
    return GiveFace({{IID_IPin, static_cast<IPin*>(this)},
                     {IID_IMemInputPin, static_cast<IMemInputPin*>(this)},
                     {IID_IFailureSink, static_cast<IFailureSink*>(this)}},
                    iid, object);
}

HRESULT SampleInputPin::GetAllocator(IMemAllocator** allocator) {
    if (!allocator) return E_POINTER;
    *allocator = nullptr;
    return VFW_E_NO_ALLOCATOR;
}

HRESULT SampleInputPin::NotifyAllocator(IMemAllocator*, BOOL) { return S_OK; }

HRESULT SampleInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) { return E_NOTIMPL; }

HRESULT SampleInputPin::ReceiveMultiple(IMediaSample** samples, LONG count, LONG* done) {
    if (!samples || !done) return E_POINTER;
    HRESULT result = S_OK;
    for (*done = 0; *done < count && result == S_OK; ++*done) {
        result = Receive(samples[*done]);
        if (result != S_OK) break;
    }
    return result;
}

HRESULT SampleOutputPin::Connected(IPin& peer, const AM_MEDIA_TYPE&) {
    m_receiver = FaceOf<IMemInputPin>(&peer, IID_IMemInputPin);
    m_failures = FaceOf<IFailureSink>(&peer, IID_IFailureSink);
    return m_receiver ? S_OK : VFW_E_NO_TRANSPORT;
}

void SampleOutputPin::Disconnected() {
    m_receiver.Reset();
    m_failures.Reset();
}

HRESULT SampleOutputPin::Deliver(IMediaSample& sample) {
    return m_receiver ? m_receiver->Receive(&sample) : VFW_E_NOT_CONNECTED;
}

HRESULT SampleOutputPin::DeliverEndOfStream() { return Peer() ? Peer()->EndOfStream() : VFW_E_NOT_CONNECTED; }

HRESULT SampleOutputPin::DeliverFailure(HRESULT reason) {
    return m_failures ? m_failures->StreamFailed(reason) : DeliverEndOfStream();
}

HRESULT SampleOutputPin::DeliverBeginFlush() { return Peer() ? Peer()->BeginFlush() : VFW_E_NOT_CONNECTED; }

HRESULT SampleOutputPin::DeliverEndFlush() { return Peer() ? Peer()->EndFlush() : VFW_E_NOT_CONNECTED; }

HRESULT SampleOutputPin::DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop) {
    return Peer() ? Peer()->NewSegment(start, stop, 1.0) : VFW_E_NOT_CONNECTED;
}
