#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "platform/base/UniqueHandle.h"
#include "platform/sync/Waitable.h"

namespace {

using namespace std::chrono_literals;

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
    EXPECT_TRUE(ReleaseMutex(mutex.get()));
    EXPECT_FALSE(ReleaseMutex(mutex.get()));
    EXPECT_EQ(WaitForSingleObject(mutex.get(), 0), WAIT_OBJECT_0);
}

TEST(NamedObjectsThreads, ThreadsThatOpenAndCloseMeetTheSameMutex) {
    int64_t counter = 0;  // not atomic
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                for (int step = 0; step < 500; ++step) {
                    const UniqueHandle mutex(CreateMutexA(nullptr, FALSE, "~many"));
                    ASSERT_EQ(WaitForSingleObject(mutex.get(), INFINITE), WAIT_OBJECT_0);
                    ++counter;
                    ASSERT_TRUE(ReleaseMutex(mutex.get()));
                }
            });
    }
    EXPECT_EQ(counter, 4 * 500);
}

}  // namespace
