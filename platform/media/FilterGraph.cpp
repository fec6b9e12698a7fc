#include "platform/media/FilterGraph.h"

#include <algorithm>
#include <chrono>

#include "platform/media/Enumerators.h"
#include "platform/media/Parser.h"
#include "platform/media/PinLists.h"

HRESULT FilterGraph::QueryInterface(const GUID& iid, void** object) {
    return GiveFace({{IID_IGraphBuilder, static_cast<IGraphBuilder*>(this)},
                     {IID_IFilterGraph, static_cast<IGraphBuilder*>(this)},
                     {IID_IMediaControl, static_cast<IMediaControl*>(this)},
                     {IID_IDispatch, static_cast<IMediaControl*>(this)},
                     {IID_IMediaSeeking, static_cast<IMediaSeeking*>(this)}},
                    iid, object);
}

FilterGraph::~FilterGraph() {
    Stop();
    // A filter may be held by others beyond this graph: it must not go on pointing at it, nor
    // at its neighbours.
    while (!m_filters.empty()) RemoveFilter(m_filters.back().Get());
}

HRESULT FilterGraph::AddFilter(IBaseFilter* filter, const WCHAR* name) {
    if (!filter) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_lock);
        // First what may throw: a filter that has joined must be in the list, or nobody would tell it when
        // the graph ends.
        m_filters.push_back(Filter::Retain(filter));
        const HRESULT result = filter->JoinFilterGraph(this, name);
        if (FAILED(result)) m_filters.pop_back();
        return result;
    });
}

HRESULT FilterGraph::RemoveFilter(IBaseFilter* filter) {
    if (!filter) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_lock);
        const auto found = std::ranges::find(m_filters, filter, &Filter::Get);
        if (found == m_filters.end()) return VFW_E_NOT_FOUND;
        // The list may have held the last reference.
        const Filter alive = *found;
        m_filters.erase(found);
        alive->Stop();
        for (const RefPtr<IPin>& pin : PinsOf(*alive)) {
            // Each end drops its own half; an end left behind could never be connected again.
            if (const auto peer = PeerOf(*pin)) peer->Disconnect();
            pin->Disconnect();
        }
        return alive->JoinFilterGraph(nullptr, nullptr);
    });
}

HRESULT FilterGraph::EnumFilters(IEnumFilters** filters) {
    if (!filters) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_lock);
        return GiveEnumerator<FilterThings>(m_filters, filters);
    });
}

HRESULT FilterGraph::FindFilterByName(const WCHAR* name, IBaseFilter** filter) {
    if (!name || !filter) return E_POINTER;
    *filter = nullptr;
    const std::lock_guard lock(m_lock);
    for (const Filter& candidate : m_filters) {
        FILTER_INFO info = {};
        if (FAILED(candidate->QueryFilterInfo(&info))) continue;
        // The answer comes with a reference.
        if (info.pGraph) info.pGraph->Release();
        if (std::u16string_view(info.achName) != name) continue;
        *filter = Filter(candidate).Detach();
        return S_OK;
    }
    return VFW_E_NOT_FOUND;
}

HRESULT FilterGraph::ConnectDirect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) {
    if (!output || !input) return E_POINTER;
    const std::lock_guard lock(m_lock);
    return output->Connect(input, type);
}

HRESULT FilterGraph::Disconnect(IPin* pin) {
    if (!pin) return E_POINTER;
    const std::lock_guard lock(m_lock);
    return pin->Disconnect();
}

HRESULT FilterGraph::Connect(IPin* output, IPin* input) {
    if (!output || !input) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_lock);
        if (PeerOf(*output) || PeerOf(*input)) return VFW_E_ALREADY_CONNECTED;
        // Directly where the two agree; the parser is for a source of mere bytes.
        if (SUCCEEDED(output->Connect(input, nullptr))) return S_OK;
        return ConnectThroughParser(*output, *input);
    });
}

