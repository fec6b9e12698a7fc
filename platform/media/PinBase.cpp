#include "platform/media/PinBase.h"

#include "platform/media/Enumerators.h"
#include "platform/media/MediaText.h"

HRESULT PinBase::QueryInterface(const GUID& iid, void** object) {
    return GiveFace({{IID_IPin, this}}, iid, object);
}

HRESULT PinBase::CheckFree() const {
    if (m_peer) return VFW_E_ALREADY_CONNECTED;
    return m_filter.State() == State_Stopped ? S_OK : VFW_E_NOT_STOPPED;
}

HRESULT PinBase::Connect(IPin* receiver, const AM_MEDIA_TYPE* type) {
    if (!receiver) return E_POINTER;
    if (m_direction != PINDIR_OUTPUT) return VFW_E_INVALID_DIRECTION;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_filter.Lock());
        HRESULT result = CheckFree();
        if (FAILED(result)) return result;
        result = VFW_E_NO_ACCEPTABLE_TYPES;
        for (const MediaType& offered : OfferedTypes()) {
            if (type && !offered.Matches(*type)) continue;
            result = Attempt(*receiver, offered);
            if (SUCCEEDED(result)) break;
        }
        return result;
    });
}

HRESULT PinBase::Attempt(IPin& receiver, const MediaType& type) {
    m_type = type;  // may throw, and a pin with a peer is connected
    m_peer = RefPtr<IPin>::Retain(&receiver);
    HRESULT result = receiver.ReceiveConnection(this, &type.Get());
    if (SUCCEEDED(result)) {
        result = AtBorder(ResultOfThrow, [&] { return Connected(receiver, m_type.Get()); });
        if (FAILED(result)) receiver.Disconnect();
    }
    if (FAILED(result)) Drop();
    return result;
}

HRESULT PinBase::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
    if (!connector || !type) return E_POINTER;
    if (m_direction != PINDIR_INPUT) return VFW_E_INVALID_DIRECTION;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_filter.Lock());
        HRESULT result = CheckFree();
        if (FAILED(result)) return result;
        if (!Takes(*type)) return VFW_E_TYPE_NOT_ACCEPTED;
        m_type = MediaType(*type);
        m_peer = RefPtr<IPin>::Retain(connector);
        result = AtBorder(ResultOfThrow, [&] { return Connected(*connector, *type); });
        if (FAILED(result)) Drop();
        return result;
    });
}

void PinBase::Drop() {
    Disconnected();
    m_peer.Reset();
    m_type = MediaType();
}

HRESULT PinBase::Disconnect() {
    // The peer may hold the last reference on this filter.
    const auto alive = RefPtr<IPin>::Retain(this);
    const std::lock_guard lock(m_filter.Lock());
    if (m_filter.State() != State_Stopped) return VFW_E_NOT_STOPPED;
    if (!m_peer) return S_FALSE;
    Drop();
    return S_OK;
}

HRESULT PinBase::ConnectedTo(IPin** pin) {
    if (!pin) return E_POINTER;
    const std::lock_guard lock(m_filter.Lock());
    *pin = RefPtr<IPin>(m_peer).Detach();
    return *pin ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT PinBase::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    if (!type) return E_POINTER;
    *type = {};
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_filter.Lock());
        if (!m_peer) return VFW_E_NOT_CONNECTED;
        *type = MediaType(m_type).Detach();
        return S_OK;
    });
}

HRESULT PinBase::QueryPinInfo(PIN_INFO* info) {
    if (!info) return E_POINTER;
    info->pFilter = RefPtr<IBaseFilter>::Retain(&m_filter).Detach();
    info->dir = m_direction;
    CopyName(m_name, info->achName);
    return S_OK;
}

HRESULT PinBase::QueryDirection(PIN_DIRECTION* direction) {
    if (!direction) return E_POINTER;
    *direction = m_direction;
    return S_OK;
}

HRESULT PinBase::QueryId(WCHAR** id) { return id ? GiveText(m_name, id) : E_POINTER; }

HRESULT PinBase::QueryAccept(const AM_MEDIA_TYPE* type) {
    if (!type) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_filter.Lock());
        if (Takes(*type)) return S_OK;
        for (const MediaType& offered : OfferedTypes()) {
            if (offered.Matches(*type)) return S_OK;
        }
        return S_FALSE;
    });
}

HRESULT PinBase::EnumMediaTypes(IEnumMediaTypes** types) {
    if (!types) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_filter.Lock());
        return GiveEnumerator<TypeThings>(OfferedTypes(), types);
    });
}

HRESULT PinBase::QueryInternalConnections(IPin**, ULONG*) { return E_NOTIMPL; }
