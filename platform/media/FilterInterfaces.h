// What filters and their pins offer to a graph and to each other. The order of the operations is the
// platform's. Out-pointers to interfaces receive one reference each.
#pragma once

#include "platform/base/Types.h"
#include "platform/com/Unknown.h"
#include "platform/media/MediaResults.h"
#include "platform/media/MediaTypes.h"

struct IEnumPins;
struct IEnumMediaTypes;
struct IPin;

// The time that a graph runs by.
struct IReferenceClock : IUnknown {
    virtual HRESULT GetTime(REFERENCE_TIME* time /*out*/) = 0;
    virtual HRESULT AdviseTime(REFERENCE_TIME base /*in*/, REFERENCE_TIME offset /*in*/, HANDLE event /*in*/,
                               DWORD_PTR* cookie /*out*/) = 0;
    virtual HRESULT AdvisePeriodic(REFERENCE_TIME start /*in*/, REFERENCE_TIME period /*in*/,
                                   HANDLE semaphore /*in*/, DWORD_PTR* cookie /*out*/) = 0;
    virtual HRESULT Unadvise(DWORD_PTR cookie /*in*/) = 0;

protected:
    ~IReferenceClock() = default;
};
inline constexpr GUID IID_IReferenceClock = MakeGuid("56A86897-0AD4-11CE-B03A-0020AF0BA770");

struct IPersist : IUnknown {
    virtual HRESULT GetClassID(GUID* classId /*out*/) = 0;

protected:
    ~IPersist() = default;
};
inline constexpr GUID IID_IPersist = MakeGuid("0000010C-0000-0000-C000-000000000046");

// State changes. Stop and Pause go against the flow of data in the order of calls; each may answer S_FALSE
// while it is under way.
struct IMediaFilter : IPersist {
    virtual HRESULT Stop() = 0;
    virtual HRESULT Pause() = 0;
    virtual HRESULT Run(REFERENCE_TIME start /*in: the clock's time of the stream's 0*/) = 0;
    virtual HRESULT GetState(DWORD milliseconds /*in: how long to wait*/, FILTER_STATE* state /*out*/) = 0;
    virtual HRESULT SetSyncSource(IReferenceClock* clock /*in: may be null*/) = 0;
    virtual HRESULT GetSyncSource(IReferenceClock** clock /*out*/) = 0;

protected:
    ~IMediaFilter() = default;
};
inline constexpr GUID IID_IMediaFilter = MakeGuid("56A86899-0AD4-11CE-B03A-0020AF0BA770");

struct IBaseFilter : IMediaFilter {
    virtual HRESULT EnumPins(IEnumPins** pins /*out*/) = 0;
    virtual HRESULT FindPin(const WCHAR* id /*in*/, IPin** pin /*out*/) = 0;
    virtual HRESULT QueryFilterInfo(FILTER_INFO* info /*out*/) = 0;
    // The graph isn't counted; null leaves it.
    virtual HRESULT JoinFilterGraph(IFilterGraph* graph /*in*/, const WCHAR* name /*in: may be null*/) = 0;
    virtual HRESULT QueryVendorInfo(WCHAR** info /*out: CoTaskMemFree's*/) = 0;

protected:
    ~IBaseFilter() = default;
};
inline constexpr GUID IID_IBaseFilter = MakeGuid("56A86895-0AD4-11CE-B03A-0020AF0BA770");

