// The same work on several threads at once, each with its number from 0; returns when all have ended.
#pragma once

#include <cstdint>
#include <thread>
#include <vector>

template <class Work>
void InThreads(uint32_t count, Work work) {
    std::vector<std::jthread> threads;
    for (uint32_t i = 0; i < count; ++i) threads.emplace_back([&work, i] { work(i); });
}
