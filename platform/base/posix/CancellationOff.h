// Makes a request to end the calling thread (pthread_cancel) wait while this lives: the system ends a thread
// by something like an exception, which would end the process where an exception may not pass. Costs next to
// nothing.
#pragma once

#include <pthread.h>

class CancellationOff {
public:
    CancellationOff() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_before); }
    ~CancellationOff() { pthread_setcancelstate(m_before, nullptr); }
    CancellationOff(const CancellationOff&) = delete;
    CancellationOff& operator=(const CancellationOff&) = delete;

private:
    int m_before = PTHREAD_CANCEL_ENABLE;
};
