// The filter graph manager: it holds filters, connects their pins, with the parser between them where that is
// needed, changes the state of all of them in the right order, and passes questions on positions to the
// filter that reads last. It stops and takes apart what is left when it goes. Names need not be unique; no
// clock, no events, and no filters looked up for a file: those operations return E_NOTIMPL. Any thread.
//
// Decisions: a filter has all its pins when it comes. They are listed then and never again, so that nothing
// that stops filters or takes them apart needs memory, nor starts them in an order that lacks some.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "platform/media/NoDispatch.h"
#include "platform/media/Seeking.h"

class FilterGraph final : public ComObject<IGraphBuilder, NoDispatch<IMediaControl>, SeekingForwarder> {
public:
    HRESULT QueryInterface(const GUID& iid, void** object) override;

    HRESULT AddFilter(IBaseFilter* filter, const WCHAR* name) override;
    HRESULT RemoveFilter(IBaseFilter* filter) override;
    HRESULT EnumFilters(IEnumFilters** filters) override;
    HRESULT FindFilterByName(const WCHAR* name, IBaseFilter** filter) override;
    HRESULT ConnectDirect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) override;
    HRESULT Reconnect(IPin*) override { return E_NOTIMPL; }
    HRESULT Disconnect(IPin* pin) override;
    HRESULT SetDefaultSyncSource() override { return E_NOTIMPL; }

    HRESULT Connect(IPin* output, IPin* input) override;
    HRESULT Render(IPin*) override { return E_NOTIMPL; }
    HRESULT RenderFile(const WCHAR*, const WCHAR*) override { return E_NOTIMPL; }
    HRESULT AddSourceFilter(const WCHAR*, const WCHAR*, IBaseFilter**) override { return E_NOTIMPL; }
    HRESULT SetLogFile(DWORD_PTR) override { return E_NOTIMPL; }
    HRESULT Abort() override { return E_NOTIMPL; }
    HRESULT ShouldOperationContinue() override { return S_OK; }

    // A change that fails leaves the filters as they are, for Stop.
    HRESULT Run() override;
    HRESULT Pause() override;
    HRESULT Stop() override;
    HRESULT GetState(LONG milliseconds, OAFilterState* state) override;
    HRESULT RenderFile(BSTR) override { return E_NOTIMPL; }
    HRESULT AddSourceFilter(BSTR, IDispatch**) override { return E_NOTIMPL; }
    HRESULT get_FilterCollection(IDispatch**) override { return E_NOTIMPL; }
    HRESULT get_RegFilterCollection(IDispatch**) override { return E_NOTIMPL; }
    HRESULT StopWhenReady() override { return Stop(); }

private:
    using Filter = RefPtr<IBaseFilter>;
    using Pin = RefPtr<IPin>;
    struct Member {
        Filter filter;
        std::vector<Pin> pins;
        bool isPlaced = false;  // in m_order
    };

    ~FilterGraph() override;
    RefPtr<IMediaSeeking> NextSeeking() override;
    HRESULT ConnectThroughParser(IPin& output, IPin& input);
    template <class Change>
    HRESULT ChangeState(FILTER_STATE state, Change change);
    void PutInOrder();
    void PlaceAfterReceivers(Member& member);
    std::vector<Filter> Filters() const;

    std::recursive_mutex m_lock;           // never taken by a thread that moves data; filters may call back
    std::vector<Member> m_members;         // under m_lock, as all below
    std::vector<IBaseFilter*> m_order;     // with room for all members
    FILTER_STATE m_state = State_Stopped;  // the one last asked for
};
