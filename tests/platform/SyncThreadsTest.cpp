#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "platform/base/LastError.h"
#include "platform/base/UniqueHandle.h"
#include "platform/file/File.h"
#include "platform/sync/CriticalSection.h"
#include "platform/sync/Waitable.h"

namespace {

using namespace std::chrono_literals;

template <class Work>
void OnThreads(int count, Work work) {
    std::vector<std::jthread> threads;
    for (int i = 0; i < count; ++i) threads.emplace_back(work);
}

constexpr int kThreads = 4, kSteps = 2000;

TEST(SyncThreads, ACriticalSectionKeepsOthersOutUntilTheLastLeave) {
    CRITICAL_SECTION section = {};
    InitializeCriticalSection(&section);
    int64_t counter = 0;  // not atomic: a hole in the lock is a data race, and loses counts
    OnThreads(kThreads, [&] {
        for (int i = 0; i < kSteps; ++i) {
            EnterCriticalSection(&section);
            EnterCriticalSection(&section);
            const int64_t before = counter;
            LeaveCriticalSection(&section);
            if (i % 64 == 0) std::this_thread::yield();  // still inside once
            counter = before + 1;
            LeaveCriticalSection(&section);
        }
    });
    EXPECT_EQ(counter, kThreads * kSteps);
    DeleteCriticalSection(&section);
}

TEST(SyncThreads, AMutexKeepsOthersOutUntilTheLastRelease) {
    const UniqueHandle mutex(CreateMutexA(nullptr, FALSE, nullptr));
    int64_t counter = 0;
    OnThreads(kThreads, [&] {
        for (int i = 0; i < kSteps; ++i) {
            ASSERT_EQ(WaitForSingleObject(mutex.get(), INFINITE), WAIT_OBJECT_0);
            ASSERT_EQ(WaitForSingleObject(mutex.get(), 0), WAIT_OBJECT_0);
            const int64_t before = counter;
            ASSERT_TRUE(ReleaseMutex(mutex.get()));
            if (i % 64 == 0) std::this_thread::yield();
            counter = before + 1;
            ASSERT_TRUE(ReleaseMutex(mutex.get()));
        }
    });
    EXPECT_EQ(counter, kThreads * kSteps);
}

TEST(SyncThreads, AWaitEndsByItsTimeOrWithTheRelease) {
    const UniqueHandle mutex(CreateMutexA(nullptr, TRUE, nullptr));
    std::atomic<bool> timedOut = false;
    std::jthread other([&] {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(WaitForSingleObject(mutex.get(), 0), WAIT_TIMEOUT);
        EXPECT_EQ(WaitForSingleObject(mutex.get(), 30), WAIT_TIMEOUT);
        EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
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

TEST(SyncThreads, OnlyTheOwnerReleasesAndNoMoreThanItTook) {
    const UniqueHandle mutex(CreateMutexA(nullptr, TRUE, nullptr));
    std::jthread([&] {
        EXPECT_FALSE(ReleaseMutex(mutex.get()));
        EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
    }).join();
    EXPECT_TRUE(ReleaseMutex(mutex.get()));
    SetLastError(0);
    EXPECT_FALSE(ReleaseMutex(mutex.get()));
    EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
}

TEST(SyncThreads, WhatIsNoMutexIsRefused) {
    for (const HANDLE none : {HANDLE{}, INVALID_HANDLE_VALUE}) {
        SetLastError(0);
        EXPECT_EQ(WaitForSingleObject(none, INFINITE), WAIT_FAILED);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        SetLastError(0);
        EXPECT_FALSE(ReleaseMutex(none));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
    const UniqueHandle file =
        TakeFile(CreateFileW(u"/dev/null", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(WaitForSingleObject(file.get(), 0), WAIT_FAILED);
    EXPECT_FALSE(ReleaseMutex(file.get()));
    EXPECT_EQ(CreateMutexA(nullptr, FALSE, "a name"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
}

}  // namespace
