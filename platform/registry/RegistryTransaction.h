// Several calls to the registry as one: all of what a thread does through the registry's roots between the
// two ends is kept, or nothing of it is, whatever ends the process meanwhile. Within, the roots are those of
// one registry alone, for reading too: of the user's, or of the system's. What of another thread or of a key
// that was opened before isn't part of it. It waits 5 seconds altogether for others that hold the registry,
// and a fork of the process waits for it.
//
// One inside another is part of the outer one, which says whose registry it is, and waits for its end. Both
// ends on one thread.
#pragma once

#include "platform/base/LastError.h"
#include "platform/base/Types.h"

inline constexpr DWORD VL_REGISTRY_USER = 0;
inline constexpr DWORD VL_REGISTRY_SYSTEM = 1;

// ERROR_SUCCESS, or ERROR_NOT_ENOUGH_MEMORY, and then there is none to end.
VL_PLATFORM_API LONG VlBeginRegistryTransaction(DWORD which);

// `error`: ERROR_SUCCESS to keep what was done, else why it is to be taken back. Returns ERROR_SUCCESS if it
// is kept, else the first reason: one that was given inside, that the registry couldn't be opened, `error`,
// or what failed in keeping. The same holds for one inside another, but for what fails in keeping.
VL_PLATFORM_API LONG VlEndRegistryTransaction(LONG error);

// The file of VL_REGISTRY_USER or VL_REGISTRY_SYSTEM as the environment names it now, in the system's bytes.
// Returns its length without the terminator, also where there was less room; 0 for a user without a home.
VL_PLATFORM_API DWORD VlGetRegistryPath(DWORD which, char* buffer, DWORD size);

// One for a scope. What isn't ended is taken back.
class RegistryTransaction {
public:
    explicit RegistryTransaction(DWORD which = VL_REGISTRY_USER)
        : m_begun(VlBeginRegistryTransaction(which)), m_open(m_begun == 0) {}
    RegistryTransaction(const RegistryTransaction&) = delete;
    RegistryTransaction& operator=(const RegistryTransaction&) = delete;
    ~RegistryTransaction() {
        if (m_open) VlEndRegistryTransaction(ERROR_GEN_FAILURE);
    }

    LONG Begun() const { return m_begun; }  // nothing may be done if that failed
    LONG End(LONG error) {
        if (!m_open) return m_begun;
        m_open = false;
        return VlEndRegistryTransaction(error);
    }

private:
    LONG m_begun;
    bool m_open;
};
