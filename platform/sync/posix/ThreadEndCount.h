// A count that each thread has for itself, 0 at first, and a function that is called on a thread which ends
// while its count isn't 0. It is a value of the thread that the system hands over at the thread's end, and
// not a thread_local with a destructor, which would keep this library mapped.
#pragma once

#include <pthread.h>

class ThreadEndCount {
public:
    using AtEnd = void (*)(void* /*the count*/);

    explicit ThreadEndCount(AtEnd atEnd);
    ~ThreadEndCount();
    ThreadEndCount(const ThreadEndCount&) = delete;
    ThreadEndCount& operator=(const ThreadEndCount&) = delete;

    // Changes the calling thread's count.
    void Add(int change) const;

private:
    pthread_key_t m_key = 0;  // the count is the pointer's value: null calls nobody
};
