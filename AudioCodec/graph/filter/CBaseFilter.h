// What every filter has: its state, clock and name, its place in a graph, and the way from the filter to its
// pins. Which pins there are, and what they do, is the derived class's.
//
// Any thread; the lock is the derived class's too, shared with its pins.
#pragma once

#include <atomic>
#include <string>

#include "AudioCodec/graph/filter/CCritSec.h"
#include "AudioCodec/graph/filter/CUnknown.h"
#include "platform/com/RefPtr.h"
#include "platform/media/FilterInterfaces.h"

class CBasePin;

class CBaseFilter : public CUnknown, public IBaseFilter, public IAMovieSetup {
public:
    // Without a reference. Name and outer object may be null; the lock may not be built yet, and is gone when
    // this class's destructor runs. Throws std::bad_alloc.
    CBaseFilter(const WCHAR* name, IUnknown* outer, CCritSec* lock, const GUID& classId);

    HRESULT QueryInterface(const GUID& iid, void** object) override {
        return GetOwner()->QueryInterface(iid, object);
    }
    uint32_t AddRef() override { return GetOwner()->AddRef(); }
    uint32_t Release() override { return GetOwner()->Release(); }
    HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) override;

    HRESULT GetClassID(GUID* classId) override;
    // Stopped after it in every case; returns the first failure of a pin.
    HRESULT Stop() override;
    HRESULT Pause() override;
    HRESULT Run(REFERENCE_TIME start) override;
    HRESULT GetState(DWORD milliseconds, FILTER_STATE* state) override;  // at once
    HRESULT SetSyncSource(IReferenceClock* clock) override;
    HRESULT GetSyncSource(IReferenceClock** clock) override;
    HRESULT EnumPins(IEnumPins** pins) override;
    HRESULT FindPin(const WCHAR* id, IPin** pin) override;
    HRESULT QueryFilterInfo(FILTER_INFO* info) override;
    // Always S_OK; where there is no memory for the name, the filter has none.
    HRESULT JoinFilterGraph(IFilterGraph* graph, const WCHAR* name) override;
    HRESULT QueryVendorInfo(WCHAR** info) override;
    HRESULT Register() override;
    HRESULT Unregister() override;

    // How long the filter has been running by its clock; VFW_E_NO_CLOCK without one.
    virtual HRESULT StreamTime(REFERENCE_TIME* time /*out*/);
    // Changes whenever there are other pins than before.
    virtual LONG GetPinVersion() { return m_pinVersion; }
    virtual int GetPinCount() = 0;
    virtual CBasePin* GetPin(int index) = 0;  // null after the last
    // What Register would write; null if there is nothing.
    virtual const AMOVIESETUP_FILTER* GetSetupData() { return nullptr; }

    bool IsStopped() const { return m_state == State_Stopped; }

protected:
    void IncrementPinVersion() { ++m_pinVersion; }

private:
    // Calls an operation of each connected pin until one fails: that failure, or S_OK.
    template <class Operation>
    HRESULT UntilOneFails(Operation operation) VL_REQUIRES(m_lock);

    CCritSec* const m_lock;
    const GUID m_classId;
    std::atomic<FILTER_STATE> m_state = State_Stopped;  // written under m_lock
    RefPtr<IReferenceClock> m_clock VL_GUARDED_BY(m_lock);
    REFERENCE_TIME m_start VL_GUARDED_BY(m_lock) = 0;
    std::u16string m_name VL_GUARDED_BY(m_lock);
    IFilterGraph* m_graph VL_GUARDED_BY(m_lock) = nullptr;    // not counted: it owns the filter
    IMediaEventSink* m_sink VL_GUARDED_BY(m_lock) = nullptr;  // the graph's, not counted
    std::atomic<LONG> m_pinVersion = 1;
};
