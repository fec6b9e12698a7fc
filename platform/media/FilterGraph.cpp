#include "platform/media/FilterGraph.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/media/Enumerators.h"
#include "platform/media/Parser.h"
#include "platform/media/PinLists.h"

namespace {

// By which a filter is found in the list.
constexpr auto IdOf = [](const auto& member) { return member.filter.Get(); };

}  // namespace

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
    while (!m_members.empty()) RemoveFilter(m_members.back().filter.Get());
}

HRESULT FilterGraph::AddFilter(IBaseFilter* filter, const WCHAR* name) {
    if (!filter) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_lock);
        // First what may throw: a filter that has joined must be in the list, or nobody would tell it when
        // the graph ends.
        m_order.reserve(m_members.size() + 1);
        m_members.push_back({Filter::Retain(filter), PinsOf(*filter)});
        const HRESULT result = filter->JoinFilterGraph(this, name);
        if (FAILED(result)) m_members.pop_back();
        return result;
    });
}

HRESULT FilterGraph::RemoveFilter(IBaseFilter* filter) {
    if (!filter) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_lock);
        const auto found = std::ranges::find(m_members, filter, IdOf);
        if (found == m_members.end()) return VFW_E_NOT_FOUND;
        // The list may have held the last reference.
        const Member gone = std::move(*found);
        m_members.erase(found);
        gone.filter->Stop();
        for (const Pin& pin : gone.pins) {
            // Each end drops its own half; an end left behind could never be connected again.
            if (const auto peer = PeerOf(*pin)) peer->Disconnect();
            pin->Disconnect();
        }
        return gone.filter->JoinFilterGraph(nullptr, nullptr);
    });
}

HRESULT FilterGraph::EnumFilters(IEnumFilters** filters) {
    if (!filters) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_lock);
        return GiveEnumerator<FilterThings>(Filters(), filters);
    });
}

HRESULT FilterGraph::FindFilterByName(const WCHAR* name, IBaseFilter** filter) {
    if (!name || !filter) return E_POINTER;
    *filter = nullptr;
    const std::lock_guard lock(m_lock);
    for (const Member& member : m_members) {
        const Filter& candidate = member.filter;
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
    const std::vector<Pin>& pins = m_members.back().pins;  // its input, its output
    if (SUCCEEDED(output.Connect(pins.front().Get(), nullptr)) &&
        SUCCEEDED(pins.back()->Connect(&input, nullptr)))
        return S_OK;
    RemoveFilter(parser.Get());
    return VFW_E_CANNOT_CONNECT;
}

// Receivers come before those that send to them: so nobody sends to a stopped filter, and no filter is waited
// for that itself waits for another.
void FilterGraph::PutInOrder() {
    m_order.clear();
    for (Member& member : m_members) member.isPlaced = false;
    for (Member& member : m_members) PlaceAfterReceivers(member);
}

void FilterGraph::PlaceAfterReceivers(Member& member) {
    if (std::exchange(member.isPlaced, true)) return;  // so a circle ends too
    for (const Pin& pin : member.pins) {
        const Pin peer = IsOf(*pin, PINDIR_OUTPUT) ? PeerOf(*pin) : Pin();
        if (!peer) continue;
        // Filters of another graph are not this one's to command.
        const auto next = std::ranges::find(m_members, OwnerOf(*peer).Get(), IdOf);
        if (next != m_members.end()) PlaceAfterReceivers(*next);
    }
    m_order.push_back(member.filter.Get());
}

std::vector<FilterGraph::Filter> FilterGraph::Filters() const {
    std::vector<Filter> filters;
    for (const Member& member : m_members) filters.push_back(member.filter);
    return filters;
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
        PutInOrder();
        for (IBaseFilter* const filter : m_order) {
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
        const std::vector<Filter> filters = Filters();
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
    for (const Member& member : m_members) {
        if (auto seeking = FaceOf<IMediaSeeking>(member.filter.Get(), IID_IMediaSeeking)) return seeking;
    }
    return {};
}
