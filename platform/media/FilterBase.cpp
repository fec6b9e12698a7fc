#include "platform/media/FilterBase.h"

#include "platform/media/Enumerators.h"
#include "platform/media/MediaText.h"
#include "platform/media/PinBase.h"

HRESULT FilterBase::QueryInterface(const GUID& iid, void** object) {
    return GiveFace({{IID_IBaseFilter, this}, {IID_IMediaFilter, this}, {IID_IPersist, this}}, iid, object);
}

HRESULT FilterBase::GetClassID(GUID* classId) {
    if (!classId) return E_POINTER;
    *classId = m_classId;
    return S_OK;
}

HRESULT FilterBase::Stop() {
    const std::lock_guard lock(m_lock);
    if (m_state == State_Stopped) return S_OK;
    m_state = State_Stopped;
    Deactivate();
    return S_OK;
}

HRESULT FilterBase::Pause() {
    const std::lock_guard lock(m_lock);
    if (m_state == State_Stopped) {
        m_state = State_Paused;  // data may come before Activate is done
        const HRESULT result = AtBorder(ResultOfThrow, [&] { return Activate(); });
        if (FAILED(result)) {
            Stop();
            return result;
        }
    }
    m_state = State_Paused;
    return S_OK;
}

HRESULT FilterBase::Run(REFERENCE_TIME) {
    const std::lock_guard lock(m_lock);
    if (m_state == State_Stopped) {
        const HRESULT result = Pause();
        if (FAILED(result)) return result;
    }
    m_state = State_Running;
    return S_OK;
}

HRESULT FilterBase::GetState(DWORD, FILTER_STATE* state) {
    if (!state) return E_POINTER;
    *state = m_state;
    return S_OK;
}

HRESULT FilterBase::SetSyncSource(IReferenceClock*) { return E_NOTIMPL; }

HRESULT FilterBase::GetSyncSource(IReferenceClock** clock) {
    if (!clock) return E_POINTER;
    *clock = nullptr;
    return S_OK;
}

HRESULT FilterBase::EnumPins(IEnumPins** pins) {
    if (!pins) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        std::vector<RefPtr<IPin>> list;
        for (PinBase* pin : Pins()) list.push_back(RefPtr<IPin>::Retain(pin));
        return GiveEnumerator<PinThings>(std::move(list), pins);
    });
}

HRESULT FilterBase::FindPin(const WCHAR* id, IPin** pin) {
    if (!id || !pin) return E_POINTER;
    *pin = nullptr;
    return AtBorder(ResultOfThrow, [&] {
        for (PinBase* candidate : Pins()) {
            if (candidate->Name() != id) continue;
            *pin = RefPtr<IPin>::Retain(candidate).Detach();
            return S_OK;
        }
        return VFW_E_NOT_FOUND;
    });
}

HRESULT FilterBase::QueryFilterInfo(FILTER_INFO* info) {
    if (!info) return E_POINTER;
    const std::lock_guard lock(m_lock);
    CopyName(m_name, info->achName);
    info->pGraph = RefPtr<IFilterGraph>::Retain(m_graph).Detach();
    return S_OK;
}

HRESULT FilterBase::JoinFilterGraph(IFilterGraph* graph, const WCHAR* name) {
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_lock);
        m_name = name ? name : u"";
        m_graph = graph;
        return S_OK;
    });
}

HRESULT FilterBase::QueryVendorInfo(WCHAR**) { return E_NOTIMPL; }
