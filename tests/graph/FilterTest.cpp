#include <gtest/gtest.h>

#include "platform/base/TaskMemory.h"
#include "tests/graph/TestFilter.h"

namespace {

// An output filter and an input filter, not connected yet.
struct Pair {
    explicit Pair(int pinCount = 1)
        : source(NewTestFilter(PINDIR_OUTPUT, pinCount)), sink(NewTestFilter(PINDIR_INPUT, pinCount)) {}
    ~Pair() {
        for (const auto& filter : {source, sink}) {
            filter->Stop();
            for (const auto& pin : filter->pins) pin->Disconnect();
        }
    }
    TestPin& Out(size_t i = 0) { return *source->pins[i]; }
    TestPin& In(size_t i = 0) { return *sink->pins[i]; }
    HRESULT Connect(size_t i = 0, const AM_MEDIA_TYPE* wish = nullptr) {
        return Out(i).Connect(&In(i), wish);
    }

    RefPtr<TestFilter> source, sink;
};

FILTER_STATE StateOf(IMediaFilter& filter) {
    FILTER_STATE state = {};
    EXPECT_EQ(filter.GetState(0, &state), S_OK);
    return state;
}

TEST(BaseFilter, RunGoesThroughPauseOnceAndStopReachesEveryPin) {
    Pair pair(3);
    for (const size_t i : {0U, 2U}) {
        pair.Out(i).types = {1};
        ASSERT_EQ(pair.Connect(i), S_OK);
    }
    for (auto& pin : pair.source->pins) pin->calls.clear();
    pair.Out(2).active = VFW_E_NO_ALLOCATOR;
    EXPECT_EQ(pair.source->Run(0), VFW_E_NO_ALLOCATOR);
    EXPECT_EQ(StateOf(*pair.source), State_Stopped);
    pair.Out(2).active = S_OK;
    EXPECT_EQ(pair.source->Run(0), S_OK);
    EXPECT_EQ(pair.source->Run(0), S_OK);
    EXPECT_EQ(StateOf(*pair.source), State_Running);
    EXPECT_EQ(pair.source->Pause(), S_OK);
    EXPECT_EQ(StateOf(*pair.source), State_Paused);
    EXPECT_EQ(pair.Out(0).Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(pair.Out(1).Connect(&pair.In(1), nullptr), VFW_E_NOT_STOPPED);
    pair.Out(0).inactive = E_FAIL;
    pair.Out(2).inactive = E_UNEXPECTED;
    EXPECT_EQ(pair.source->Stop(), E_FAIL);
    EXPECT_EQ(StateOf(*pair.source), State_Stopped);
    EXPECT_EQ(pair.Out(0).calls, "AARI");
    EXPECT_EQ(pair.Out(1).calls, "");  // not connected
    EXPECT_EQ(pair.Out(2).calls, "AARI");
}

// Types that the ends offer and how the receiver answers to them; 0 where it takes one.
struct Negotiation {
    const char* name;
    std::vector<uint32_t> offered, received;
    uint32_t wish;                 // 0: none
    std::vector<HRESULT> answers;  // to the types 0, 1, …
    HRESULT result;
    uint32_t agreed;  // behind a success
};

class PinNegotiation : public testing::TestWithParam<Negotiation> {};

TEST_P(PinNegotiation, AgreesOnTheFirstTypeThatFitsOrGivesTheReason) {
    const Negotiation& row = GetParam();
    Pair pair;
    pair.Out().types = row.offered;
    pair.In().types = row.received;
    pair.In().check = [&row](uint32_t type) { return row.answers.at(type); };
    const AM_MEDIA_TYPE wish = TypeNumber(row.wish);
    EXPECT_EQ(pair.Connect(0, row.wish == 0 ? nullptr : &wish), row.result);
    AM_MEDIA_TYPE agreed = {};
    for (TestPin* pin : {&pair.Out(), &pair.In()}) {
        EXPECT_EQ(pin->ConnectionMediaType(&agreed), row.result == S_OK ? S_OK : VFW_E_NOT_CONNECTED);
        EXPECT_EQ(agreed.subtype.Data1, row.agreed);
        ClearMediaType(agreed);
        EXPECT_EQ(pin->IsConnected(), row.result == S_OK);
    }
}

constexpr HRESULT kNo = VFW_E_TYPE_NOT_ACCEPTED, kClock = VFW_E_NO_CLOCK, kSize = VFW_E_SIZENOTSET;
INSTANTIATE_TEST_SUITE_P(
    Types, PinNegotiation,
    testing::Values(Negotiation{"ReceiversFirst", {1}, {2}, 0, {0, 0, 0}, S_OK, 2},
                    Negotiation{"ThenOwn", {1}, {2}, 0, {0, 0, kNo}, S_OK, 1},
                    Negotiation{"OnlyThoseWished", {1}, {2, 3}, 3, {0, 0, 0, 0}, S_OK, 3},
                    Negotiation{"NothingWished", {1}, {2}, 3, {0, 0, 0, 0}, VFW_E_NO_ACCEPTABLE_TYPES, 0},
                    Negotiation{"Unspecific", {1}, {2}, 0, {0, E_FAIL, 1}, VFW_E_NO_ACCEPTABLE_TYPES, 0},
                    Negotiation{"FirstOfOneEnd", {}, {1, 2, 3}, 0, {0, kNo, kClock, kSize}, kClock, 0},
                    Negotiation{"LastOfTheEnds", {2}, {1}, 0, {0, kClock, kSize}, kSize, 0},
                    Negotiation{"NotTheUnspecific", {2}, {1}, 0, {0, kClock, E_INVALIDARG}, kClock, 0}),
    [](const auto& row) { return row.param.name; });

TEST(BasePin, AConnectionThatCantBeCompletedIsTakenBackAtBothEnds) {
    Pair pair;
    BYTE format = 1;
    const AM_MEDIA_TYPE full = TypeNumber(1, &format);
    const auto expectNone = [&pair] {
        EXPECT_FALSE(pair.Out().IsConnected() || pair.In().IsConnected());
        EXPECT_EQ(pair.Out().calls.back(), 'B');
    };
    pair.Out().complete = VFW_E_NO_TRANSPORT;  // behind the receiver's yes
    EXPECT_EQ(pair.Connect(0, &full), VFW_E_NO_TRANSPORT);
    EXPECT_EQ(pair.In().calls, "CB");
    expectNone();
    pair.Out().complete = S_OK;
    pair.In().complete = E_UNEXPECTED;
    EXPECT_EQ(pair.Connect(0, &full), E_UNEXPECTED);
    expectNone();
    EXPECT_EQ(pair.Out().Connect(&pair.Out(), &full), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(pair.In().ReceiveConnection(&pair.In(), &full), VFW_E_INVALID_DIRECTION);
    pair.In().complete = S_OK;
    EXPECT_EQ(pair.Connect(0, &full), S_OK);
    EXPECT_EQ(pair.Connect(0, &full), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(pair.In().ReceiveConnection(&pair.Out(), &full), VFW_E_ALREADY_CONNECTED);
    RefPtr<IPin> peer;
    EXPECT_EQ(pair.Out().ConnectedTo(peer.Put()), S_OK);
    EXPECT_EQ(peer.Get(), &pair.In());
    EXPECT_EQ(pair.Out().Disconnect(), S_OK);
    EXPECT_EQ(pair.Out().Disconnect(), S_FALSE);
    EXPECT_EQ(pair.Out().ConnectedTo(peer.Put()), VFW_E_NOT_CONNECTED);
}

TEST(BasePin, CountsForItsFilterAndHasOneIdentity) {
    bool deleted = false;
    auto filter = NewTestFilter(PINDIR_INPUT, 1, &deleted);
    TestPin& pin = *filter->pins[0];
    auto face = Ask<IQualityControl>(static_cast<IPin*>(&pin), IID_IQualityControl);
    EXPECT_EQ(Ask<IUnknown>(face.Get(), IID_IUnknown).Get(),
              Ask<IUnknown>(static_cast<IPin*>(&pin), IID_IUnknown).Get());
    EXPECT_FALSE(Ask<IUnknown>(face.Get(), IID_IBaseFilter));
    auto setup = Ask<IAMovieSetup>(static_cast<IBaseFilter*>(filter.Get()), IID_IAMovieSetup);
    EXPECT_EQ(Ask<IUnknown>(setup.Get(), IID_IUnknown).Get(),
              Ask<IUnknown>(Ask<IPersist>(setup.Get(), IID_IPersist).Get(), IID_IUnknown).Get());
    EXPECT_EQ(setup->Register(), S_FALSE);
    setup.Reset();
    filter.Reset();
    EXPECT_FALSE(deleted);
    face.Reset();
    EXPECT_TRUE(deleted);
}

TEST(EnumPins, GoesOnBehindAChangeAndHandsNoPinOutTwice) {
    auto filter = NewTestFilter(PINDIR_INPUT, 3);
    RefPtr<IEnumPins> pins, copy;
    ASSERT_EQ(filter->EnumPins(pins.Put()), S_OK);
    IPin* got[3] = {};
    ULONG count = 9;
    EXPECT_EQ(pins->Next(2, got, nullptr), E_INVALIDARG);
    EXPECT_EQ(pins->Next(1, got, nullptr), S_OK);
    EXPECT_EQ(pins->Clone(copy.Put()), S_OK);
    filter->ChangePins();
    EXPECT_EQ(pins->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(copy->Clone(RefPtr<IEnumPins>().Put()), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(pins->Next(3, got + 1, &count), S_FALSE);
    EXPECT_EQ(count, 2U);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(got[i], filter->GetPin(static_cast<int>(i)));
        got[i]->Release();
    }
    EXPECT_EQ(pins->Reset(), S_OK);
    EXPECT_EQ(pins->Skip(4), S_FALSE);
    EXPECT_EQ(pins->Skip(2), S_OK);
    filter->pins.pop_back();  // gone without a word
    EXPECT_EQ(pins->Next(1, got, &count), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(pins->Reset(), S_OK);
    filter->pins.pop_back();
    EXPECT_EQ(pins->Next(2, got, &count), VFW_E_ENUM_OUT_OF_SYNC);  // and the first one was given back
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(copy->Next(1, got, nullptr), S_FALSE);  // it knows the one that is left
    bool deleted = false;
    auto last = NewTestFilter(PINDIR_INPUT, 1, &deleted);
    ASSERT_EQ(last->EnumPins(pins.Put()), S_OK);
    last.Reset();
    EXPECT_FALSE(deleted);
    pins.Reset();
    EXPECT_TRUE(deleted);
}

TEST(EnumMediaTypes, EndsWithAChange) {
    auto filter = NewTestFilter(PINDIR_INPUT);
    TestPin& pin = *filter->pins[0];
    pin.types = {5, 6, 7};
    RefPtr<IEnumMediaTypes> types, copy;
    ASSERT_EQ(pin.EnumMediaTypes(types.Put()), S_OK);
    AM_MEDIA_TYPE* got[3] = {};
    ULONG count = 9;
    EXPECT_EQ(types->Next(2, got, nullptr), E_INVALIDARG);
    EXPECT_EQ(types->Skip(1), S_OK);
    EXPECT_EQ(types->Clone(copy.Put()), S_OK);
    for (const auto& one : {types, copy}) {
        EXPECT_EQ(one->Next(3, got, &count), S_FALSE);
        ASSERT_EQ(count, 2U);
        EXPECT_EQ(got[1]->subtype.Data1, 7U);
        for (ULONG i = 0; i < count; ++i) FreeMediaTypeBlock(got[i]);
    }
    EXPECT_EQ(types->Skip(1), S_FALSE);
    pin.ChangeTypes();
    EXPECT_EQ(types->Next(1, got, &count), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(types->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(types->Clone(copy.Put()), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(types->Reset(), S_OK);
    EXPECT_EQ(types->Next(1, got, nullptr), S_OK);
    FreeMediaTypeBlock(got[0]);
}

TEST(BaseFilter, NamesAreCutInFieldsAndWholeInBlocks) {
    const std::u16string longName(200, u'x');
    auto filter = NewTestFilter(PINDIR_INPUT, 2);
    FILTER_INFO filterInfo = {};
    EXPECT_EQ(filter->JoinFilterGraph(nullptr, longName.c_str()), S_OK);
    EXPECT_EQ(filter->QueryFilterInfo(&filterInfo), S_OK);
    EXPECT_EQ(std::u16string(filterInfo.achName), longName.substr(0, 127));
    EXPECT_EQ(filter->JoinFilterGraph(nullptr, nullptr), S_OK);
    EXPECT_EQ(filter->QueryFilterInfo(&filterInfo), S_OK);
    EXPECT_EQ(std::u16string(filterInfo.achName), u"");

    RefPtr<IPin> pin;
    EXPECT_EQ(filter->FindPin(u"P1", pin.Put()), VFW_E_NOT_FOUND);  // case counts
    EXPECT_EQ(filter->FindPin(u"p1", pin.Put()), S_OK);
    EXPECT_EQ(pin.Get(), filter->pins[1].get());
    PIN_INFO info = {};
    EXPECT_EQ(pin->QueryPinInfo(&info), S_OK);
    EXPECT_EQ(RefPtr<IBaseFilter>::Adopt(info.pFilter).Get(), filter.Get());
    EXPECT_EQ(std::u16string(info.achName), u"p1");
    WCHAR* id = nullptr;
    EXPECT_EQ(pin->QueryId(&id), S_OK);
    EXPECT_EQ(std::u16string(id), u"p1");
    CoTaskMemFree(id);
}

TEST(MediaType, MatchesAWishWhereTheWishSaysSomething) {
    BYTE one = 1, two = 2;
    CMediaTypeValue value;
    ASSERT_EQ(value.Assign(TypeNumber(7, &one)), S_OK);
    EXPECT_NE(value.Get().pbFormat, &one);
    EXPECT_TRUE(MatchesPartial(value.Get(), {}));
    EXPECT_TRUE(MatchesPartial(value.Get(), TypeNumber(0, &one)));
    EXPECT_FALSE(MatchesPartial(value.Get(), TypeNumber(0, &two)));
    EXPECT_FALSE(MatchesPartial(value.Get(), TypeNumber(8, &one)));
    EXPECT_FALSE(IsPartiallySpecified(TypeNumber(0, &one)));
    EXPECT_TRUE(IsPartiallySpecified(TypeNumber(7)));

    auto filter = NewTestFilter(PINDIR_INPUT);
    AM_MEDIA_TYPE counted = TypeNumber(1);
    counted.pUnk = static_cast<IBaseFilter*>(filter.Get());
    ASSERT_EQ(value.Assign(counted), S_OK);
    ASSERT_EQ(value.Assign(value.Get()), S_OK);  // of itself
    AM_MEDIA_TYPE* block = NewMediaTypeBlock(value.Get());
    EXPECT_EQ(filter->AddRef(), 4U);
    value.Clear();
    FreeMediaTypeBlock(block);
    EXPECT_EQ(filter->Release(), 1U);
    AM_MEDIA_TYPE broken = TypeNumber(1);
    broken.cbFormat = 5;
    EXPECT_EQ(value.Assign(broken), E_POINTER);
}

}  // namespace
