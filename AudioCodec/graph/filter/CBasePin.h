// What every pin has: the way to a connection and out of it, from both ends, and what a connection has agreed
// on. Which types fit, and what a connection needs beyond them, is told by the virtual operations. Knows no
// transport of data.
//
// Lives and dies with its filter, which counts for it. Any thread; the lock is the filter's.
#pragma once

#include <atomic>
#include <limits>
#include <string>

#include "AudioCodec/graph/filter/CCritSec.h"
#include "AudioCodec/graph/filter/CUnknown.h"
#include "platform/com/RefPtr.h"
#include "platform/media/FilterInterfaces.h"
#include "platform/media/MediaType.h"

class CBaseFilter;

class CBasePin : public CUnknown, public IPin, public IQualityControl {
public:
    // The name is the pin's identifier too. Throws std::bad_alloc.
    CBasePin(CBaseFilter* filter, CCritSec* lock, const WCHAR* name, PIN_DIRECTION direction);

    HRESULT QueryInterface(const GUID& iid, void** object) override {
        return GetOwner()->QueryInterface(iid, object);
    }
    uint32_t AddRef() override { return GetOwner()->AddRef(); }
    uint32_t Release() override { return GetOwner()->Release(); }
    HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) override;
    uint32_t NonDelegatingAddRef() override;
    uint32_t NonDelegatingRelease() override;

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
    HRESULT EndOfStream() override { return S_OK; }
    HRESULT NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;
    HRESULT Notify(IBaseFilter* self, Quality quality) override;
    HRESULT SetSink(IQualityControl* sink) override;

    // Changes whenever GetMediaType returns other types than before.
    virtual LONG GetMediaTypeVersion() { return m_typeVersion; }
    // The filter leaves the stopped state, goes back into it, starts to run; for connected pins only.
    virtual HRESULT Active() { return S_OK; }
    virtual HRESULT Inactive();
    virtual HRESULT Run(REFERENCE_TIME /*start*/) { return S_OK; }
    // S_OK if the type fits, anything else if not.
    virtual HRESULT CheckMediaType(const AM_MEDIA_TYPE& type /*in*/) = 0;
    virtual HRESULT SetMediaType(const AM_MEDIA_TYPE& type /*in*/);
    // Whether this pin could be connected with that one; BreakConnect undoes what it prepares.
    virtual HRESULT CheckConnect(IPin* peer /*in*/);
    virtual HRESULT BreakConnect() { return S_OK; }
    // The type is agreed on; a failure takes the connection back.
    virtual HRESULT CompleteConnect(IPin* /*receiver*/) { return S_OK; }
    // The pin's own types from index 0 on; anything but S_OK ends them.
    virtual HRESULT GetMediaType(int index /*in*/, MediaType* type /*out*/) = 0;

    const std::u16string& Name() const { return m_name; }
    bool IsConnected();

protected:
    void IncrementTypeVersion() { ++m_typeVersion; }

    CBaseFilter* const m_filter;
    CCritSec* const m_lock;
    bool m_runTimeError VL_GUARDED_BY(m_lock) = false;
    bool m_canReconnectWhenActive VL_GUARDED_BY(m_lock) = false;
    bool m_tryOwnTypesFirst VL_GUARDED_BY(m_lock) = false;

private:
    HRESULT CheckFree() VL_REQUIRES(m_lock);
    HRESULT AgreeOnType(IPin* receiver, const AM_MEDIA_TYPE* wish) VL_REQUIRES(m_lock);
    HRESULT TryTypes(IPin* receiver, const AM_MEDIA_TYPE* wish, IEnumMediaTypes& types) VL_REQUIRES(m_lock);
    HRESULT AttemptConnection(IPin* receiver, const AM_MEDIA_TYPE& type) VL_REQUIRES(m_lock);
    HRESULT CheckPeerAndType(IPin* peer, const AM_MEDIA_TYPE& type) VL_REQUIRES(m_lock);
    HRESULT Undo(HRESULT result) VL_REQUIRES(m_lock);

    struct Segment {
        REFERENCE_TIME start = 0;
        REFERENCE_TIME stop = std::numeric_limits<REFERENCE_TIME>::max();
        double rate = 1.0;
    };

    const std::u16string m_name;
    const PIN_DIRECTION m_direction;
    RefPtr<IPin> m_connected VL_GUARDED_BY(m_lock);
    MediaType m_type VL_GUARDED_BY(m_lock);                   // of the connection
    IQualityControl* m_sink VL_GUARDED_BY(m_lock) = nullptr;  // not counted
    Segment m_segment VL_GUARDED_BY(m_lock);
    std::atomic<LONG> m_typeVersion = 1;
};
