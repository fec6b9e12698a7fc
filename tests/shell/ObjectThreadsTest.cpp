#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "platform/com/RefPtr.h"
#include "tests/shell/SampleObject.h"

namespace {

TEST(ObjectThreads, ReferencesAreTakenAndDroppedFromAnyThreadAndTheLastOneDeletes) {
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> deleted = 0;
        auto first = RefPtr<SampleObject>::Retain(new SampleObject(&deleted));
        std::vector<std::thread> threads;
        for (uint32_t i = 0; i < 8; ++i) {
            threads.emplace_back([mine = first, i] {
                for (uint32_t k = 0; k < 20; ++k) RefPtr<SampleObject>::Retain(mine.Get())->SetLong(i, k);
            });
        }
        first.Reset();
        for (std::thread& thread : threads) thread.join();
        threads.clear();
        EXPECT_EQ(deleted, 1);
    }
}

}  // namespace