// One end of a connection. Connect is called on the output pin and calls ReceiveConnection of the other.
struct IPin : IUnknown {
    virtual HRESULT Connect(IPin* receiver /*in*/,
                            const AM_MEDIA_TYPE* type /*in: may be null or partial*/) = 0;
    virtual HRESULT ReceiveConnection(IPin* connector /*in*/, const AM_MEDIA_TYPE* type /*in*/) = 0;
    virtual HRESULT Disconnect() = 0;
    virtual HRESULT ConnectedTo(IPin** pin /*out*/) = 0;
    virtual HRESULT ConnectionMediaType(AM_MEDIA_TYPE* type /*out: a copy*/) = 0;
    virtual HRESULT QueryPinInfo(PIN_INFO* info /*out*/) = 0;
    virtual HRESULT QueryDirection(PIN_DIRECTION* direction /*out*/) = 0;
    virtual HRESULT QueryId(WCHAR** id /*out: CoTaskMemFree's*/) = 0;
    virtual HRESULT QueryAccept(const AM_MEDIA_TYPE* type /*in*/) = 0;
    virtual HRESULT EnumMediaTypes(IEnumMediaTypes** types /*out*/) = 0;
    virtual HRESULT QueryInternalConnections(IPin** pins /*out*/, ULONG* count /*in, out*/) = 0;
    virtual HRESULT EndOfStream() = 0;
    virtual HRESULT BeginFlush() = 0;
    virtual HRESULT EndFlush() = 0;
    virtual HRESULT NewSegment(REFERENCE_TIME start /*in*/, REFERENCE_TIME stop /*in*/,
                               double rate /*in*/) = 0;

protected:
    ~IPin() = default;
};
inline constexpr GUID IID_IPin = MakeGuid("56A86891-0AD4-11CE-B03A-0020AF0BA770");

struct IQualityControl : IUnknown {
    virtual HRESULT Notify(IBaseFilter* self /*in*/, Quality quality /*in*/) = 0;
    virtual HRESULT SetSink(IQualityControl* sink /*in: not counted*/) = 0;

protected:
    ~IQualityControl() = default;
};
inline constexpr GUID IID_IQualityControl = MakeGuid("56A868A5-0AD4-11CE-B03A-0020AF0BA770");

// Enumerators: Next returns S_OK when `count` things came, else S_FALSE. `fetched` may be null for a count
// of 1.
struct IEnumPins : IUnknown {
    virtual HRESULT Next(ULONG count /*in*/, IPin** pins /*out*/, ULONG* fetched /*out*/) = 0;
    virtual HRESULT Skip(ULONG count /*in*/) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumPins** copy /*out*/) = 0;

protected:
    ~IEnumPins() = default;
};
inline constexpr GUID IID_IEnumPins = MakeGuid("56A86892-0AD4-11CE-B03A-0020AF0BA770");

struct IEnumMediaTypes : IUnknown {
    // The caller clears and frees each type.
    virtual HRESULT Next(ULONG count /*in*/, AM_MEDIA_TYPE** types /*out*/, ULONG* fetched /*out*/) = 0;
    virtual HRESULT Skip(ULONG count /*in*/) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumMediaTypes** copy /*out*/) = 0;

protected:
    ~IEnumMediaTypes() = default;
};
inline constexpr GUID IID_IEnumMediaTypes = MakeGuid("89C31040-846B-11CE-97D3-00AA0055595A");

// A source filter that opens a file.
struct IFileSourceFilter : IUnknown {
    virtual HRESULT Load(const WCHAR* path /*in*/, const AM_MEDIA_TYPE* type /*in: may be null*/) = 0;
    virtual HRESULT GetCurFile(WCHAR** path /*out: CoTaskMemFree's*/, AM_MEDIA_TYPE* type /*out*/) = 0;

protected:
    ~IFileSourceFilter() = default;
};
inline constexpr GUID IID_IFileSourceFilter = MakeGuid("56A868A6-0AD4-11CE-B03A-0020AF0BA770");

struct IAMovieSetup : IUnknown {
    virtual HRESULT Register() = 0;
    virtual HRESULT Unregister() = 0;

protected:
    ~IAMovieSetup() = default;
};
inline constexpr GUID IID_IAMovieSetup = MakeGuid("A3D8CEC0-7E5A-11CF-BBC5-00805F6CEF20");

// Where filters report events of a graph.
struct IMediaEventSink : IUnknown {
    virtual HRESULT Notify(LONG code /*in*/, LONG_PTR first /*in*/, LONG_PTR second /*in*/) = 0;

protected:
    ~IMediaEventSink() = default;
};
inline constexpr GUID IID_IMediaEventSink = MakeGuid("56A868A2-0AD4-11CE-B03A-0020AF0BA770");