HRESULT FilterGraph::ConnectThroughParser(IPin& output, IPin& input) {
    const auto parser = Make<Parser>();
    // Into the graph before it is connected, as any filter; a failure below takes it out with all it
    // is connected to.
    HRESULT result = AddFilter(parser.Get(), u"Wave Parser");
    if (FAILED(result)) return result;
    const auto inputs = PinsOf(*parser, PINDIR_INPUT);
    if (!inputs.empty() && SUCCEEDED(output.Connect(inputs.front().Get(), nullptr))) {
        for (const auto& parsed : PinsOf(*parser, PINDIR_OUTPUT)) {
            if (SUCCEEDED(parsed->Connect(&input, nullptr))) return S_OK;
        }
    }
    RemoveFilter(parser.Get());
    return VFW_E_CANNOT_CONNECT;
}

// Receivers come before those that send to them: so nobody sends to a stopped filter, and no filter is waited
// for that itself waits for another.
std::vector<FilterGraph::Filter> FilterGraph::FromTheLast() const {
    std::vector<IBaseFilter*> seen;
    std::vector<Filter> order;
    for (const Filter& filter : m_filters) VisitBehind(filter.Get(), seen, order);
    return order;
}

void FilterGraph::VisitBehind(IBaseFilter* filter, std::vector<IBaseFilter*>& seen,
                              std::vector<Filter>& order) const {
    const bool isOurs = std::ranges::find(m_filters, filter, &Filter::Get) != m_filters.end();
    // Filters of another graph are not this one's to command; those seen are left out, so a circle ends too.
    if (!isOurs || std::ranges::find(seen, filter) != seen.end()) return;
    seen.push_back(filter);
    for (const auto& output : PinsOf(*filter, PINDIR_OUTPUT)) {
        const RefPtr<IPin> peer = PeerOf(*output);
        if (peer) VisitBehind(OwnerOf(*peer).Get(), seen, order);
    }
    // After all that it sends to.
    order.push_back(Filter::Retain(filter));
}

// All filters are asked, also after one that refuses or takes its time. The first failure is the result,
// else S_FALSE if one isn't there yet.
template <class Change>
HRESULT FilterGraph::ChangeState(FILTER_STATE state, Change change) {
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_lock);
        // What was asked for, also when a filter fails: whether they are there the filters themselves
        // tell in GetState.
        m_state = state;
        HRESULT result = S_OK;
        for (const Filter& filter : FromTheLast()) {
            const HRESULT its = change(*filter);
            if (FAILED(result)) continue;
            if (FAILED(its) || its == S_FALSE) result = its;
        }
        return result;
    });
}

HRESULT FilterGraph::Run() {
    const std::lock_guard lock(m_lock);
    // Filters go from stopped to running through paused, where they get ready; so does the graph.
    const HRESULT paused = m_state == State_Stopped ? Pause() : S_OK;
    if (FAILED(paused)) return paused;
    const HRESULT running = ChangeState(State_Running, [](IBaseFilter& filter) { return filter.Run(0); });
    return FAILED(running) ? running : running == S_FALSE || paused == S_FALSE ? S_FALSE : S_OK;
}

HRESULT FilterGraph::Pause() {
    return ChangeState(State_Paused, [](IBaseFilter& filter) { return filter.Pause(); });
}

HRESULT FilterGraph::Stop() {
    return ChangeState(State_Stopped, [](IBaseFilter& filter) { return filter.Stop(); });
}

HRESULT FilterGraph::GetState(LONG milliseconds, OAFilterState* state) {
    if (!state) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        using Clock = std::chrono::steady_clock;
        const auto start = Clock::now();
        std::unique_lock lock(m_lock);
        *state = m_state;
        const std::vector<Filter> filters = m_filters;
        lock.unlock();  // another thread may stop the graph meanwhile
        for (const Filter& filter : filters) {
            // One time for all filters together: each gets what those before it left.
            const auto gone =
                std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
            const auto left = static_cast<DWORD>(std::max<int64_t>(0, milliseconds - gone));
            FILTER_STATE its = State_Stopped;
            const HRESULT result = filter->GetState(milliseconds < 0 ? 0xFFFFFFFF : left, &its);
            if (result != S_OK) return result;
        }
        return S_OK;
    });
}

// The filter that reads last has the interface itself; those before it have it on their pins, where
// it asks them.
RefPtr<IMediaSeeking> FilterGraph::NextSeeking() {
    const std::lock_guard lock(m_lock);
    for (const Filter& filter : m_filters) {
        if (auto seeking = FaceOf<IMediaSeeking>(filter.Get(), IID_IMediaSeeking)) return seeking;
    }
    return {};
}
