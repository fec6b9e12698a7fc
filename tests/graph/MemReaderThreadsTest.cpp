#include <gtest/gtest.h>

#include <atomic>
#include <numeric>
#include <thread>
#include <vector>

#include "AudioCodec/graph/filter/CMemReader.h"
#include "tests/graph/TestFilter.h"
#include "tests/support/ByteStream.h"
#include "tests/support/FailingAllocator.h"

namespace {

// 1000 bytes whose reads say that they run, wait for the gate and give what the test wants.
class GatedSource final : public CAsyncStream {
public:
    HRESULT SetPointer(int64_t) override { return seekResult; }
    HRESULT Read(BYTE*, DWORD size, BOOL, DWORD* done) override {
        running.Set();
        gate.Wait();
        ++reads;
        *done = size - missing;
        return readResult;
    }
    int64_t Size(int64_t*) override { return 1000; }
    DWORD Alignment() override { return alignment; }
    void Lock() override { m_lock.lock(); }
    void Unlock() override { m_lock.unlock(); }

    CEventObject running{CEventObject::ResetKind::Automatic}, gate{CEventObject::ResetKind::Manual};
    std::atomic<int> reads = 0;
    DWORD missing = 0, alignment = 1;
    HRESULT seekResult = S_OK, readResult = S_OK;

private:
    std::recursive_mutex m_lock;
};

struct Collected {
    HRESULT result = S_OK;
    void* context = nullptr;
    DWORD_PTR user = 0;
    LONG delivered = -1;
};

Collected Collect(CAsyncRequestQueue& queue, DWORD milliseconds = INFINITE) {
    Collected got;
    got.result = queue.CollectRequest(milliseconds, &got.context, &got.user, &got.delivered);
    return got;
}

TEST(RequestQueueThreads, AFlushCancelsWhatWaitsAndLetsTheRunningReadEnd) {
    GatedSource source;
    CAsyncRequestQueue queue(&source);
    EXPECT_EQ(Collect(queue, 0).result, VFW_E_TIMEOUT);
    for (DWORD_PTR i = 0; i < 3; ++i) ASSERT_EQ(queue.SubmitRequest({.length = 5, .user = i}), S_OK);
    source.running.Wait();
    std::atomic<bool> flushed = false;
    std::jthread flusher([&] {
        EXPECT_EQ(queue.BeginFlush(), S_OK);
        flushed = true;
    });
    // The two that waited come at once, the one that runs not yet.
    for (const DWORD_PTR i : {1U, 2U}) {
        const Collected got = Collect(queue);
        EXPECT_EQ(got.result, VFW_E_TIMEOUT);
        EXPECT_EQ(got.user, i);
    }
    EXPECT_EQ(Collect(queue, 0).result, VFW_E_TIMEOUT);
    EXPECT_EQ(queue.SubmitRequest({.length = 5}), VFW_E_WRONG_STATE);
    EXPECT_FALSE(flushed);
    source.gate.Set();
    flusher.join();
    EXPECT_EQ(source.reads, 1);
    EXPECT_EQ(Collect(queue, 0).delivered, 5);
    EXPECT_EQ(Collect(queue).result, VFW_E_WRONG_STATE);  // at once
    EXPECT_EQ(queue.EndFlush(), S_OK);
    EXPECT_EQ(queue.SubmitRequest({.length = 5}), S_OK);
    EXPECT_EQ(Collect(queue).result, S_OK);
}

TEST(RequestQueueThreads, EndsWhileRequestsWaitAndRun) {
    GatedSource source;
    {
        std::jthread opener;
        CAsyncRequestQueue queue(&source);
        for (int i = 0; i < 3; ++i) ASSERT_EQ(queue.SubmitRequest({.length = 5}), S_OK);
        source.running.Wait();
        opener = std::jthread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));  // the end waits by now
            source.gate.Set();
        });
    }
    EXPECT_EQ(source.reads, 1);
}

TEST(RequestQueueThreads, EveryRequestComesBackOnceAcrossFlushes) {
    GatedSource source;
    source.gate.Set();
    CAsyncRequestQueue queue(&source);
    std::atomic<uint64_t> submitted = 0, collected = 0;
    std::atomic<bool> submitting = true;
    const std::jthread submitter([&] {
        for (DWORD_PTR i = 1; i <= 800; ++i) {
            if (queue.SubmitRequest({.length = 3, .user = i}) == S_OK) submitted += i;
        }
        submitting = false;
    });
    const auto collect = [&] {
        while (submitting || submitted != collected) collected += Collect(queue, 1).user;
    };
    const std::jthread collectors[] = {std::jthread(collect), std::jthread(collect)};
    while (submitting) {
        queue.BeginFlush();
        queue.EndFlush();
    }
}

