#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "AudioCodec/graph/filter/CPointerList.h"
#include "tests/graph/TestFilter.h"
#include "tests/support/FailingAllocator.h"

namespace {

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
    constexpr int kThreads = 4, kTakings = 300;
    constexpr auto kUntilTheyWait = std::chrono::milliseconds(10);  // most often
    const auto allocator = NewTestAllocator();
    ASSERT_EQ(CommitBuffers(*allocator, 1, 10), S_OK);
    std::vector<std::jthread> threads;
    const auto onThreads = [&](auto work) {
        for (int i = 0; i < kThreads; ++i) threads.emplace_back(work);
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
