// Blocks all signals of the calling thread while it lives, and then puts its mask back. A thread that is
// started meanwhile begins with all of them blocked and keeps them so.
#pragma once

#include <pthread.h>

#include <csignal>

class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t all;
        sigfillset(&all);
        m_restores = pthread_sigmask(SIG_SETMASK, &all, &m_before) == 0;
    }
    ~BlockedSignals() {
        if (m_restores) pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t m_before = {};
    bool m_restores = false;
};
