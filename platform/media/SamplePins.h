// Pins between which samples are pushed: the output's thread calls Receive of the input and waits there. Who
// receives copies what it keeps or holds the sample, so that no pool of buffers has to be agreed on, and
// GetAllocator has none to offer.
#pragma once

#include "platform/media/IFailureSink.h"
#include "platform/media/PinBase.h"
#include "platform/media/TransportInterfaces.h"

class SampleInputPin : public PinBase, public IMemInputPin, public IFailureSink {
public:
    SampleInputPin(FilterBase& filter, std::u16string_view name) : PinBase(filter, PINDIR_INPUT, name) {}

    HRESULT QueryInterface(const GUID& iid, void** object) override;
    uint32_t AddRef() override { return PinBase::AddRef(); }
    uint32_t Release() override { return PinBase::Release(); }

    HRESULT GetAllocator(IMemAllocator** allocator) override;
    HRESULT NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override;
    HRESULT GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override;
    HRESULT ReceiveMultiple(IMediaSample** samples, LONG count, LONG* done) override;
    HRESULT ReceiveCanBlock() override { return S_OK; }

protected:
    ~SampleInputPin() = default;
};

class SampleOutputPin : public PinBase {
public:
    SampleOutputPin(FilterBase& filter, std::u16string_view name) : PinBase(filter, PINDIR_OUTPUT, name) {}

    // Towards the connected pin; VFW_E_NOT_CONNECTED where there is none. See Peer for who may call these.
    HRESULT Deliver(IMediaSample& sample);
    HRESULT DeliverEndOfStream();
    // To a filter that doesn't know of failures the stream just ends.
    HRESULT DeliverFailure(HRESULT reason);
    HRESULT DeliverBeginFlush();
    HRESULT DeliverEndFlush();
    HRESULT DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop);

protected:
    ~SampleOutputPin() = default;
    HRESULT Connected(IPin& peer, const AM_MEDIA_TYPE& type) override;
    void Disconnected() override;

private:
    RefPtr<IMemInputPin> m_receiver;  // the peer's other faces
    RefPtr<IFailureSink> m_failures;  // null where it has none
};