// How a read ends, for one who waits for it and for one who reads by itself.
TEST(RequestQueueThreads, AShortReadFailsUnlessItEndsWithTheSource) {
    struct Row {
        int64_t start;
        DWORD missing;
        HRESULT seekResult, readResult, waited, direct;
        LONG delivered;
    };
    const Row rows[] = {{995, 5, 0, 7, S_OK, S_FALSE, 5},
                        {995, 4, 0, 0, E_FAIL, S_FALSE, 6},
                        {0, 0, E_UNEXPECTED, 0, E_UNEXPECTED, E_UNEXPECTED, 10},
                        {0, 0, S_FALSE, 0, E_FAIL, S_FALSE, 0},
                        {5, 0, 0, E_NOTIMPL, E_NOTIMPL, E_NOTIMPL, 10},
                        {5, 0, 0, OLE_S_FIRST, S_OK, S_OK, 10}};
    const auto allocator = NewTestAllocator();
    ASSERT_EQ(CommitBuffers(*allocator, 1, 10), S_OK);
    for (const Row& row : rows) {
        GatedSource source;
        source.gate.Set();
        source.missing = row.missing;
        source.seekResult = row.seekResult;
        source.readResult = row.readResult;
        CAsyncRequestQueue queue(&source);
        const auto sample = TakeSample(*allocator);
        ASSERT_EQ(queue.SubmitRequest({.start = row.start, .length = 10, .context = sample.Get()}), S_OK);
        const Collected got = Collect(queue);
        EXPECT_EQ(got.result, row.waited) << &row - rows;
        EXPECT_EQ(got.delivered, row.delivered) << &row - rows;
        EXPECT_EQ(sample->IsDiscontinuity(), row.readResult == OLE_S_FIRST ? S_OK : S_FALSE);
        LONG delivered = 0;
        EXPECT_EQ(queue.SyncReadAligned(row.start, 10, nullptr, &delivered, nullptr), row.direct);
        EXPECT_EQ(queue.SyncRead(row.start, 10, nullptr), row.direct) << &row - rows;
        EXPECT_EQ(delivered, row.delivered);
    }
    allocator->Decommit();
}

TEST(RequestQueue, RefusesWhatIsntAlignedAndGivesNoRequestAwayWithoutMemory) {
    GatedSource source;
    source.gate.Set();
    source.alignment = 8;
    CAsyncRequestQueue queue(&source);
    alignas(8) BYTE buffer[16] = {};
    LONG delivered = 0;
    EXPECT_EQ(queue.SubmitRequest({.start = 8, .length = 12, .aligned = TRUE, .buffer = buffer}),
              VFW_E_BADALIGN);
    EXPECT_EQ(queue.SyncReadAligned(8, 8, buffer + 1, &delivered, nullptr), VFW_E_BADALIGN);
    EXPECT_EQ(queue.SyncRead(7, 3, buffer + 1), S_OK);
    const auto submit = [&] { return queue.SubmitRequest({.length = 3}); };
    {
        const FailingAllocator heap(1);  // for the request, but not for the thread
        EXPECT_EQ(static_cast<uint32_t>(submit()), 0x80070008U);
    }
    EXPECT_EQ(submit(), S_OK);
    EXPECT_EQ(RunWithMoreMemory(E_OUTOFMEMORY, submit, [] {}), S_OK);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(Collect(queue).result, S_OK);
    EXPECT_EQ(Collect(queue, 0).result, VFW_E_TIMEOUT);  // no refused request was queued
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(submit(), S_OK);
        EXPECT_EQ(Collect(queue).result, S_OK);
    }
    const FailingAllocator heap(1);  // for the request: the lists have their nodes by now
    EXPECT_EQ(submit(), S_OK);
}

// The filter over a stream of the bytes 0, 1, …, and what a graph holds of it.
class MemReaderThreads : public testing::Test {
protected:
    static constexpr REFERENCE_TIME kByte = kTimeUnitsPerSecond;

    void Open(size_t size) {
        std::vector<uint8_t> bytes(size);
        std::iota(bytes.begin(), bytes.end(), uint8_t{0});
        m_stream = std::make_unique<ByteStream>(bytes);
        source = std::make_unique<CMemStream>(m_stream.get());
        HRESULT result = S_OK;
        AM_MEDIA_TYPE type = {};
        type.majortype = MEDIATYPE_Stream;
        filter = RefPtr<CMemReader>::Retain(new CMemReader(source.get(), type, &result));
        ASSERT_EQ(filter->FindPin(u"Output", pin.Put()), S_OK);
        reader = Ask<IAsyncReader>(pin.Get(), IID_IAsyncReader);
        ALLOCATOR_PROPERTIES wanted = {.cBuffers = 2, .cbBuffer = 64, .cbAlign = 0, .cbPrefix = 0};
        ASSERT_EQ(reader->RequestAllocator(nullptr, &wanted, allocator.Put()), S_OK);
        ASSERT_EQ(allocator->Commit(), S_OK);
    }
    // As a graph ends: the stream goes first, and one face of the pin keeps the filter.
    void TearDown() override {
        allocator->Decommit();
        source.reset();
        m_stream.reset();
        filter.Reset();
        pin.Reset();
        EXPECT_EQ(reader->BeginFlush(), S_OK);
    }
    RefPtr<IMediaSample> Sample(int64_t position, int64_t length) {
        REFERENCE_TIME start = position * kByte, stop = (position + length) * kByte;
        auto sample = TakeSample(*allocator);
        sample->SetTime(&start, &stop);
        return sample;
    }
    // Asks for bytes and waits for them: the first one, or the failure; `delivered` gets how many came.
    int ReadFirst(int64_t position, int64_t length, LONG& delivered) {
        const auto sample = Sample(position, length);
        if (const HRESULT result = reader->Request(sample.Get(), 5); FAILED(result)) return result;
        IMediaSample* same = nullptr;
        DWORD_PTR user = 0;
        EXPECT_EQ(reader->WaitForNext(INFINITE, &same, &user), S_OK);
        EXPECT_EQ(same, sample.Get());
        EXPECT_EQ(user, 5U);
        delivered = same->GetActualDataLength();
        REFERENCE_TIME start = 0, stop = 0;
        EXPECT_EQ(same->GetTime(&start, &stop), S_OK);
        EXPECT_EQ(stop, (position + delivered) * kByte);
        BYTE* buffer = nullptr;
        EXPECT_EQ(same->GetPointer(&buffer), S_OK);
        return delivered == 0 ? 0 : *buffer;
    }

