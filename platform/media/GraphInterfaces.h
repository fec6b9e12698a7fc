// What the filter graph manager offers to those who build and run a graph. The order of the operations
// is the platform's.
#pragma once

#include "platform/media/FilterInterfaces.h"

struct IEnumFilters : IUnknown {
    virtual HRESULT Next(ULONG count /*in*/, IBaseFilter** filters /*out*/, ULONG* fetched /*out*/) = 0;
    virtual HRESULT Skip(ULONG count /*in*/) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumFilters** copy /*out*/) = 0;

protected:
    ~IEnumFilters() = default;
};
inline constexpr GUID IID_IEnumFilters = MakeGuid("56A86893-0AD4-11CE-B03A-0020AF0BA770");

struct IFilterGraph : IUnknown {
    // The graph counts the filter and makes it join.
    virtual HRESULT AddFilter(IBaseFilter* filter /*in*/, const WCHAR* name /*in: may be null*/) = 0;
    virtual HRESULT RemoveFilter(IBaseFilter* filter /*in*/) = 0;
    virtual HRESULT EnumFilters(IEnumFilters** filters /*out*/) = 0;
    virtual HRESULT FindFilterByName(const WCHAR* name /*in*/, IBaseFilter** filter /*out*/) = 0;
    virtual HRESULT ConnectDirect(IPin* output /*in*/, IPin* input /*in*/,
                                  const AM_MEDIA_TYPE* type /*in: may be null*/) = 0;
    virtual HRESULT Reconnect(IPin* pin /*in*/) = 0;
    virtual HRESULT Disconnect(IPin* pin /*in: this one alone, not its peer*/) = 0;
    virtual HRESULT SetDefaultSyncSource() = 0;

protected:
    ~IFilterGraph() = default;
};
inline constexpr GUID IID_IFilterGraph = MakeGuid("56A8689F-0AD4-11CE-B03A-0020AF0BA770");

struct IGraphBuilder : IFilterGraph {
    // Connects the pins, with further filters between them where they don't fit each other.
    virtual HRESULT Connect(IPin* output /*in*/, IPin* input /*in*/) = 0;
    virtual HRESULT Render(IPin* output /*in*/) = 0;
    virtual HRESULT RenderFile(const WCHAR* file /*in*/, const WCHAR* playList /*in: null*/) = 0;
    virtual HRESULT AddSourceFilter(const WCHAR* file /*in*/, const WCHAR* name /*in*/,
                                    IBaseFilter** filter /*out*/) = 0;
    virtual HRESULT SetLogFile(DWORD_PTR file /*in*/) = 0;
    virtual HRESULT Abort() = 0;
    virtual HRESULT ShouldOperationContinue() = 0;

protected:
    ~IGraphBuilder() = default;
};
inline constexpr GUID IID_IGraphBuilder = MakeGuid("56A868A9-0AD4-11CE-B03A-0020AF0BA770");

struct ITypeInfo;
struct DISPPARAMS;
struct VARIANT;
struct EXCEPINFO;

// Calls by name. Stands in front of the interfaces that scripts may use; nobody calls it here.
struct IDispatch : IUnknown {
    virtual HRESULT GetTypeInfoCount(UINT* count /*out*/) = 0;
    virtual HRESULT GetTypeInfo(UINT index /*in*/, DWORD locale /*in*/, ITypeInfo** info /*out*/) = 0;
    virtual HRESULT GetIDsOfNames(const GUID& iid /*in*/, WCHAR** names /*in*/, UINT count /*in*/,
                                  DWORD locale /*in*/, LONG* ids /*out*/) = 0;
    virtual HRESULT Invoke(LONG id /*in*/, const GUID& iid /*in*/, DWORD locale /*in*/, WORD flags /*in*/,
                           DISPPARAMS* parameters /*in*/, VARIANT* result /*out*/,
                           EXCEPINFO* exception /*out*/, UINT* badArgument /*out*/) = 0;

protected:
    ~IDispatch() = default;
};
inline constexpr GUID IID_IDispatch = MakeGuid("00020400-0000-0000-C000-000000000046");

struct IMediaControl : IDispatch {
    // S_OK: all filters are in the state. S_FALSE: the change is under way; GetState waits for it.
    virtual HRESULT Run() = 0;
    virtual HRESULT Pause() = 0;
    virtual HRESULT Stop() = 0;
    // VFW_S_STATE_INTERMEDIATE while a change is still under way after the timeout.
    virtual HRESULT GetState(LONG milliseconds /*in*/, OAFilterState* state /*out*/) = 0;
    virtual HRESULT RenderFile(BSTR file /*in*/) = 0;
    virtual HRESULT AddSourceFilter(BSTR file /*in*/, IDispatch** filter /*out*/) = 0;
    virtual HRESULT get_FilterCollection(IDispatch** collection /*out*/) = 0;
    virtual HRESULT get_RegFilterCollection(IDispatch** collection /*out*/) = 0;
    virtual HRESULT StopWhenReady() = 0;

protected:
    ~IMediaControl() = default;
};
inline constexpr GUID IID_IMediaControl = MakeGuid("56A868B1-0AD4-11CE-B03A-0020AF0BA770");

// Positions in the stream, in the units of a time format. Offered by the graph and, against the flow of data,
// by filters and their output pins.
struct IMediaSeeking : IUnknown {
    virtual HRESULT GetCapabilities(DWORD* capabilities /*out: AM_SEEKING_Can…*/) = 0;
    // S_OK: all of them. S_FALSE: those left in the mask. E_FAIL: none.
    virtual HRESULT CheckCapabilities(DWORD* capabilities /*in, out*/) = 0;
    virtual HRESULT IsFormatSupported(const GUID* format /*in*/) = 0;  // S_OK or S_FALSE
    virtual HRESULT QueryPreferredFormat(GUID* format /*out*/) = 0;
    virtual HRESULT GetTimeFormat(GUID* format /*out*/) = 0;
    virtual HRESULT IsUsingTimeFormat(const GUID* format /*in*/) = 0;  // S_OK or S_FALSE
    virtual HRESULT SetTimeFormat(const GUID* format /*in*/) = 0;
    virtual HRESULT GetDuration(LONGLONG* duration /*out*/) = 0;
    virtual HRESULT GetStopPosition(LONGLONG* stop /*out*/) = 0;
    virtual HRESULT GetCurrentPosition(LONGLONG* current /*out*/) = 0;
    virtual HRESULT ConvertTimeFormat(LONGLONG* target /*out*/, const GUID* targetFormat /*in: may be null*/,
                                      LONGLONG source /*in*/,
                                      const GUID* sourceFormat /*in: may be null*/) = 0;
    // Flags are AM_SEEKING_…Positioning; a position whose flags say NoPositioning may be null.
    virtual HRESULT SetPositions(LONGLONG* current /*in*/, DWORD currentFlags /*in*/, LONGLONG* stop /*in*/,
                                 DWORD stopFlags /*in*/) = 0;
    virtual HRESULT GetPositions(LONGLONG* current /*out: may be null*/,
                                 LONGLONG* stop /*out: may be null*/) = 0;
    virtual HRESULT GetAvailable(LONGLONG* earliest /*out*/, LONGLONG* latest /*out*/) = 0;
    virtual HRESULT SetRate(double rate /*in*/) = 0;
    virtual HRESULT GetRate(double* rate /*out*/) = 0;
    virtual HRESULT GetPreroll(LONGLONG* preroll /*out*/) = 0;

protected:
    ~IMediaSeeking() = default;
};
inline constexpr GUID IID_IMediaSeeking = MakeGuid("36B73880-C2C8-11CF-8B46-00805F6CEF60");
