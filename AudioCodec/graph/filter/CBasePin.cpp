// How a connection comes about:
//
//   Connect            (1) free, and the filter stopped?
//     AgreeOnType      (2) the wished type alone, or else those that each end lists
//       AttemptConnection, for each type
//                      (3) direction and type, as this end sees them
//                      (4) ReceiveConnection: (1) and (3) at the other end, which then holds this one
//                      (5) CompleteConnect: what the class needs beyond a type
//
// Invariant outside of these: a pin that holds a peer has agreed with it on m_type. Without a peer
// m_type means nothing.
#include "AudioCodec/graph/filter/CBasePin.h"

#include <new>

#include "AudioCodec/graph/filter/CBaseFilter.h"
#include "AudioCodec/graph/filter/CEnumMediaTypes.h"
#include "platform/media/MediaText.h"

namespace {
// What a pin without a connection tells: nothing, in samples of a fixed size, 1 byte.
constexpr AM_MEDIA_TYPE kNoType = {.majortype = {},
                                   .subtype = {},
                                   .bFixedSizeSamples = TRUE,
                                   .bTemporalCompression = FALSE,
                                   .lSampleSize = 1,
                                   .formattype = {},
                                   .pUnk = nullptr,
                                   .cbFormat = 0,
                                   .pbFormat = nullptr};

// Whether a refusal says more than that the type doesn't fit.
bool IsSpecific(HRESULT result) {
    return FAILED(result) && result != E_FAIL && result != E_INVALIDARG && result != VFW_E_TYPE_NOT_ACCEPTED;
}
}  // namespace

CBasePin::CBasePin(CBaseFilter* filter, CCritSec* lock, const WCHAR* name, PIN_DIRECTION direction)
    : CUnknown(nullptr), m_filter(filter), m_lock(lock), m_name(name ? name : u""), m_direction(direction) {}

HRESULT CBasePin::NonDelegatingQueryInterface(const GUID& iid, void** object) {
    if (iid == IID_IPin) return GetInterface(static_cast<IPin*>(this), object);
    if (iid == IID_IQualityControl) return GetInterface(static_cast<IQualityControl*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(iid, object);
}

uint32_t CBasePin::NonDelegatingAddRef() { return m_filter->AddRef(); }

uint32_t CBasePin::NonDelegatingRelease() { return m_filter->Release(); }

HRESULT CBasePin::Connect(IPin* receiver, const AM_MEDIA_TYPE* type) {
    if (!receiver) return E_POINTER;
    const CritSecGuard guard(*m_lock);
    if (const HRESULT result = CheckFree(); FAILED(result)) return result;  // (1)
    const HRESULT result = AgreeOnType(receiver, type);
    if (FAILED(result)) return Undo(result);
    return S_OK;
}

HRESULT CBasePin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
    if (!connector || !type) return E_POINTER;
    const CritSecGuard guard(*m_lock);
    if (const HRESULT result = CheckFree(); FAILED(result)) return result;  // (1)
    if (const HRESULT result = CheckPeerAndType(connector, *type); FAILED(result)) return result;
    // Set before the class is asked: it may want to know whom it is being connected with.
    m_connected = RefPtr<IPin>::Retain(connector);
    HRESULT result = SetMediaType(*type);
    if (SUCCEEDED(result)) result = CompleteConnect(connector);  // (5) of the other end
    return FAILED(result) ? Undo(result) : S_OK;
}

HRESULT CBasePin::Disconnect() {
    const CritSecGuard guard(*m_lock);
    if (!m_filter->IsStopped()) return VFW_E_NOT_STOPPED;
    return m_connected ? Undo(S_OK) : S_FALSE;
}

HRESULT CBasePin::ConnectedTo(IPin** pin) {
    if (!pin) return E_POINTER;
    const CritSecGuard guard(*m_lock);
    *pin = RefPtr(m_connected).Detach();
    return *pin ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT CBasePin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    if (!type) return E_POINTER;
    const CritSecGuard guard(*m_lock);
    if (m_connected) return CopyMediaType(*type, m_type.Get());
    *type = kNoType;
    return VFW_E_NOT_CONNECTED;
}

HRESULT CBasePin::QueryPinInfo(PIN_INFO* info) {
    if (!info) return E_POINTER;
    info->pFilter = m_filter;
    m_filter->AddRef();
    info->dir = m_direction;
    CopyName(m_name, info->achName);
    return S_OK;
}

HRESULT CBasePin::QueryDirection(PIN_DIRECTION* direction) {
    if (!direction) return E_POINTER;
    *direction = m_direction;
    return S_OK;
}

HRESULT CBasePin::QueryId(WCHAR** id) {
    if (!id) return E_POINTER;
    return GiveText(m_name, id);
}

HRESULT CBasePin::QueryAccept(const AM_MEDIA_TYPE* type) {
    if (!type) return E_POINTER;
    const HRESULT result = CheckMediaType(*type);
    return FAILED(result) ? S_FALSE : result;
}

