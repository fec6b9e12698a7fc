// The references that are held on an object, for its AddRef and Release. Who owns the count says what happens
// with the last one. Any thread.
#pragma once

#include <atomic>
#include <cstdint>

// clang's analyzer can't follow an atomic count: it takes every Release for the last one, and would call
// every later use of an object a use of freed memory.
#ifdef __clang_analyzer__
inline constexpr bool kCountsAreFollowed = false;
#else
inline constexpr bool kCountsAreFollowed = true;
#endif

class ReferenceCount {
public:
    explicit ReferenceCount(uint32_t born /*references that the maker of the object has*/) : m_count(born) {}

    // For AddRef: the new count.
    uint32_t Add() { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }

    // For Release: the new count. Calls `atLast` when it has become 0; the object may be gone after that.
    template <class AtLast>
    uint32_t Drop(AtLast atLast) {
        // All that other threads did to the object before they dropped theirs must be seen by the one
        // that ends it.
        const uint32_t left = m_count.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0 && kCountsAreFollowed) atLast();
        return left;  // not read again: the count may be gone with its object
    }

    // The object gets its first reference, and nobody else knows it yet.
    void Begin() { m_count.store(1, std::memory_order_relaxed); }
    // Whether there are others beside the one who asks.
    bool IsShared() const { return m_count.load(std::memory_order_acquire) > 1; }

private:
    std::atomic<uint32_t> m_count;
};
