#include "AudioCodec/graph/GraphHelpers.h"

#include <bit>

#include "platform/base/Utf.h"
#include "platform/com/ClassFactory.h"
#include "platform/com/RefPtr.h"
#include "platform/loader/Library.h"

namespace {

constexpr DWORD kInProcess = CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER;

// Asks for one more interface of an object that is there.
template <class Interface>
HRESULT Ask(IUnknown& object, const GUID& iid, Interface** receiver) {
    return object.QueryInterface(iid, reinterpret_cast<void**>(receiver));
}

// Also a positive answer of AddFilter ends the work.
HRESULT JoinGraph(IFilterGraph* graph, IBaseFilter** filter, const WCHAR* name) {
    const HRESULT added = graph->AddFilter(*filter, name);
    return added == S_OK ? (*filter)->JoinFilterGraph(graph, name) : added;
}

DllGetClassObjectFunction FindClassObjects(const WCHAR* path) {
    const HMODULE module = LoadLibraryExA(Utf::ToUtf8(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return module ? std::bit_cast<DllGetClassObjectFunction>(GetProcAddress(module, "DllGetClassObject"))
                  : nullptr;
}

}  // namespace

HRESULT CreateFilterGraph(IGraphBuilder** graph, IMediaControl** control, IMediaSeeking** seeking) {
    if (!graph || !control || !seeking) return E_FAIL;
    HRESULT result = CoCreateInstance(CLSID_FilterGraph, nullptr, kInProcess, IID_IGraphBuilder,
                                      reinterpret_cast<void**>(graph));
    if (FAILED(result)) return result;
    result = Ask(**graph, IID_IMediaControl, control);
    return FAILED(result) ? result : Ask(**graph, IID_IMediaSeeking, seeking);
}

HRESULT AddFilterByCLSID(IFilterGraph* graph, const GUID& clsid, IBaseFilter** filter, const WCHAR* name) {
    const HRESULT created =
        CoCreateInstance(clsid, nullptr, kInProcess, IID_IBaseFilter, reinterpret_cast<void**>(filter));
    if (FAILED(created)) return created;
    return graph && filter ? JoinGraph(graph, filter, name) : E_FAIL;
}

HRESULT AddFilterFromFile(IFilterGraph* graph, const GUID& clsid, const WCHAR* path, IBaseFilter** filter,
                          const WCHAR* name) {
    const DllGetClassObjectFunction getClassObject = FindClassObjects(path);
    if (!getClassObject) return E_INVALIDARG;
    RefPtr<IClassFactory> factory;
    HRESULT result = getClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(factory.Put()));
    if (!factory) return result;
    result = factory->CreateInstance(nullptr, IID_IBaseFilter, reinterpret_cast<void**>(filter));
    if (result != S_OK) return result;
    return graph && filter ? JoinGraph(graph, filter, name) : E_FAIL;
}

HRESULT GetUnconnectedPin(IBaseFilter* filter, PIN_DIRECTION direction, IPin** pin) {
    *pin = nullptr;
    RefPtr<IEnumPins> pins;
    const HRESULT listed = filter->EnumPins(pins.Put());
    if (FAILED(listed)) return listed;
    RefPtr<IPin> candidate;
    while (pins->Next(1, candidate.Put(), nullptr) == S_OK) {
        PIN_DIRECTION own = direction;
        candidate->QueryDirection(&own);
        RefPtr<IPin> peer;
        if (own != direction || SUCCEEDED(candidate->ConnectedTo(peer.Put()))) continue;
        *pin = candidate.Detach();
        return S_OK;
    }
    return E_FAIL;
}

HRESULT ConnectFilters(IGraphBuilder* graph, IBaseFilter* upstream, IBaseFilter* downstream) {
    if (!graph || !upstream || !downstream) return E_POINTER;
    RefPtr<IPin> output;
    const HRESULT found = GetUnconnectedPin(upstream, PINDIR_OUTPUT, output.Put());
    return FAILED(found) ? found : ConnectFilters(graph, output.Get(), downstream);
}

HRESULT ConnectFilters(IGraphBuilder* graph, IPin* output, IBaseFilter* downstream) {
    if (!graph || !output || !downstream) return E_POINTER;
    RefPtr<IPin> input;
    const HRESULT found = GetUnconnectedPin(downstream, PINDIR_INPUT, input.Put());
    return FAILED(found) ? found : graph->Connect(output, input.Get());
}
