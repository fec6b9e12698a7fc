#include "tests/support/FailingAllocator.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr int kNoLimit = -1;
thread_local int s_left = kNoLimit;
thread_local bool s_once = false;
thread_local bool s_failed = false;
thread_local Allocated s_allocated{};
std::atomic<int> s_leftForAll = kNoLimit;
std::atomic<bool> s_failedForAll = false;

void* Allocate(std::size_t size) noexcept {
    if (s_leftForAll > kNoLimit && s_leftForAll-- == 0) {
        s_failedForAll = true;
        return nullptr;
    }
    if (s_left == 0) {
        s_failed = true;
        if (s_once) s_left = kNoLimit;
        return nullptr;
    }
    if (s_left > 0) --s_left;
    ++s_allocated.blocks;
    s_allocated.bytes += size;
    return std::malloc(size ? size : 1);
}

void* AllocateOrThrow(std::size_t size) {
    if (void* block = Allocate(size)) return block;
    throw std::bad_alloc();
}

}  // namespace

Allocated AllocatedSoFar() { return s_allocated; }

FailingAllocator::FailingAllocator(int allocations, bool once) {
    s_failed = false;
    s_left = allocations;
    s_once = once;
}
FailingAllocator::~FailingAllocator() { s_left = kNoLimit; }
bool FailingAllocator::HasFailed() { return s_failed; }

FailingAllocation::FailingAllocation(int allocations) {
    s_failedForAll = false;
    s_leftForAll = allocations;
}
FailingAllocation::~FailingAllocation() { s_leftForAll = kNoLimit; }
bool FailingAllocation::HasFailed() const { return s_failedForAll; }

// Every form, since a sanitizer's runtime has its own for each that is missing here.
void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }
