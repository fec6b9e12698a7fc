// The transaction that a thread has open: RegistryTransaction.h tells the rules. Opens its registry when it
// is first asked for, and only once: one that can't be had isn't waited for again.
//
// Where a process has several copies of the layer, they know of a thread's transaction together, but each has
// a store of its own: what was done through one copy is kept or taken back when the last transaction of that
// copy ends. So a module that brought its own layer writes in the registry that its host asked for, and the
// host hears what failed.
#pragma once

#include <memory>

#include "platform/registry/RegistryFile.h"
#include "platform/sync/ForkPass.h"

struct RegistryTransactionState {
    unsigned depth;  // in all copies
    DWORD which;
    DWORD failure;  // the first
};

// The calling thread's, the same from all copies.
VL_PLATFORM_API RegistryTransactionState* VlRegistryTransactionState();

class ThreadTransaction {
public:
    // The calling thread's; null for none of this copy.
    static ThreadTransaction* Current();

    // The store of the one registry, to be written in any case.
    DWORD Open(RegistryAccess access, std::shared_ptr<RegistryStore>& store);

    void Enter() { ++m_depth; }
    // True if that was the outermost end.
    bool Leave() { return --m_depth == 0; }
    // Keeps or takes back.
    DWORD End(bool keep) { return m_store ? m_store->End(keep) : 0; }

private:
    const ForkPass m_pass;  // the database has locks of its own, which a child must not find taken
    unsigned m_depth = 0;
    std::shared_ptr<RegistryStore> m_store;
};
