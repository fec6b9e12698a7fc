#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "AudioCodec/graph/filter/CPointerList.h"
#include "tests/graph/TestFilter.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/FilterManners.h"

namespace {

// An output filter and an input filter, not connected yet.
struct Pair {
    explicit Pair(int pinCount = 1)
        : source(NewTestFilter(PINDIR_OUTPUT, pinCount)), sink(NewTestFilter(PINDIR_INPUT, pinCount)) {}
    ~Pair() {
        for (const auto& filter : {source, sink}) {
            for (const auto& pin : filter->pins) pin->Disconnect();
        }
    }
    TestPin& Out(size_t i = 0) { return *source->pins[i]; }
    TestPin& In(size_t i = 0) { return *sink->pins[i]; }
    HRESULT Connect(size_t i, const AM_MEDIA_TYPE* wish = nullptr) { return Out(i).Connect(&In(i), wish); }

    RefPtr<TestFilter> source, sink;
};

TEST(BaseFilter, RunGoesThroughPauseOnceAndStopReachesEveryPin) {
    Pair pair(3);
    ASSERT_EQ(pair.Connect(0), S_OK);
    ASSERT_EQ(pair.Connect(2), S_OK);
    for (auto& pin : pair.source->pins) pin->calls.clear();
    pair.Out(2).answers['A'] = VFW_E_NO_ALLOCATOR;
    EXPECT_EQ(pair.source->Run(0), VFW_E_NO_ALLOCATOR);
    EXPECT_TRUE(pair.source->IsStopped());
    pair.Out(2).answers.clear();
    for (int i = 0; i < 2; ++i) EXPECT_EQ(pair.source->Run(0), S_OK);
    EXPECT_EQ(pair.source->Pause(), S_OK);
    FILTER_STATE state = {};
    EXPECT_EQ(pair.source->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Paused);
    EXPECT_EQ(pair.Out(0).Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(pair.Connect(1), VFW_E_NOT_STOPPED);
    pair.Out(0).answers['I'] = E_FAIL;
    pair.Out(2).answers['I'] = E_UNEXPECTED;
    EXPECT_EQ(pair.source->Stop(), E_FAIL);
    EXPECT_TRUE(pair.source->IsStopped());
    for (const size_t i : {0U, 1U, 2U}) EXPECT_EQ(pair.Out(i).calls, i == 1 ? "" : "AARI");
}

TEST(BasePin, AgreesOnTheFirstTypeThatFitsOrGivesTheReason) {
    constexpr HRESULT kNo = VFW_E_TYPE_NOT_ACCEPTED, kClock = VFW_E_NO_CLOCK, kSize = VFW_E_SIZENOTSET;
    struct Row {
        const char* name;
        std::vector<uint32_t> offered, received;  // the types of the ends
        uint32_t wish;                            // 0: none
        std::vector<HRESULT> answers;             // the receiver's, to the types 0, 1, …
        HRESULT result;
        uint32_t agreed;  // after a success
    };
    const Row rows[] = {{"receiver's first", {1}, {2}, 0, {0, 0, 0}, S_OK, 2},
                        {"then its own", {1}, {2}, 0, {0, 0, kNo}, S_OK, 1},
                        {"only those wished", {1}, {2, 3}, 3, {0, 0, 0, 0}, S_OK, 3},
                        {"nothing wished", {1}, {2}, 3, {0, 0, 0, 0}, VFW_E_NO_ACCEPTABLE_TYPES, 0},
                        {"nothing specific", {1}, {2}, 0, {0, E_FAIL, 1}, VFW_E_NO_ACCEPTABLE_TYPES, 0},
                        {"first of one end", {}, {1, 2, 3}, 0, {0, kNo, kClock, kSize}, kClock, 0},
                        {"last of the ends", {2}, {1}, 0, {0, kClock, kSize}, kSize, 0},
                        {"not E_INVALIDARG", {2}, {1}, 0, {0, kClock, E_INVALIDARG}, kClock, 0}};
    for (const Row& row : rows) {
        Pair pair;
        pair.Out().types = row.offered;
        pair.In().types = row.received;
        pair.In().check = [&row](uint32_t type) { return row.answers.at(type); };
        const AM_MEDIA_TYPE wish = TypeNumber(row.wish);
        EXPECT_EQ(pair.Connect(0, row.wish == 0 ? nullptr : &wish), row.result) << row.name;
        for (TestPin* pin : {&pair.Out(), &pair.In()}) {
            AM_MEDIA_TYPE agreed = {};
            pin->ConnectionMediaType(&agreed);
            EXPECT_EQ(agreed.subtype.Data1, row.agreed) << row.name;
            ClearMediaType(agreed);
        }
    }
}

TEST(BasePin, AConnectionThatCantBeCompletedIsTakenBackAtBothEnds) {
    Pair pair;
    BYTE format = 1;
    const AM_MEDIA_TYPE full = TypeNumber(1, &format);
    const auto expectRefusal = [&](HRESULT reason, const char* outCalls, const char* inCalls) {
        EXPECT_EQ(pair.Connect(0, &full), reason);
        EXPECT_EQ(pair.Out().ConnectedTo(RefPtr<IPin>().Put()), VFW_E_NOT_CONNECTED);
        EXPECT_EQ(pair.In().Disconnect(), S_FALSE);
        EXPECT_EQ(std::exchange(pair.Out().calls, {}), outCalls);
        EXPECT_EQ(std::exchange(pair.In().calls, {}), inCalls);
    };
    pair.Out().answers['C'] = VFW_E_NO_TRANSPORT;  // after the receiver's yes
    expectRefusal(VFW_E_NO_TRANSPORT, "CBB", "CB");
    pair.In().answers['C'] = E_UNEXPECTED;
    expectRefusal(E_UNEXPECTED, "BB", "CB");
    EXPECT_EQ(pair.Out().Connect(&pair.Out(), &full), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(pair.In().ReceiveConnection(&pair.In(), &full), VFW_E_INVALID_DIRECTION);
    pair.Out().answers.clear();
    pair.In().answers.clear();
    EXPECT_EQ(pair.Connect(0, &full), S_OK);
    EXPECT_EQ(pair.Connect(0, &full), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(pair.In().ReceiveConnection(&pair.Out(), &full), VFW_E_ALREADY_CONNECTED);
}

TEST(BaseFilter, AnswersAnyCaller) {
    const Pair pair(2);
    BYTE format = 1;
    const AM_MEDIA_TYPE full = TypeNumber(1, &format);
    ASSERT_EQ(pair.source->pins[0]->Connect(pair.sink->pins[0].get(), &full), S_OK);
    for (const auto& filter : {pair.source, pair.sink}) filter_manners::ExpectFilter(*filter);
}

TEST(BaseFilter, CountsForItsPinsAndCutsItsName) {
    auto filter = NewTestFilter(PINDIR_INPUT);
    IPin* pin = filter->pins[0].get();
    const auto identity = [](IUnknown* object) { return Ask<IUnknown>(object, IID_IUnknown).Get(); };
    const auto control = Ask<IQualityControl>(pin, IID_IQualityControl);
    EXPECT_EQ(identity(control.Get()), identity(pin));
    EXPECT_FALSE(Ask<IUnknown>(control.Get(), IID_IBaseFilter));
    PIN_INFO info = {};
    EXPECT_EQ(pin->QueryPinInfo(&info), S_OK);
    const auto setup = Ask<IAMovieSetup>(info.pFilter, IID_IAMovieSetup);
    EXPECT_EQ(identity(setup.Get()), identity(info.pFilter));
    EXPECT_EQ(info.pFilter->Release(), 3U);  // the filter, its setup and its pin's control are held

    const std::u16string longName(200, u'x');
    FILTER_INFO filterInfo = {};
    EXPECT_EQ(filter->JoinFilterGraph(nullptr, longName.c_str()), S_OK);
    EXPECT_EQ(filter->QueryFilterInfo(&filterInfo), S_OK);
    EXPECT_EQ(std::u16string(filterInfo.achName), longName.substr(0, 127));
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
    filter->IncrementPinVersion();
    EXPECT_EQ(pins->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(copy->Clone(RefPtr<IEnumPins>().Put()), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(pins->Next(3, got + 1, &count), S_FALSE);
    EXPECT_EQ(count, 2U);
    for (size_t i = 0; i < 3; ++i) EXPECT_EQ(got[i], filter->pins[i].get());
    EXPECT_EQ(filter->AddRef(), 7U);  // by the three pins, both enumerators and twice here
    EXPECT_EQ(pins->Reset(), S_OK);
    EXPECT_EQ(pins->Skip(4), S_FALSE);
    EXPECT_EQ(pins->Skip(1), S_OK);
    filter->pins.pop_back();  // gone without a word
    EXPECT_EQ(pins->Next(2, got, &count), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(copy->Next(1, got, nullptr), S_OK);
    EXPECT_EQ(got[0], filter->pins[1].get());  // it knows the pin that came before it was made
    for (int i = 0; i < 5; ++i) filter->Release();
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
    EXPECT_EQ(copy->Next(3, got, &count), S_FALSE);
    ASSERT_EQ(count, 2U);
    EXPECT_EQ(got[1]->subtype.Data1, 7U);
    for (ULONG i = 0; i < count; ++i) FreeMediaTypeBlock(got[i]);
    EXPECT_EQ(types->Skip(3), S_FALSE);
    pin.IncrementTypeVersion();
    EXPECT_EQ(types->Next(1, got, &count), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(types->Clone(copy.Put()), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(types->Reset(), S_OK);
    EXPECT_EQ(types->Next(1, got, nullptr), S_OK);
    FreeMediaTypeBlock(got[0]);
}

TEST(MediaType, MatchesAWishWhereTheWishSaysSomethingAndCopiesWhatItOwns) {
    BYTE one = 1, two = 2;
    AM_MEDIA_TYPE type = TypeNumber(7, &one);
    EXPECT_TRUE(MatchesPartial(type, {}));
    EXPECT_TRUE(MatchesPartial(type, TypeNumber(0, &one)));
    EXPECT_FALSE(MatchesPartial(type, TypeNumber(0, &two)));
    EXPECT_FALSE(MatchesPartial(type, TypeNumber(8, &one)));

    auto filter = NewTestFilter(PINDIR_INPUT);
    type.pUnk = static_cast<IBaseFilter*>(filter.Get());
    MediaType value;
    ASSERT_EQ(value.Assign(type), S_OK);
    EXPECT_NE(value.Get().pbFormat, &one);
    ASSERT_EQ(value.Assign(value.Get()), S_OK);  // of itself
    EXPECT_EQ(filter->AddRef(), 3U);
    value.Clear();
    EXPECT_EQ(filter->Release(), 1U);
    type.pbFormat = nullptr;  // but a length
    EXPECT_EQ(value.Assign(type), E_POINTER);
}

TEST(AllocatorThreads, SizesAreRoundedAndWhatCantBeIsRefused) {
    struct Row {
        ALLOCATOR_PROPERTIES wanted;
        HRESULT result;
        LONG size;
    };
    const Row rows[] = {{{2, 4000, 512, 0}, S_OK, 4096},
                        {{2, 4000, 512, 25}, S_OK, 4071},
                        {{2, 10, 3, 0}, S_OK, 12},
                        {{2, 10, 0, 0}, VFW_E_BADALIGN, 0},
                        {{2, 10, 1 << 17, 0}, VFW_E_BADALIGN, 0},
                        {{2, 10, 1, -1}, E_INVALIDARG, 0},
                        {{2, 0x7FFFFFFF, 2, 0}, E_INVALIDARG, 0}};
    const auto allocator = NewTestAllocator();
    EXPECT_EQ(allocator->Commit(), VFW_E_SIZENOTSET);
    for (auto [wanted, result, size] : rows) {
        ALLOCATOR_PROPERTIES actual = {};
        ASSERT_EQ(allocator->SetProperties(&wanted, &actual), result) << wanted.cbAlign;
        EXPECT_EQ(actual.cbBuffer, size);
        if (result != S_OK) continue;
        ASSERT_EQ(allocator->Commit(), S_OK);
        EXPECT_EQ(allocator->SetProperties(&wanted, &actual), VFW_E_ALREADY_COMMITTED);
        const RefPtr<IMediaSample> both[] = {TakeSample(*allocator), TakeSample(*allocator)};
        EXPECT_FALSE(TakeSample(*allocator, AM_GBF_NOWAIT));
        BYTE* buffers[2] = {};
        for (int i = 0; i < 2; ++i) {
            ASSERT_EQ(both[i]->GetPointer(&buffers[i]), S_OK);
            memset(buffers[i] - wanted.cbPrefix, 1,
                   static_cast<size_t>(wanted.cbPrefix) + static_cast<size_t>(size));
        }
        EXPECT_EQ(std::abs(buffers[1] - buffers[0]), wanted.cbPrefix + size);
        EXPECT_EQ(allocator->Decommit(), S_OK);
        EXPECT_EQ(allocator->SetProperties(&wanted, &actual), VFW_E_BUFFERS_OUTSTANDING);
    }
}

TEST(AllocatorThreads, ASampleThatComesBackEndsTheDecommitAndTheAllocator) {
    auto allocator = NewTestAllocator();
    const auto none = [&] { EXPECT_FALSE(TakeSample(*allocator, AM_GBF_NOWAIT)); };
    EXPECT_EQ(RunWithMoreMemory(
                  E_OUTOFMEMORY, [&] { return CommitBuffers(*allocator, 2, 10); }, none),
              S_OK);
    auto sample = TakeSample(*allocator);
    EXPECT_EQ(allocator->Decommit(), S_OK);
    EXPECT_FALSE(TakeSample(*allocator));
    EXPECT_EQ(allocator->Commit(), S_OK);  // takes the decommit back
    EXPECT_TRUE(TakeSample(*allocator, AM_GBF_NOWAIT));
    EXPECT_EQ(allocator->Decommit(), S_OK);
    allocator.Reset();
    BYTE* buffer = nullptr;
    EXPECT_EQ(sample->GetPointer(&buffer), S_OK);
    buffer[9] = 1;   // the memory is there as long as the sample is out
    sample.Reset();  // a leak or a use after the end is the sanitizer's to find
}

TEST(AllocatorThreads, WaitersGetWhatComesBackAndFailWithTheDecommit) {
    constexpr int kWaiters = 4, kTakings = 300;
    constexpr auto kUntilTheyWait = std::chrono::milliseconds(10);  // most often
    const auto allocator = NewTestAllocator();
    ASSERT_EQ(CommitBuffers(*allocator, 1, 10), S_OK);
    std::vector<std::jthread> threads;
    const auto onThreads = [&](auto work) {
        for (int i = 0; i < kWaiters; ++i) threads.emplace_back(work);
    };
    onThreads([&] {
        for (int i = 0; i < kTakings; ++i) EXPECT_TRUE(TakeSample(*allocator));
    });
    threads.clear();
    auto sample = TakeSample(*allocator, AM_GBF_NOWAIT);
    ASSERT_TRUE(sample);
    onThreads([&] { EXPECT_TRUE(TakeSample(*allocator)); });
    std::this_thread::sleep_for(kUntilTheyWait);
    sample.Reset();
    threads.clear();
    sample = TakeSample(*allocator);
    onThreads([&] { EXPECT_FALSE(TakeSample(*allocator)); });
    std::this_thread::sleep_for(kUntilTheyWait);
    allocator->Decommit();
    threads.clear();  // while the sample is still out
}

TEST(PointerList, KeepsTheOrderAndNeedsNoMemoryForWhatItHeldBefore) {
    int values[12] = {};
    CPointerList<int> list, other;
    for (int& value : values) ASSERT_TRUE(list.AddTail(&value));
    {
        const FailingAllocator heap(0);
        EXPECT_EQ(list.MoveHeadTo(other), &values[0]);
        EXPECT_EQ(list.RemoveHead(), &values[1]);
        EXPECT_TRUE(list.AddTail(&values[1]));
        EXPECT_FALSE(list.AddTail(&values[0]));
    }
    EXPECT_TRUE(list.AddTail(other));
    for (int i = 2; i < 14; ++i) EXPECT_EQ(list.RemoveHead(), &values[i < 12 ? i : 13 - i]);
    EXPECT_EQ(list.MoveHeadTo(other), nullptr);
}

class MediaSample : public testing::Test {
protected:
    static constexpr DWORD kAll = sizeof(AM_SAMPLE2_PROPERTIES);

    MediaSample() {
        CommitBuffers(*allocator, 1, 100);
        Take();
    }
    ~MediaSample() override {
        sample.Reset();
        allocator->Decommit();
    }
    void Take() {
        sample = Ask<IMediaSample2>(TakeSample(*allocator, AM_GBF_NOWAIT).Get(), IID_IMediaSample2);
    }
    HRESULT SetProperties(const AM_SAMPLE2_PROPERTIES& properties, DWORD size = kAll) {
        return sample->SetProperties(size, reinterpret_cast<const BYTE*>(&properties));
    }
    AM_SAMPLE2_PROPERTIES Properties() {
        AM_SAMPLE2_PROPERTIES properties = {};
        EXPECT_EQ(sample->GetProperties(kAll, reinterpret_cast<BYTE*>(&properties)), S_OK);
        return properties;
    }

    AM_MEDIA_TYPE type = {};
    RefPtr<IMemAllocator> allocator = NewTestAllocator();
    RefPtr<IMediaSample2> sample;
};

TEST_F(MediaSample, TimesAreToldAsFarAsTheyWereSet) {
    REFERENCE_TIME start = 5, stop = 9, gotStart = 0, gotStop = 0;
    sample->SetTime(&start, &stop);
    sample->SetTime(&start, nullptr);
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), VFW_S_NO_STOP_TIME);
    EXPECT_EQ(gotStop, 6);
    sample->SetTime(nullptr, &stop);
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), VFW_E_SAMPLE_TIME_NOT_SET);
}

TEST_F(MediaSample, ComesBackWithoutTheMarksOfItsLastUse) {
    AM_MEDIA_TYPE* copy = nullptr;
    EXPECT_EQ(sample->SetMediaType(&type), S_OK);
    EXPECT_EQ(sample->GetMediaType(&copy), S_OK);
    FreeMediaTypeBlock(copy);
    EXPECT_EQ(sample->SetDiscontinuity(TRUE), S_OK);
    EXPECT_EQ(sample->SetActualDataLength(101), VFW_E_BUFFER_OVERFLOW);
    sample.Reset();
    Take();
    ASSERT_TRUE(sample);
    EXPECT_EQ(sample->GetMediaType(&copy), S_FALSE);
    EXPECT_EQ(Properties().dwSampleFlags, 0U);
}

TEST_F(MediaSample, PropertiesAreTakenAsFarAsTheyReachAndWhatIsWrongChangesNothing) {
    constexpr DWORD kToStart = 24, kToStop = 32;
    struct Row {
        void (*spoil)(AM_SAMPLE2_PROPERTIES&);
        DWORD size;
    };
    const Row refused[] = {{[](auto& p) { p.cbData++; }, kAll},
                           {[](auto& p) { p.dwSampleFlags = 0x20; }, kAll},
                           {[](auto& p) { p.dwSampleFlags = AM_SAMPLE_TIMEVALID; }, kToStart},
                           {[](auto& p) { p.lActual = 101; }, kToStart},
                           {[](auto& p) { p.pbBuffer++; }, kAll},
                           {[](auto& p) { p.cbBuffer--; }, kAll}};
    AM_SAMPLE2_PROPERTIES wanted = Properties();
    wanted.dwTypeSpecificFlags = 3;
    for (const Row& row : refused) {
        AM_SAMPLE2_PROPERTIES spoilt = wanted;
        row.spoil(spoilt);
        EXPECT_EQ(SetProperties(spoilt, row.size), E_INVALIDARG) << &row - refused;
        EXPECT_EQ(Properties().dwTypeSpecificFlags, 0U);
    }
    wanted.dwSampleFlags = AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID | AM_SAMPLE_TYPECHANGED;
    wanted.tStop = 77;
    wanted.dwStreamId = 8;
    wanted.pMediaType = &type;
    wanted.cbData = kToStop;
    EXPECT_EQ(SetProperties(wanted), S_OK);
    EXPECT_EQ(Properties().tStop, 77);
    EXPECT_EQ(Properties().dwStreamId, 0U);                             // after cbData
    EXPECT_EQ(Properties().dwSampleFlags & AM_SAMPLE_TYPECHANGED, 0U);  // a flag alone makes no type
    wanted.cbData = kAll;
    EXPECT_EQ(SetProperties(wanted), S_OK);
    EXPECT_EQ(SetProperties(Properties()), S_OK);  // with its own type
    EXPECT_EQ(Properties().dwSampleFlags, wanted.dwSampleFlags);
}

}  // namespace
