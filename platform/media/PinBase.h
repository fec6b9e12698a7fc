// One pin of a filter: its connection and what was agreed on for it. An output pin offers the types of its
// filter, most of them one; an input pin says which it takes. A pin lives in its filter, and counting it
// counts the filter. Connections change only while the filter is stopped, so that threads that move data may
// use them without the lock. What flows, and how, is left to the classes below.
#pragma once

#include <string_view>
#include <vector>

#include "platform/media/FilterBase.h"
#include "platform/media/MediaType.h"

class PinBase : public IPin {
public:
    PinBase(FilterBase& filter, PIN_DIRECTION direction, std::u16string_view name)
        : m_filter(filter), m_direction(direction), m_name(name) {}
    PinBase(const PinBase&) = delete;
    PinBase& operator=(const PinBase&) = delete;

    HRESULT QueryInterface(const GUID& iid, void** object) override;
    uint32_t AddRef() override { return m_filter.AddRef(); }
    uint32_t Release() override { return m_filter.Release(); }

    HRESULT Connect(IPin* receiver, const AM_MEDIA_TYPE* type) override;
    HRESULT ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    HRESULT Disconnect() override;
    HRESULT ConnectedTo(IPin** pin) override;
    HRESULT ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    HRESULT QueryPinInfo(PIN_INFO* info) override;
    HRESULT QueryDirection(PIN_DIRECTION* direction) override;
    HRESULT QueryId(WCHAR** id) override;
    HRESULT QueryAccept(const AM_MEDIA_TYPE* type) override;
    HRESULT EnumMediaTypes(IEnumMediaTypes** types) override;
    HRESULT QueryInternalConnections(IPin** pins, ULONG* count) override;
    // Nothing flows into an output pin; input pins override these.
    HRESULT EndOfStream() override { return E_UNEXPECTED; }
    HRESULT BeginFlush() override { return E_UNEXPECTED; }
    HRESULT EndFlush() override { return E_UNEXPECTED; }
    HRESULT NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override { return E_UNEXPECTED; }

    std::u16string_view Name() const { return m_name; }
    // Null where there is no connection. Under the filter's lock, or while the filter isn't stopped.
    IPin* Peer() const { return m_peer.Get(); }

protected:
    ~PinBase() = default;

    // What an output pin offers; nothing while the filter doesn't know it yet.
    virtual std::vector<MediaType> OfferedTypes() { return {}; }
    // Whether an input pin takes a type.
    virtual bool Takes(const AM_MEDIA_TYPE&) { return false; }
    // The last step of a connection, under the filter's lock; a failure undoes it.
    virtual HRESULT Connected(IPin& peer, const AM_MEDIA_TYPE& type) = 0;
    // Also after a failed Connected.
    virtual void Disconnected() {}

private:
    HRESULT CheckFree() const;
    HRESULT Attempt(IPin& receiver, const MediaType& type);
    void Drop();

    FilterBase& m_filter;
    const PIN_DIRECTION m_direction;
    const std::u16string_view m_name;
    RefPtr<IPin> m_peer;
    MediaType m_type;  // of the connection
};
