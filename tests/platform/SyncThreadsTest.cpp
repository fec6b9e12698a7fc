#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "platform/base/LastError.h"
#include "platform/base/UniqueHandle.h"
#include "platform/file/File.h"
#include "platform/sync/CriticalSection.h"
#include "platform/sync/Thread.h"
#include "platform/sync/Waitable.h"

namespace {

using namespace std::chrono_literals;

constexpr int kThreads = 4, kSteps = 2000;

// Enters twice each time, and is still inside when it has left once.
template <class Enter, class Leave>
void ExpectOneAtATime(Enter enter, Leave leave) {
    int64_t counter = 0;  // not atomic: a hole in the lock is a data race, and loses counts
    std::vector<std::jthread> threads(kThreads);
    for (auto& thread : threads) {
        thread = std::jthread([&] {
            for (int i = 0; i < kSteps; ++i) {
                enter();
                enter();
                const int64_t before = counter;
                leave();
                if (i % 64 == 0) std::this_thread::yield();
                counter = before + 1;
                leave();
            }
        });
    }
    threads.clear();
    EXPECT_EQ(counter, kThreads * kSteps);
}

TEST(SyncThreads, CriticalSectionsAndMutexesKeepOthersOutUntilTheLastLeave) {
    CRITICAL_SECTION section = {};
    InitializeCriticalSection(&section);
    ExpectOneAtATime([&] { EnterCriticalSection(&section); }, [&] { LeaveCriticalSection(&section); });
    DeleteCriticalSection(&section);
    const UniqueHandle mutex(CreateMutexA(nullptr, FALSE, nullptr));
    ExpectOneAtATime([&] { ASSERT_EQ(WaitForSingleObject(mutex.get(), INFINITE), WAIT_OBJECT_0); },
                     [&] { ASSERT_TRUE(ReleaseMutex(mutex.get())); });
}

TEST(SyncThreads, AWaitEndsByItsTimeOrWithTheReleaseByTheOwnerAlone) {
    const UniqueHandle mutex(CreateMutexA(nullptr, TRUE, nullptr));
    std::atomic<bool> timedOut = false;
    std::jthread other([&] {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(WaitForSingleObject(mutex.get(), 0), WAIT_TIMEOUT);
        EXPECT_EQ(WaitForSingleObject(mutex.get(), 30), WAIT_TIMEOUT);
        EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
        EXPECT_FALSE(ReleaseMutex(mutex.get()));
        EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
        timedOut = true;
        EXPECT_EQ(WaitForSingleObject(mutex.get(), 60000), WAIT_OBJECT_0);
        EXPECT_TRUE(ReleaseMutex(mutex.get()));
    });
    while (!timedOut) std::this_thread::sleep_for(1ms);
    std::this_thread::sleep_for(5ms);  // most often the other waits by now
    EXPECT_TRUE(ReleaseMutex(mutex.get()));
    other.join();
    EXPECT_EQ(WaitForSingleObject(mutex.get(), 0), WAIT_OBJECT_0);
}

TEST(SyncThreads, AManualEventStaysSetAndAnAutomaticOneLetsOneWaitThrough) {
    const UniqueHandle manual(CreateEventA(nullptr, TRUE, TRUE, nullptr));
    const UniqueHandle automatic(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    for (int i = 0; i < 2; ++i) EXPECT_EQ(WaitForSingleObject(manual.get(), 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ResetEvent(manual.get()));
    EXPECT_EQ(WaitForSingleObject(manual.get(), 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(automatic.get(), 0), WAIT_TIMEOUT);
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(SetEvent(automatic.get()));  // the second changes nothing
    EXPECT_EQ(WaitForSingleObject(automatic.get(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(automatic.get(), 0), WAIT_TIMEOUT);
    SetLastError(0);
    EXPECT_FALSE(SetEvent(UniqueHandle(CreateMutexA(nullptr, FALSE, nullptr)).get()));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(SyncThreads, AWaitForAnyTakesTheFirstOfThoseToBeHadAndNoOther) {
    const UniqueHandle stop(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    const UniqueHandle work(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    const HANDLE both[] = {stop.get(), work.get()};
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 5), WAIT_TIMEOUT);
    SetEvent(work.get());
    SetEvent(stop.get());
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, INFINITE), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(WaitForMultipleObjects(2, both, TRUE, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(WaitForMultipleObjects(0, both, FALSE, 0), WAIT_FAILED);
    EXPECT_EQ(WaitForMultipleObjects(MAXIMUM_WAIT_OBJECTS + 1, both, FALSE, 0), WAIT_FAILED);
}

TEST(SyncThreads, NoWakeIsLostBetweenWaitersForSeveralEvents) {
    const UniqueHandle ping(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    const UniqueHandle pong(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    const UniqueHandle never(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    const auto play = [&](HANDLE wanted, HANDLE given) {
        const HANDLE both[] = {never.get(), wanted};
        for (int i = 0; i < kSteps; ++i) {
            EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, INFINITE), WAIT_OBJECT_0 + 1);
            SetEvent(given);
        }
    };
    std::jthread other(play, ping.get(), pong.get());
    SetEvent(ping.get());
    play(pong.get(), ping.get());
}

TEST(SyncThreads, AThreadIsToBeHadWhenItsFunctionReturnsAndOutlivesItsHandle) {
    struct Shared {
        UniqueHandle go{CreateEventA(nullptr, TRUE, FALSE, nullptr)};
        UniqueHandle done{CreateSemaphoreA(nullptr, 0, 2, nullptr)};
        std::atomic<int> ran = 0;
    } shared;
    const auto run = [](void* argument) -> DWORD {
        auto* mine = static_cast<Shared*>(argument);
        WaitForSingleObject(mine->go.get(), INFINITE);
        ++mine->ran;
        ReleaseSemaphore(mine->done.get(), 1, nullptr);
        return 0;
    };
    const UniqueHandle kept(CreateThread(nullptr, 0, run, &shared, 0, nullptr));
    ASSERT_TRUE(UniqueHandle(CreateThread(nullptr, 0, run, &shared, 0, nullptr)));  // closed at once
    EXPECT_EQ(WaitForSingleObject(kept.get(), 5), WAIT_TIMEOUT);
    SetEvent(shared.go.get());
    for (int i = 0; i < 2; ++i) EXPECT_EQ(WaitForSingleObject(kept.get(), INFINITE), WAIT_OBJECT_0);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(WaitForSingleObject(shared.done.get(), INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(shared.ran, 2);
    EXPECT_EQ(CreateThread(nullptr, 0, nullptr, nullptr, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(CreateThread(nullptr, 1 << 20, run, nullptr, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
}

}  // namespace
