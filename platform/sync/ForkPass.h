// Keeps the process from forking for a moment. A child has the thread alone that forked: what any other
// thread held or was changing in that moment stays so in the child for ever. So whoever touches what the
// whole process shares (tables, lists, the loader, the database, a static object that is being built) does it
// with a pass, and a fork waits until no other thread has one. Cheap, and taken again by a thread that has
// one already.
//
// Decisions: one gate for all, in place of the locks of each table in an order. A fork waits two seconds at
// the most, then it goes on and the child may find something locked: a load or a question to the registry
// must not hold the host's fork up for as long as it takes. A thread that forks while it has a pass itself,
// inside a library's start or a host's stream, goes on at once.
#pragma once

#include "platform/base/Types.h"
#include "platform/sync/Mutex.h"

// For the modules of the layer; `change` is 1 or -1.
VL_PLATFORM_API void VlPassForkGate(int32_t change);

class ForkPass {
public:
    ForkPass() { VlPassForkGate(1); }
    ~ForkPass() { VlPassForkGate(-1); }
    ForkPass(const ForkPass&) = delete;
    ForkPass& operator=(const ForkPass&) = delete;
};

// Holds a mutex of the whole process for a scope, with a pass.
class VL_SCOPED_CAPABILITY ProcessLock {
public:
    explicit ProcessLock(Mutex& mutex) VL_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.Lock(); }
    ~ProcessLock() VL_RELEASE() { m_mutex.Unlock(); }
    ProcessLock(const ProcessLock&) = delete;
    ProcessLock& operator=(const ProcessLock&) = delete;

private:
    const ForkPass m_pass;  // before the mutex is taken, and until it is given back
    Mutex& m_mutex;
};
