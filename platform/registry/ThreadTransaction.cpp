#include "platform/registry/ThreadTransaction.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/base/Border.h"
#include "platform/base/LastError.h"
#include "platform/registry/RegistryPlaces.h"
#include "platform/registry/RegistryTransaction.h"

namespace {
thread_local ThreadTransaction* t_current = nullptr;  // no owner: a destructor would pin the library
}  // namespace

ThreadTransaction* ThreadTransaction::Current() { return t_current; }

DWORD ThreadTransaction::Open(RegistryAccess access, std::shared_ptr<RegistryStore>& store) {
    if (m_failure != ERROR_SUCCESS) return m_failure;
    if (!m_store) {
        const auto toWrite = std::max(access, RegistryAccess::Change);
        std::shared_ptr<RegistryStore> opened;
        DWORD error = OpenRegistry(FindRegistry(m_which), m_which, toWrite, opened);
        // None to read or to delete from: there will be one if something is entered.
        if (error == ERROR_FILE_NOT_FOUND && toWrite == RegistryAccess::Change) return error;
        if (error == ERROR_SUCCESS) error = opened->Begin();
        if (error != ERROR_SUCCESS) return m_failure = error;
        m_store = std::move(opened);
    }
    store = m_store;
    return ERROR_SUCCESS;
}

bool ThreadTransaction::Leave(DWORD error) {
    if (m_failure == ERROR_SUCCESS) m_failure = error;
    return --m_depth == 0;
}

DWORD ThreadTransaction::End() {
    if (!m_store) return m_failure;
    const DWORD error = m_store->End(m_failure == ERROR_SUCCESS);
    return m_failure != ERROR_SUCCESS ? m_failure : error;
}

LONG VlBeginRegistryTransaction(DWORD which) {
    if (t_current) {
        t_current->Enter();
        return static_cast<LONG>(ERROR_SUCCESS);
    }
    return static_cast<LONG>(AtBorder(ERROR_NOT_ENOUGH_MEMORY, [&] {
        t_current = std::make_unique<ThreadTransaction>(which).release();
        return ERROR_SUCCESS;
    }));
}

LONG VlEndRegistryTransaction(LONG error) {
    if (!t_current) return static_cast<LONG>(ERROR_INVALID_HANDLE);
    if (!t_current->Leave(static_cast<DWORD>(error))) return static_cast<LONG>(t_current->Failure());
    const std::unique_ptr<ThreadTransaction> ending(std::exchange(t_current, nullptr));
    return static_cast<LONG>(ending->End());
}

DWORD VlGetRegistryPath(DWORD which, char* buffer, DWORD size) {
    return AtBorder(DWORD{0}, [&] {
        const std::string path = FindRegistry(which);
        if (buffer && size != 0) buffer[path.copy(buffer, size - 1)] = '\0';
        return static_cast<DWORD>(path.size());
    });
}
