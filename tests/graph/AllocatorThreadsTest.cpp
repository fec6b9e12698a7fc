#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "AudioCodec/graph/filter/CPointerList.h"
#include "tests/graph/TestAllocator.h"
#include "tests/support/FailingAllocator.h"

namespace {

TEST(AllocatorThreads, SizesAreRoundedAndWhatCantBeIsRefused) {
    constexpr LONG kMost = 0x7FFFFFFF;
    struct Row {
        ALLOCATOR_PROPERTIES wanted;
        HRESULT result;
        LONG size;
    };
    const Row rows[] = {{{2, 1000, 512, 0}, S_OK, 1024},     {{2, 1000, 512, 24}, S_OK, 1000},
                        {{2, 1000, 512, 25}, S_OK, 1511},    {{2, 10, 3, 0}, S_OK, 12},
                        {{2, 10, 0, 0}, VFW_E_BADALIGN, 0},  {{2, 10, 1 << 17, 0}, VFW_E_BADALIGN, 0},
                        {{2, 10, -1, 0}, VFW_E_BADALIGN, 0}, {{2, 10, 1, -1}, E_INVALIDARG, 0},
                        {{2, kMost, 2, 0}, E_INVALIDARG, 0}, {{2, kMost, 1, kMost}, E_INVALIDARG, 0}};
    const auto allocator = NewTestAllocator();
    EXPECT_EQ(allocator->Commit(), VFW_E_SIZENOTSET);
    for (const Row& row : rows) {
        ALLOCATOR_PROPERTIES wanted = row.wanted, actual = {};
        ASSERT_EQ(allocator->SetProperties(&wanted, &actual), row.result) << &row - rows;
        EXPECT_EQ(actual.cbBuffer, row.size) << &row - rows;
        if (row.result != S_OK) continue;
        ASSERT_EQ(allocator->Commit(), S_OK);
        EXPECT_EQ(allocator->SetProperties(&wanted, &actual), VFW_E_ALREADY_COMMITTED);
        const RefPtr<IMediaSample> both[] = {TakeSample(*allocator), TakeSample(*allocator)};
        EXPECT_FALSE(TakeSample(*allocator, AM_GBF_NOWAIT));
        for (const auto& sample : both) {
            BYTE* buffer = nullptr;
            ASSERT_EQ(sample->GetPointer(&buffer), S_OK);
            memset(buffer - wanted.cbPrefix, 1, static_cast<size_t>(wanted.cbPrefix + sample->GetSize()));
        }
        EXPECT_EQ(allocator->Decommit(), S_OK);
        EXPECT_EQ(allocator->SetProperties(&wanted, &actual), VFW_E_BUFFERS_OUTSTANDING);
    }
}

TEST(AllocatorThreads, ASampleThatComesBackEndsTheDecommitAndTheAllocator) {
    auto allocator = NewTestAllocator();
    ASSERT_EQ(CommitBuffers(*allocator, 2, 10), S_OK);
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
    sample.Reset();  // a leak or a use behind the end is the sanitizer's to find
}

TEST(AllocatorThreads, ACommitWithoutMemoryCanBeTriedAgain) {
    const auto allocator = NewTestAllocator();
    const auto none = [&] { EXPECT_FALSE(TakeSample(*allocator, AM_GBF_NOWAIT)); };
    EXPECT_EQ(RunWithMoreMemory(
                  E_OUTOFMEMORY, [&] { return CommitBuffers(*allocator, 3, 10); }, none),
              S_OK);
    EXPECT_TRUE(TakeSample(*allocator, AM_GBF_NOWAIT));
    EXPECT_EQ(allocator->Decommit(), S_OK);
}

class ReleaseCounter final : public IMemAllocatorNotifyCallbackTemp {
public:
    HRESULT QueryInterface(const GUID&, void**) override { return E_NOINTERFACE; }
    uint32_t AddRef() override { return ++references; }
    uint32_t Release() override { return --references; }
    HRESULT NotifyRelease() override {
        ++releases;
        return S_OK;
    }
    std::atomic<uint32_t> references = 0, releases = 0;
};

TEST(AllocatorThreads, WaitersGetWhatComesBackAndFailWithTheDecommit) {
    constexpr int kThreads = 4, kTakings = 300;
    const auto allocator = NewTestAllocator();
    ReleaseCounter counter;
    void* face = nullptr;
    ASSERT_EQ(allocator->QueryInterface(IID_IMemAllocatorCallbackTemp, &face), S_OK);
    const auto callbacks =
        RefPtr<IMemAllocatorCallbackTemp>::Adopt(static_cast<IMemAllocatorCallbackTemp*>(face));
    callbacks->SetNotify(&counter);
    ASSERT_EQ(CommitBuffers(*allocator, 2, 10), S_OK);
    {
        std::vector<std::jthread> threads(kThreads);
        for (auto& thread : threads) {
            thread = std::jthread([&] {
                for (int i = 0; i < kTakings; ++i) {
                    BYTE* buffer = nullptr;
                    TakeSample(*allocator)->GetPointer(&buffer);  // goes back behind the expression
                }
            });
        }
    }
    EXPECT_EQ(counter.releases, uint32_t{kThreads * kTakings});
    LONG free = 0;
    EXPECT_EQ(callbacks->GetFreeCount(&free), S_OK);
    EXPECT_EQ(free, 2);
    constexpr auto kUntilTheyWait = std::chrono::milliseconds(10);  // most often
    RefPtr<IMediaSample> out[] = {TakeSample(*allocator), TakeSample(*allocator)};
    std::jthread lucky([&] { EXPECT_TRUE(TakeSample(*allocator)); });
    std::this_thread::sleep_for(kUntilTheyWait);
    out[0].Reset();
    lucky.join();
    out[0] = TakeSample(*allocator);
    std::vector<std::jthread> waiters(kThreads);
    for (auto& waiter : waiters) waiter = std::jthread([&] { EXPECT_FALSE(TakeSample(*allocator)); });
    std::this_thread::sleep_for(kUntilTheyWait);
    allocator->Decommit();
    waiters.clear();
    callbacks->SetNotify(nullptr);
    EXPECT_EQ(counter.references, 0U);
}

TEST(PointerList, KeepsTheOrderAndNeedsNoMemoryForWhatItHeldBefore) {
    int values[3] = {};
    CPointerList<int> list, other;
    for (int& value : values) ASSERT_TRUE(list.AddTail(&value));
    {
        const FailingAllocator heap(0);
        EXPECT_FALSE(other.AddTail(&values[0]));
        EXPECT_EQ(list.MoveHeadTo(other), &values[0]);
        EXPECT_EQ(list.RemoveHead(), &values[1]);
        EXPECT_TRUE(list.AddTail(&values[1]));
        EXPECT_FALSE(list.AddTail(&values[0]));
    }
    EXPECT_TRUE(list.AddTail(other));
    EXPECT_TRUE(list.Contains(&values[0]));
    for (const int i : {2, 1, 0}) EXPECT_EQ(list.RemoveHead(), &values[i]);
    EXPECT_EQ(list.RemoveHead(), nullptr);
    EXPECT_EQ(list.MoveHeadTo(other), nullptr);
    EXPECT_EQ(other.Count(), 1);
    for (int i = 0; i < 12; ++i) ASSERT_TRUE(list.AddTail(&values[0]));
    list.Clear();  // more than it keeps
    EXPECT_TRUE(list.IsEmpty());
}

}  // namespace