HRESULT CBasePin::EnumMediaTypes(IEnumMediaTypes** types) {
    if (!types) return E_POINTER;
    *types = new (std::nothrow) CEnumMediaTypes(this);
    return *types ? S_OK : E_OUTOFMEMORY;
}

HRESULT CBasePin::QueryInternalConnections(IPin** /*pins*/, ULONG* /*count*/) { return E_NOTIMPL; }

HRESULT CBasePin::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    const CritSecGuard guard(*m_lock);
    m_segment = {start, stop, rate};
    return S_OK;
}

HRESULT CBasePin::Notify(IBaseFilter* /*self*/, Quality /*quality*/) { return E_NOTIMPL; }

HRESULT CBasePin::SetSink(IQualityControl* sink) {
    const CritSecGuard guard(*m_lock);
    m_sink = sink;
    return S_OK;
}

HRESULT CBasePin::Inactive() {
    const CritSecGuard guard(*m_lock);
    m_runTimeError = false;
    return S_OK;
}

HRESULT CBasePin::SetMediaType(const AM_MEDIA_TYPE& type) {
    const CritSecGuard guard(*m_lock);
    return m_type.Assign(type);
}

HRESULT CBasePin::CheckConnect(IPin* peer) {
    PIN_DIRECTION direction = m_direction;
    const HRESULT result = peer->QueryDirection(&direction);
    if (FAILED(result)) return result;
    return direction == m_direction ? VFW_E_INVALID_DIRECTION : S_OK;
}

bool CBasePin::IsConnected() {
    const CritSecGuard guard(*m_lock);
    return static_cast<bool>(m_connected);
}

// Whether a connection may be made now.
HRESULT CBasePin::CheckFree() {
    if (m_connected) return VFW_E_ALREADY_CONNECTED;
    return m_filter->IsStopped() || m_canReconnectWhenActive ? S_OK : VFW_E_NOT_STOPPED;
}

// A type that leaves nothing open is tried alone. Otherwise the types of both pins are gone through.
HRESULT CBasePin::AgreeOnType(IPin* receiver, const AM_MEDIA_TYPE* wish) {
    if (wish && !IsPartiallySpecified(*wish)) return AttemptConnection(receiver, *wish);

    // (2) A specific failure is kept, since it tells more than that no type was left.
    HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
    for (const bool own : {m_tryOwnTypesFirst, !m_tryOwnTypesFirst}) {
        RefPtr<IEnumMediaTypes> types;
        const HRESULT listed = own ? EnumMediaTypes(types.Put()) : receiver->EnumMediaTypes(types.Put());
        // An end that lists no types leaves the choice to the other.
        if (FAILED(listed) || !types) continue;
        const HRESULT result = TryTypes(receiver, wish, *types);
        if (SUCCEEDED(result)) return S_OK;
        if (IsSpecific(result)) failure = result;
    }
    return failure;
}

// The first success, or else the first specific failure, or else E_FAIL.
HRESULT CBasePin::TryTypes(IPin* receiver, const AM_MEDIA_TYPE* wish, IEnumMediaTypes& types) {
    HRESULT failure = E_FAIL;
    AM_MEDIA_TYPE* type = nullptr;
    ULONG fetched = 0;
    while (types.Next(1, &type, &fetched) == S_OK) {
        HRESULT result = E_FAIL;
        if (!wish || MatchesPartial(*type, *wish)) result = AttemptConnection(receiver, *type);
        // The list hands out copies, which are this side's to free.
        FreeMediaTypeBlock(type);
        if (SUCCEEDED(result)) return S_OK;
        if (IsSpecific(result) && !IsSpecific(failure)) failure = result;
    }
    return failure;
}

HRESULT CBasePin::AttemptConnection(IPin* receiver, const AM_MEDIA_TYPE& type) {
    if (const HRESULT result = CheckPeerAndType(receiver, type); FAILED(result)) return result;  // (3)
    m_connected = RefPtr<IPin>::Retain(receiver);
    HRESULT result = SetMediaType(type);
    // (4) After this end holds peer and type: the other end may ask for either.
    if (SUCCEEDED(result)) result = receiver->ReceiveConnection(this, &type);
    if (FAILED(result)) return Undo(result);
    result = CompleteConnect(receiver);  // (5)
    if (SUCCEEDED(result)) return S_OK;
    // The other end has taken the connection up already; this end alone would leave it with half of one.
    receiver->Disconnect();
    return Undo(result);
}

// What both ends ask before they take a connection up. On a failure everything is as before.
HRESULT CBasePin::CheckPeerAndType(IPin* peer, const AM_MEDIA_TYPE& type) {
    // (3) Undone even here: CheckConnect may have begun something that only BreakConnect ends.
    if (const HRESULT result = CheckConnect(peer); FAILED(result)) return Undo(result);
    const HRESULT result = CheckMediaType(type);
    if (result == S_OK) return S_OK;
    return Undo(IsSpecific(result) ? result : VFW_E_TYPE_NOT_ACCEPTED);
}

// Takes back a connection, or the beginning of one, and returns the result it was handed.
HRESULT CBasePin::Undo(HRESULT result) {
    BreakConnect();
    m_connected.Reset();
    return result;
}
