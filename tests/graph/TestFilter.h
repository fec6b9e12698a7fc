// A filter with pins that note what is asked of them and answer as a test tells them; and an allocator as its
// users hold it.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "AudioCodec/graph/filter/CBaseFilter.h"
#include "AudioCodec/graph/filter/CBasePin.h"
#include "AudioCodec/graph/filter/CMemAllocator.h"

// A type that is told from others by a number; 0 leaves the subtype open. A format makes it fully specified.
inline AM_MEDIA_TYPE TypeNumber(uint32_t subtype, BYTE* format = nullptr) {
    AM_MEDIA_TYPE type = {};
    type.majortype = MEDIATYPE_Audio;
    type.subtype.Data1 = subtype;
    if (format) {
        type.formattype = FORMAT_WaveFormatEx;
        type.cbFormat = 1;
        type.pbFormat = format;
    }
    return type;
}

class TestPin final : public CBasePin {
public:
    using CBasePin::CBasePin;

    std::string calls;                // a letter for each
    std::map<char, HRESULT> answers;  // to those calls, where they aren't 0
    std::vector<uint32_t> types = {1};
    std::function<HRESULT(uint32_t)> check = [](uint32_t) { return S_OK; };
    std::function<void(IPin*)> onComplete = [](IPin*) {};
    using CBasePin::IncrementTypeVersion;

    HRESULT Active() override { return Note('A'); }
    HRESULT Inactive() override { return Note('I'); }
    HRESULT Run(REFERENCE_TIME) override { return Note('R'); }
    HRESULT BreakConnect() override { return Note('B'); }
    HRESULT CompleteConnect(IPin* peer) override {
        onComplete(peer);
        return Note('C');
    }
    HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override { return check(type.subtype.Data1); }
    HRESULT GetMediaType(int index, MediaType* type) override {
        BYTE format = 1;
        if (index >= static_cast<int>(types.size())) return VFW_S_NO_MORE_ITEMS;
        return type->Assign(TypeNumber(types[static_cast<size_t>(index)], &format));
    }
    HRESULT BeginFlush() override { return S_OK; }
    HRESULT EndFlush() override { return S_OK; }

private:
    HRESULT Note(char call) {
        calls += call;
        return answers[call];
    }
};

class TestFilter final : public CBaseFilter {
public:
    TestFilter(PIN_DIRECTION direction, int pinCount)
        : CBaseFilter(u"test", nullptr, &m_filterLock, CLSID_FilterGraph) {
        for (int i = 0; i < pinCount; ++i) {
            pins.push_back(std::make_unique<TestPin>(this, &m_filterLock, u"pin", direction));
        }
    }

    std::vector<std::unique_ptr<TestPin>> pins;
    using CBaseFilter::IncrementPinVersion;
    int GetPinCount() override { return static_cast<int>(pins.size()); }
    CBasePin* GetPin(int index) override {
        return index < GetPinCount() ? pins[static_cast<size_t>(index)].get() : nullptr;
    }

private:
    CCritSec m_filterLock;
};

inline RefPtr<TestFilter> NewTestFilter(PIN_DIRECTION direction, int pinCount = 1) {
    return RefPtr<TestFilter>::Retain(new TestFilter(direction, pinCount));
}

template <class Interface>
RefPtr<Interface> Ask(IUnknown* object, const GUID& iid) {
    void* face = nullptr;
    object->QueryInterface(iid, &face);
    return RefPtr<Interface>::Adopt(static_cast<Interface*>(face));
}

inline RefPtr<IMemAllocator> NewTestAllocator() {
    HRESULT result = S_OK;
    return RefPtr<IMemAllocator>::Retain(new CMemAllocator(nullptr, &result));
}

// Agrees on sizes and commits.
inline HRESULT CommitBuffers(IMemAllocator& allocator, LONG count, LONG size) {
    ALLOCATOR_PROPERTIES wanted = {.cBuffers = count, .cbBuffer = size, .cbAlign = 1, .cbPrefix = 0};
    ALLOCATOR_PROPERTIES actual = {};
    const HRESULT result = allocator.SetProperties(&wanted, &actual);
    return FAILED(result) ? result : allocator.Commit();
}

inline RefPtr<IMediaSample> TakeSample(IMemAllocator& allocator, DWORD flags = 0) {
    RefPtr<IMediaSample> sample;
    allocator.GetBuffer(sample.Put(), nullptr, nullptr, flags);
    return sample;
}
