// What all filters of the layer have in common: name, graph, state and the list of their pins. A filter says
// in Activate and Deactivate what it does between stopped and paused; paused and running are alike to all of
// them, since none keeps time. No clock, no state changes that take their time.
// Any thread. The lock may be held while other filters are called, against the flow of data or along it, but
// is never taken by a thread that moves data.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "platform/media/ComObject.h"
#include "platform/media/FilterInterfaces.h"

class PinBase;

class FilterBase : public ComObject<IBaseFilter> {
public:
    explicit FilterBase(const GUID& classId) : m_classId(classId) {}

    HRESULT QueryInterface(const GUID& iid, void** object) override;

    HRESULT GetClassID(GUID* classId) override;
    HRESULT Stop() override;
    HRESULT Pause() override;
    HRESULT Run(REFERENCE_TIME start) override;
    HRESULT GetState(DWORD milliseconds, FILTER_STATE* state) override;
    HRESULT SetSyncSource(IReferenceClock* clock) override;
    HRESULT GetSyncSource(IReferenceClock** clock) override;
    HRESULT EnumPins(IEnumPins** pins) override;
    HRESULT FindPin(const WCHAR* id, IPin** pin) override;
    HRESULT QueryFilterInfo(FILTER_INFO* info) override;
    HRESULT JoinFilterGraph(IFilterGraph* graph, const WCHAR* name) override;
    HRESULT QueryVendorInfo(WCHAR** info) override;

    std::recursive_mutex& Lock() { return m_lock; }
    FILTER_STATE State() const { return m_state; }  // also for threads that move data

protected:
    // The pins, in the order in which they are enumerated.
    virtual std::vector<PinBase*> Pins() = 0;
    // From stopped to paused, under the lock. The state changes if it succeeds.
    virtual HRESULT Activate() { return S_OK; }
    // To stopped, under the lock; also where Activate failed. The state has changed already.
    virtual void Deactivate() {}

private:
    const GUID m_classId;
    std::recursive_mutex m_lock;
    std::atomic<FILTER_STATE> m_state{State_Stopped};  // changed under m_lock
    std::u16string m_name;                             // under m_lock
    IFilterGraph* m_graph = nullptr;                   // under m_lock; not counted
};
