// Makes the heap run out: while one stands, `operator new` of this thread fails after `allocations`
// successes, and goes on failing unless it is to fail once. Only in programs that link FailingAllocator.cpp.
#pragma once

#include <cstddef>

class FailingAllocator {
public:
    explicit FailingAllocator(int allocations, bool once = false);
    ~FailingAllocator();
    FailingAllocator(const FailingAllocator&) = delete;
    FailingAllocator& operator=(const FailingAllocator&) = delete;

    static bool HasFailed();  // since the latest of them came
};

// The same for a single allocation of all threads together: the one after `allocations` others.
class FailingAllocation {
public:
    explicit FailingAllocation(int allocations);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    bool HasFailed() const;
};

// Counts what `operator new` of this thread has handed out so far.
struct Allocated {
    size_t blocks;
    size_t bytes;  // freed ones included
};
Allocated AllocatedSoFar();

// Runs `work` with ever more memory until it no longer returns `failure`, and returns what it gave then.
// `check` runs after every failure.
template <class Result, class Work, class Check>
Result RunWithMoreMemory(Result failure, Work work, Check check) {
    for (int allocations = 0;; ++allocations) {
        const Result result = [&] {
            const FailingAllocator heap(allocations);
            return work();
        }();
        if (result != failure) return result;
        check();
    }
}