    std::unique_ptr<ByteStream> m_stream;
    std::unique_ptr<CMemStream> source;
    RefPtr<CMemReader> filter;
    RefPtr<IPin> pin;
    RefPtr<IAsyncReader> reader;
    RefPtr<IMemAllocator> allocator;
};

TEST_F(MemReaderThreads, ReadsOnFromWhereItStandsAndFromTheStartAgain) {
    Open(100);
    struct Row {
        int64_t position, length;
        int first;
        LONG delivered;
    };
    const Row rows[] = {{0, 10, 0, 10},
                        {80, 5, 10, 5},
                        {0, 10, 0, 10},
                        {90, 64, 10, 10},  // cut to what the end leaves
                        {100, 5, 0, 0},
                        {101, 5, E_INVALIDARG, 0},
                        {10, 65, VFW_E_BUFFER_OVERFLOW, 0},
                        {5, -1, E_INVALIDARG, 0},
                        {-1, 5, E_INVALIDARG, 0}};
    for (const Row& row : rows) {
        LONG delivered = 0;
        EXPECT_EQ(ReadFirst(row.position, row.length, delivered), row.first) << &row - rows;
        EXPECT_EQ(delivered, row.delivered) << &row - rows;
    }
    EXPECT_EQ(source->Position(), 20);
    const auto sample = Sample(30, 8);
    EXPECT_EQ(reader->SyncReadAligned(sample.Get()), S_OK);
    EXPECT_EQ(sample->GetActualDataLength(), 8);
}

TEST_F(MemReaderThreads, AStreamWithoutBytesOrWithoutSeekGivesNone) {
    Open(0);
    LONG delivered = 9;
    EXPECT_EQ(ReadFirst(0, 64, delivered), 0);
    EXPECT_EQ(delivered, 0);
    ByteStream unseekable({1, 2, 3});
    unseekable.failFromCall = 0;
    EXPECT_EQ(CMemStream(&unseekable).Size(nullptr), 0);
}

TEST_F(MemReaderThreads, ConnectsWithAPinThatAsksForTheReader) {
    Open(10);
    auto sink = NewTestFilter(PINDIR_INPUT);
    TestPin& input = *sink->pins[0];
    EXPECT_EQ(pin->Connect(&input, nullptr), VFW_E_NO_TRANSPORT);
    input.onComplete = [](IPin* peer) { EXPECT_TRUE(Ask<IAsyncReader>(peer, IID_IAsyncReader)); };
    AM_MEDIA_TYPE wish = TypeNumber(7);           // the source's own subtype is open
    EXPECT_EQ(pin->QueryAccept(&wish), S_FALSE);  // audio isn't bytes
    wish.majortype = MEDIATYPE_Stream;
    EXPECT_EQ(pin->QueryAccept(&wish), S_OK);
    EXPECT_EQ(pin->Connect(&input, nullptr), S_OK);
    EXPECT_EQ(pin->Disconnect(), S_OK);
    EXPECT_EQ(input.Disconnect(), S_OK);
}

TEST_F(MemReaderThreads, TakesTheAllocatorThatIsOfferedWhereItCan) {
    Open(10);
    ALLOCATOR_PROPERTIES wanted = {.cBuffers = 1, .cbBuffer = 8, .cbAlign = 0, .cbPrefix = 0};
    const auto offered = NewTestAllocator();
    RefPtr<IMemAllocator> actual;
    EXPECT_EQ(reader->RequestAllocator(offered.Get(), &wanted, actual.Put()), S_OK);
    EXPECT_EQ(actual.Get(), offered.Get());
    EXPECT_EQ(reader->RequestAllocator(allocator.Get(), &wanted, actual.Put()), S_OK);  // that one is in use
    EXPECT_NE(actual.Get(), allocator.Get());
    wanted.cbPrefix = -1;
    EXPECT_EQ(reader->RequestAllocator(offered.Get(), &wanted, actual.Put()), E_INVALIDARG);
}

}  // namespace
