#include "AudioCodec/graph/filter/CBaseFilter.h"

#include <new>

#include "AudioCodec/graph/filter/CBasePin.h"
#include "AudioCodec/graph/filter/CEnumPins.h"
#include "platform/media/GraphInterfaces.h"
#include "platform/media/MediaText.h"

CBaseFilter::CBaseFilter(const WCHAR* name, IUnknown* outer, CCritSec* lock, const GUID& classId)
    : CUnknown(outer), m_lock(lock), m_classId(classId), m_name(name ? name : u"") {}

HRESULT CBaseFilter::NonDelegatingQueryInterface(const GUID& iid, void** object) {
    if (iid == IID_IBaseFilter || iid == IID_IMediaFilter || iid == IID_IPersist) {
        return GetInterface(static_cast<IBaseFilter*>(this), object);
    }
    if (iid == IID_IAMovieSetup) return GetInterface(static_cast<IAMovieSetup*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(iid, object);
}

HRESULT CBaseFilter::GetClassID(GUID* classId) {
    if (!classId) return E_POINTER;
    *classId = m_classId;
    return S_OK;
}

HRESULT CBaseFilter::Stop() {
    const CritSecGuard guard(*m_lock);
    HRESULT result = S_OK;
    if (m_state != State_Stopped) {
        for (int i = 0; i < GetPinCount(); ++i) {
            CBasePin* pin = GetPin(i);
            if (!pin || !pin->IsConnected()) continue;
            const HRESULT ofPin = pin->Inactive();
            if (FAILED(ofPin) && SUCCEEDED(result)) result = ofPin;
        }
    }
    m_state = State_Stopped;
    return result;
}

HRESULT CBaseFilter::Pause() {
    const CritSecGuard guard(*m_lock);
    if (m_state == State_Stopped) {
        const HRESULT result = UntilOneFails([](CBasePin& pin) { return pin.Active(); });
        if (FAILED(result)) return result;
    }
    m_state = State_Paused;
    return S_OK;
}

HRESULT CBaseFilter::Run(REFERENCE_TIME start) {
    const CritSecGuard guard(*m_lock);
    m_start = start;
    if (m_state == State_Stopped) {
        if (const HRESULT result = Pause(); FAILED(result)) return result;
    }
    if (m_state != State_Running) {
        const HRESULT result = UntilOneFails([start](CBasePin& pin) { return pin.Run(start); });
        if (FAILED(result)) return result;
    }
    m_state = State_Running;
    return S_OK;
}

HRESULT CBaseFilter::GetState(DWORD /*milliseconds*/, FILTER_STATE* state) {
    if (!state) return E_POINTER;
    *state = m_state;
    return S_OK;
}

HRESULT CBaseFilter::SetSyncSource(IReferenceClock* clock) {
    auto old = RefPtr<IReferenceClock>::Retain(clock);  // dropped after the lock
    const CritSecGuard guard(*m_lock);
    std::swap(m_clock, old);
    return S_OK;
}

HRESULT CBaseFilter::GetSyncSource(IReferenceClock** clock) {
    if (!clock) return E_POINTER;
    const CritSecGuard guard(*m_lock);
    *clock = RefPtr(m_clock).Detach();
    return S_OK;
}

HRESULT CBaseFilter::EnumPins(IEnumPins** pins) {
    if (!pins) return E_POINTER;
    *pins = new (std::nothrow) CEnumPins(this);
    return *pins ? S_OK : E_OUTOFMEMORY;
}

HRESULT CBaseFilter::FindPin(const WCHAR* id, IPin** pin) {
    if (!id || !pin) return E_POINTER;
    *pin = nullptr;
    const CritSecGuard guard(*m_lock);
    for (int i = 0; i < GetPinCount(); ++i) {
        CBasePin* candidate = GetPin(i);
        if (!candidate || candidate->Name() != id) continue;
        candidate->AddRef();
        *pin = candidate;
        return S_OK;
    }
    return VFW_E_NOT_FOUND;
}

HRESULT CBaseFilter::QueryFilterInfo(FILTER_INFO* info) {
    if (!info) return E_POINTER;
    const CritSecGuard guard(*m_lock);
    CopyName(m_name, info->achName);
    info->pGraph = m_graph;
    if (m_graph) m_graph->AddRef();
    return S_OK;
}

HRESULT CBaseFilter::JoinFilterGraph(IFilterGraph* graph, const WCHAR* name) {
    const CritSecGuard guard(*m_lock);
    m_graph = graph;
    RefPtr<IMediaEventSink> sink;
    if (graph) {
        void* object = nullptr;
        if (SUCCEEDED(graph->QueryInterface(IID_IMediaEventSink, &object))) {
            sink = RefPtr<IMediaEventSink>::Adopt(static_cast<IMediaEventSink*>(object));
        }
    }
    m_sink = sink.Get();  // the graph lives longer than its filters are in it
    m_name.clear();
    if (!name) return S_OK;
    try {
        m_name = name;
    } catch (const std::bad_alloc&) {
        m_name.clear();
    }
    return S_OK;
}

HRESULT CBaseFilter::QueryVendorInfo(WCHAR** /*info*/) { return E_NOTIMPL; }

HRESULT CBaseFilter::Register() { return GetSetupData() ? E_NOTIMPL : S_FALSE; }

HRESULT CBaseFilter::Unregister() { return GetSetupData() ? E_NOTIMPL : S_FALSE; }

HRESULT CBaseFilter::StreamTime(REFERENCE_TIME* time) {
    if (!time) return E_POINTER;
    RefPtr<IReferenceClock> clock;
    REFERENCE_TIME start = 0;
    {
        const CritSecGuard guard(*m_lock);
        clock = m_clock;
        start = m_start;
    }
    if (!clock) return VFW_E_NO_CLOCK;
    const HRESULT result = clock->GetTime(time);
    if (SUCCEEDED(result)) *time -= start;
    return result;
}

template <class Operation>
HRESULT CBaseFilter::UntilOneFails(Operation operation) {
    for (int i = 0; i < GetPinCount(); ++i) {
        CBasePin* pin = GetPin(i);
        if (!pin || !pin->IsConnected()) continue;
        if (const HRESULT result = operation(*pin); FAILED(result)) return result;
    }
    return S_OK;
}
