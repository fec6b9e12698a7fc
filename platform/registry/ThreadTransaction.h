// The transaction that a thread has open: RegistryTransaction.h tells the rules. Opens its registry when it
// is first asked for, and only once: one that can't be had isn't waited for again.
#pragma once

#include <memory>

#include "platform/registry/RegistryFile.h"
#include "platform/sync/ForkPass.h"

class ThreadTransaction {
public:
    // The calling thread's; null for none.
    static ThreadTransaction* Current();

    explicit ThreadTransaction(DWORD which) : m_which(which) {}

    // The store of the one registry, to be written in any case.
    DWORD Open(RegistryAccess access, std::shared_ptr<RegistryStore>& store);

    void Enter() { ++m_depth; }
    // True if that was the outermost end.
    bool Leave(DWORD error);
    // Keeps or takes back.
    DWORD End();

    DWORD Failure() const { return m_failure; }

private:
    const ForkPass m_pass;  // the database has locks of its own, which a child must not find taken
    const DWORD m_which;
    DWORD m_failure = 0;  // the first
    unsigned m_depth = 1;
    std::shared_ptr<RegistryStore> m_store;
};
