// The lock over the module table: a mutex that all modules of the process find by its name.
#pragma once

#include "platform/base/UniqueHandle.h"

class ModuleTableLock {
public:
    // Creates the mutex, or opens the one that is there. Without one, nobody is kept out.
    explicit ModuleTableLock(const char* name);

    // Holds the lock for a scope, also one that an owner left behind when it ended: not given back, it would
    // keep all others waiting for ever. Where the wait fails the scope goes on without it.
    class Scope {
    public:
        explicit Scope(const ModuleTableLock& lock);
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        ~Scope();

    private:
        HANDLE m_mutex;
        bool m_taken;
    };

private:
    UniqueHandle m_mutex;
};
