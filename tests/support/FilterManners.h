// What any filter, pin, enumerator and seeking face answers to any caller, whoever wrote it: nothing is taken
// from or written to null, what is asked for comes back, and what isn't there is said.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform/com/RefPtr.h"
#include "platform/com/TaskMemory.h"
#include "platform/media/GraphInterfaces.h"
#include "platform/media/MediaType.h"

namespace filter_manners {

inline void Let(IUnknown* thing) { thing->Release(); }
inline void Let(AM_MEDIA_TYPE* type) { FreeMediaTypeBlock(type); }

// Walks it twice with a copy taken in the middle; returns how many things it has.
template <class Thing, class Enumerator>
ULONG ExpectEnumerates(Enumerator& things) {
    Thing* thing = nullptr;
    ULONG count = 0;
    EXPECT_EQ(things.Next(1, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(things.Next(2, &thing, nullptr), E_INVALIDARG);
    EXPECT_EQ(things.Clone(nullptr), E_POINTER);
    for (ULONG one = 0; things.Next(1, &thing, &one) == S_OK; ++count) Let(thing);
    EXPECT_EQ(things.Skip(1), S_FALSE);
    EXPECT_EQ(things.Reset(), S_OK);
    EXPECT_EQ(things.Skip(count), S_OK);
    RefPtr<Enumerator> copy;
    EXPECT_EQ(things.Clone(copy.Put()), S_OK);
    EXPECT_EQ(copy->Next(1, &thing, nullptr), S_FALSE);
    EXPECT_EQ(copy->Reset(), S_OK);
    void* face = nullptr;
    EXPECT_EQ(things.QueryInterface(IID_IMediaSeeking, &face), E_NOINTERFACE);
    EXPECT_EQ(things.QueryInterface(IID_IUnknown, &face), S_OK);
    static_cast<IUnknown*>(face)->Release();
    return count;
}

inline void ExpectPin(IBaseFilter& filter, IPin& pin) {
    const AM_MEDIA_TYPE foreign = {};
    EXPECT_EQ(pin.Connect(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(pin.ReceiveConnection(nullptr, &foreign), E_POINTER);
    EXPECT_EQ(pin.ReceiveConnection(&pin, nullptr), E_POINTER);
    for (const HRESULT result : {pin.ConnectedTo(nullptr), pin.ConnectionMediaType(nullptr),
                                 pin.QueryPinInfo(nullptr), pin.QueryDirection(nullptr), pin.QueryId(nullptr),
                                 pin.QueryAccept(nullptr), pin.EnumMediaTypes(nullptr)})
        EXPECT_EQ(result, E_POINTER);
    EXPECT_EQ(pin.QueryInternalConnections(nullptr, nullptr), E_NOTIMPL);

    PIN_INFO info = {};
    EXPECT_EQ(pin.QueryPinInfo(&info), S_OK);
    EXPECT_EQ(info.pFilter, &filter);
    info.pFilter->Release();
    PIN_DIRECTION direction = {};
    EXPECT_EQ(pin.QueryDirection(&direction), S_OK);
    EXPECT_EQ(direction, info.dir);
    WCHAR* id = nullptr;
    ASSERT_EQ(pin.QueryId(&id), S_OK);
    EXPECT_EQ(std::u16string(id), info.achName);
    RefPtr<IPin> found;
    EXPECT_EQ(filter.FindPin(id, found.Put()), S_OK);
    CoTaskMemFree(id);

    RefPtr<IPin> peer;
    AM_MEDIA_TYPE type = {};
    const bool isConnected = pin.ConnectedTo(peer.Put()) == S_OK;
    EXPECT_EQ(pin.ConnectionMediaType(&type), isConnected ? S_OK : VFW_E_NOT_CONNECTED);
    if (isConnected) {
        EXPECT_LT(pin.ReceiveConnection(peer.Get(), &type), 0);
        EXPECT_EQ(pin.QueryAccept(&type), S_OK);
    }
    ClearMediaType(type);
    RefPtr<IEnumMediaTypes> types;
    ASSERT_EQ(pin.EnumMediaTypes(types.Put()), S_OK);
    ExpectEnumerates<AM_MEDIA_TYPE>(*types);
}

inline void ExpectFilter(IBaseFilter& filter) {
    for (const HRESULT result :
         {filter.GetClassID(nullptr), filter.GetState(0, nullptr), filter.GetSyncSource(nullptr),
          filter.EnumPins(nullptr), filter.FindPin(u"In", nullptr), filter.QueryFilterInfo(nullptr)})
        EXPECT_EQ(result, E_POINTER);
    EXPECT_EQ(filter.QueryVendorInfo(nullptr), E_NOTIMPL);
    RefPtr<IPin> none;
    EXPECT_EQ(filter.FindPin(nullptr, none.Put()), E_POINTER);
    EXPECT_EQ(filter.FindPin(u"no such pin", none.Put()), VFW_E_NOT_FOUND);
    GUID classId = {};
    EXPECT_EQ(filter.GetClassID(&classId), S_OK);
    RefPtr<IReferenceClock> clock;
    EXPECT_EQ(filter.GetSyncSource(clock.Put()), S_OK);
    EXPECT_FALSE(clock);
    FILTER_INFO info = {};
    EXPECT_EQ(filter.QueryFilterInfo(&info), S_OK);
    if (info.pGraph) info.pGraph->Release();
    RefPtr<IEnumPins> pins;
    ASSERT_EQ(filter.EnumPins(pins.Put()), S_OK);
    EXPECT_NE(ExpectEnumerates<IPin>(*pins), 0U);
    pins->Reset();
    for (RefPtr<IPin> pin; pins->Next(1, pin.Put(), nullptr) == S_OK;) ExpectPin(filter, *pin);
}

// Of one that is connected with what knows the times; `duration` in units of 100 ns.
inline void ExpectSeeking(IMediaSeeking& seeking, LONGLONG duration) {
    constexpr DWORD kFurtherBit = 8;  // the time is to come back
    const GUID frames = {};
    LONGLONG time = 0, other = 0;
    double rate = 0;
    GUID format = {};
    for (const HRESULT result :
         {seeking.GetCapabilities(nullptr), seeking.CheckCapabilities(nullptr),
          seeking.IsFormatSupported(nullptr), seeking.QueryPreferredFormat(nullptr),
          seeking.GetTimeFormat(nullptr), seeking.IsUsingTimeFormat(nullptr), seeking.SetTimeFormat(nullptr),
          seeking.GetDuration(nullptr), seeking.GetStopPosition(nullptr), seeking.GetCurrentPosition(nullptr),
          seeking.ConvertTimeFormat(nullptr, nullptr, 1, nullptr),
          seeking.SetPositions(nullptr, AM_SEEKING_AbsolutePositioning, nullptr, 0), seeking.GetRate(nullptr),
          seeking.GetPreroll(nullptr)})
        EXPECT_EQ(result, E_POINTER);

    DWORD can = 0;
    EXPECT_EQ(seeking.GetCapabilities(&can), S_OK);
    DWORD asked = can;
    EXPECT_EQ(seeking.CheckCapabilities(&asked), S_OK);
    asked = ~DWORD{0};
    EXPECT_EQ(seeking.CheckCapabilities(&asked), S_FALSE);
    EXPECT_EQ(asked, can);
    asked = ~can;
    EXPECT_EQ(seeking.CheckCapabilities(&asked), E_FAIL);
    EXPECT_EQ(seeking.QueryPreferredFormat(&format), S_OK);
    EXPECT_TRUE(format == TIME_FORMAT_MEDIA_TIME);
    EXPECT_EQ(seeking.GetTimeFormat(&format), S_OK);
    EXPECT_EQ(seeking.IsFormatSupported(&format), S_OK);
    EXPECT_EQ(seeking.IsUsingTimeFormat(&frames), S_FALSE);
    EXPECT_EQ(seeking.SetTimeFormat(&format), S_OK);
    EXPECT_EQ(seeking.SetTimeFormat(&frames), E_INVALIDARG);
    EXPECT_EQ(seeking.ConvertTimeFormat(&time, nullptr, 7, &format), S_OK);
    EXPECT_EQ(time, 7);
    EXPECT_EQ(seeking.ConvertTimeFormat(&time, &frames, 7, nullptr), E_INVALIDARG);
    EXPECT_EQ(seeking.GetDuration(&time), S_OK);
    EXPECT_EQ(time, duration);
    EXPECT_EQ(seeking.GetStopPosition(&time), S_OK);
    EXPECT_EQ(time, duration);
    EXPECT_EQ(seeking.GetAvailable(&other, &time), S_OK);
    EXPECT_TRUE(other == 0 && time == duration);
    EXPECT_EQ(seeking.GetRate(&rate), S_OK);
    EXPECT_EQ(seeking.SetRate(rate), S_OK);
    EXPECT_EQ(seeking.SetRate(2 * rate), E_NOTIMPL);
    EXPECT_EQ(seeking.GetPreroll(&time), S_OK);
    EXPECT_EQ(time, 0);
    time = duration / 2;
    EXPECT_EQ(
        seeking.SetPositions(&time, AM_SEEKING_AbsolutePositioning, &other, AM_SEEKING_AbsolutePositioning),
        E_NOTIMPL);
    EXPECT_EQ(seeking.SetPositions(&time, AM_SEEKING_AbsolutePositioning | kFurtherBit, nullptr, 0),
              E_NOTIMPL);
    EXPECT_EQ(seeking.SetPositions(nullptr, 0, nullptr, 0), S_OK);
    other = -1;
    EXPECT_EQ(seeking.SetPositions(&other, AM_SEEKING_AbsolutePositioning, nullptr, 0), E_INVALIDARG);
    EXPECT_EQ(seeking.SetPositions(&time, AM_SEEKING_AbsolutePositioning, nullptr, 0), S_OK);
    EXPECT_EQ(seeking.GetCurrentPosition(&other), S_OK);
    EXPECT_EQ(other, time);
}

}  // namespace filter_manners
