#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>

#include "platform/base/LastError.h"
#include "platform/base/UniqueHandle.h"
#include "platform/file/File.h"
#include "platform/sync/CriticalSection.h"
#include "platform/sync/Thread.h"
#include "platform/sync/Waitable.h"
#include "tests/support/Threads.h"

namespace {

using namespace std::chrono_literals;

constexpr int kThreads = 4, kSteps = 2000;

// Enters twice each time, and is still inside when it has left once.
template <class Enter, class Leave>
void ExpectOneAtATime(Enter enter, Leave leave) {
    int64_t counter = 0;  // not atomic: a hole in the lock is a data race, and loses counts
    InThreads(kThreads, [&](uint32_t) {
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
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 30), WAIT_TIMEOUT);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
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

DWORD WaitElsewhere(HANDLE object, DWORD milliseconds = 0) {
    DWORD result = 0;
    std::jthread([&] { result = WaitForSingleObject(object, milliseconds); }).join();
    return result;
}

TEST(NamedObjectsThreads, ANameMeansOneObjectUntilItsLastHandleIsClosed) {
    for (int round = 0; round < 2; ++round) {  // the second finds nothing of the first
        UniqueHandle first(CreateMutexA(nullptr, TRUE, "~one"));
        EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
        UniqueHandle again(CreateMutexA(nullptr, TRUE, "~one"));  // its owner already, not once more
        EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
        const UniqueHandle other(CreateMutexA(nullptr, FALSE, "~One"));
        EXPECT_EQ(WaitElsewhere(other.get()), WAIT_OBJECT_0);  // case counts
        EXPECT_EQ(WaitElsewhere(again.get()), WAIT_TIMEOUT);
        first.reset();
        EXPECT_TRUE(ReleaseMutex(again.get()));
        EXPECT_FALSE(ReleaseMutex(again.get()));
        EXPECT_EQ(CreateEventA(nullptr, FALSE, FALSE, "~one"), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
}

TEST(NamedObjectsThreads, AMutexGoesOnWhenItsOwnerEndsAndSaysSoOnce) {
    const UniqueHandle mutex(CreateMutexA(nullptr, FALSE, nullptr));
    const UniqueHandle never(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    std::atomic<bool> taken = false;
    std::atomic<bool> end = false;
    std::jthread owner([&] {
        const UniqueHandle given(CreateMutexA(nullptr, TRUE, nullptr));
        for (int i = 0; i < 2; ++i) EXPECT_EQ(WaitForSingleObject(mutex.get(), 0), WAIT_OBJECT_0);
        taken = true;
        while (!end) std::this_thread::sleep_for(1ms);
    });
    while (!taken) std::this_thread::sleep_for(1ms);
    std::jthread ender([&] {
        std::this_thread::sleep_for(5ms);  // most often the wait below has begun
        end = true;
    });
    const HANDLE both[] = {never.get(), mutex.get()};
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 60000), WAIT_ABANDONED_0 + 1);
    EXPECT_EQ(WaitElsewhere(mutex.get()), WAIT_TIMEOUT);
    std::jthread([&] {
        EXPECT_FALSE(ReleaseMutex(mutex.get()));
        EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
    }).join();
    EXPECT_TRUE(ReleaseMutex(mutex.get()));
    EXPECT_FALSE(ReleaseMutex(mutex.get()));
    EXPECT_EQ(WaitForSingleObject(mutex.get(), 0), WAIT_OBJECT_0);
}

TEST(NamedObjectsThreads, ThreadsThatOpenAndCloseMeetTheSameMutex) {
    int64_t counter = 0;  // not atomic
    InThreads(kThreads, [&](uint32_t) {
        for (int step = 0; step < kSteps / 4; ++step) {
            const UniqueHandle mutex(CreateMutexA(nullptr, FALSE, "~many"));
            ASSERT_EQ(WaitForSingleObject(mutex.get(), INFINITE), WAIT_OBJECT_0);
            ++counter;
            ASSERT_TRUE(ReleaseMutex(mutex.get()));
        }
    });
    EXPECT_EQ(counter, kThreads * kSteps / 4);
}

TEST(Threads, BeginWithAllSignalsBlockedAndTheCallersMaskStays) {
    sigset_t own = {};
    sigset_t inThread = {};
    sigset_t after = {};
    pthread_sigmask(SIG_SETMASK, nullptr, &own);
    const auto ask = [](void* mask) -> DWORD {
        pthread_sigmask(SIG_SETMASK, nullptr, static_cast<sigset_t*>(mask));
        return 0;
    };
    const UniqueHandle thread(CreateThread(nullptr, 0, ask, &inThread, 0, nullptr));
    ASSERT_EQ(WaitForSingleObject(thread.get(), INFINITE), WAIT_OBJECT_0);
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    for (const int signal : {SIGHUP, SIGINT, SIGUSR1, SIGTERM, SIGCHLD, SIGPROF, SIGRTMIN, SIGRTMAX}) {
        EXPECT_EQ(sigismember(&inThread, signal), 1) << signal;
        EXPECT_EQ(sigismember(&own, signal), sigismember(&after, signal)) << signal;
    }
}

}  // namespace
