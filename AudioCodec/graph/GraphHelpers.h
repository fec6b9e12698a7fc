// Steps of building a media graph: create it, bring filters in by class or straight from a module's file,
// connect them. No state, no locks. Every out-parameter receives one reference, which is the caller's also
// where a later step fails; results are the platform's.
//
// A filter's module stays loaded until the process ends. Its path goes to the loader in the system's bytes,
// not through a code page, so that no character of it is lost. Throws std::bad_alloc alone.
#pragma once

#include "platform/media/MediaInterfaces.h"

// E_FAIL for a null pointer, else what the platform returns.
HRESULT CreateFilterGraph(IGraphBuilder** graph, IMediaControl** control, IMediaSeeking** seeking);

// Adds a filter of a class that the platform knows.
HRESULT AddFilterByCLSID(IFilterGraph* graph, const GUID& clsid, IBaseFilter** filter, const WCHAR* name);

// Adds a filter out of the module at `path`, registered or not. E_INVALIDARG where there is no such module or
// it hands out no classes.
HRESULT AddFilterFromFile(IFilterGraph* graph, const GUID& clsid, const WCHAR* path, IBaseFilter** filter,
                          const WCHAR* name);

// Connects the first free output of one filter to the first free input of the other; the graph may put
// further filters between them. E_POINTER for a null argument, E_FAIL where a filter has no free pin.
HRESULT ConnectFilters(IGraphBuilder* graph, IBaseFilter* upstream, IBaseFilter* downstream);
HRESULT ConnectFilters(IGraphBuilder* graph, IPin* output, IBaseFilter* downstream);

// The first pin of that direction, in the filter's own order, that isn't connected. E_FAIL if there is none.
HRESULT GetUnconnectedPin(IBaseFilter* filter, PIN_DIRECTION direction, IPin** pin);
