// A filter with pins that note what is asked of them and answer as a test tells them.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "AudioCodec/graph/filter/CBaseFilter.h"
#include "AudioCodec/graph/filter/CBasePin.h"

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
    TestPin(CBaseFilter* filter, CCritSec* lock, const WCHAR* name, PIN_DIRECTION direction)
        : CBasePin(filter, lock, name, direction) {}

    std::string calls;  // a letter for each
    std::vector<uint32_t> types;
    std::function<HRESULT(uint32_t)> check = [](uint32_t) { return S_OK; };
    HRESULT active = S_OK, inactive = S_OK, complete = S_OK;
    std::function<void(IPin*)> onComplete;
    void ChangeTypes() { IncrementTypeVersion(); }

    HRESULT Active() override { return Note('A', active); }
    HRESULT Inactive() override { return Note('I', inactive); }
    HRESULT Run(REFERENCE_TIME) override { return Note('R', S_OK); }
    HRESULT BreakConnect() override { return Note('B', S_OK); }
    HRESULT CompleteConnect(IPin* peer) override {
        if (onComplete) onComplete(peer);
        return Note('C', complete);
    }
    HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override { return check(type.subtype.Data1); }
    HRESULT GetMediaType(int index, CMediaTypeValue* type) override {
        BYTE format = 1;
        if (index >= static_cast<int>(types.size())) return VFW_S_NO_MORE_ITEMS;
        return type->Assign(TypeNumber(types[static_cast<size_t>(index)], &format));
    }
    HRESULT BeginFlush() override { return S_OK; }
    HRESULT EndFlush() override { return S_OK; }

private:
    HRESULT Note(char call, HRESULT result) {
        calls += call;
        return result;
    }
};

class TestFilter final : public CBaseFilter {
public:
    explicit TestFilter(PIN_DIRECTION direction, int pinCount = 1, bool* deleted = nullptr)
        : CBaseFilter(u"test", nullptr, &m_filterLock, CLSID_FilterGraph), m_deleted(deleted) {
        for (int i = 0; i < pinCount; ++i) {
            const std::u16string name = {u'p', static_cast<char16_t>(u'0' + i)};
            pins.push_back(std::make_unique<TestPin>(this, &m_filterLock, name.c_str(), direction));
        }
    }
    ~TestFilter() override {
        if (m_deleted) *m_deleted = true;
    }

    std::vector<std::unique_ptr<TestPin>> pins;
    void ChangePins() { IncrementPinVersion(); }
    int GetPinCount() override { return static_cast<int>(pins.size()); }
    CBasePin* GetPin(int index) override {
        return index < GetPinCount() ? pins[static_cast<size_t>(index)].get() : nullptr;
    }

private:
    CCritSec m_filterLock;
    bool* m_deleted;
};

inline RefPtr<TestFilter> NewTestFilter(PIN_DIRECTION direction, int pinCount = 1, bool* deleted = nullptr) {
    return RefPtr<TestFilter>::Retain(new TestFilter(direction, pinCount, deleted));
}

template <class Interface>
RefPtr<Interface> Ask(IUnknown* object, const GUID& iid) {
    void* face = nullptr;
    object->QueryInterface(iid, &face);
    return RefPtr<Interface>::Adopt(static_cast<Interface*>(face));
}
