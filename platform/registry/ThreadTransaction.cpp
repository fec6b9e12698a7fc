#include "platform/registry/ThreadTransaction.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/base/Border.h"
#include "platform/base/LastError.h"
#include "platform/registry/RegistryPlaces.h"
#include "platform/registry/RegistryTransaction.h"
#include "platform/sync/FirstCopysFunction.h"

namespace {

thread_local ThreadTransaction* t_current = nullptr;  // no owner: a destructor would pin the library
thread_local RegistryTransactionState t_state = {};

const auto s_firstCopys =
    reinterpret_cast<decltype(&VlRegistryTransactionState)>(FirstCopy::Find("VlRegistryTransactionState"));

// Returns the first failure.
DWORD Note(DWORD error) {
    DWORD& failure = VlRegistryTransactionState()->failure;
    if (failure == ERROR_SUCCESS) failure = error;
    return failure;
}

}  // namespace

RegistryTransactionState* VlRegistryTransactionState() { return s_firstCopys ? s_firstCopys() : &t_state; }

ThreadTransaction* ThreadTransaction::Current() { return t_current; }

DWORD ThreadTransaction::Open(RegistryAccess access, std::shared_ptr<RegistryStore>& store) {
    const RegistryTransactionState& state = *VlRegistryTransactionState();
    if (state.failure != ERROR_SUCCESS) return state.failure;
    if (!m_store) {
        const auto toWrite = std::max(access, RegistryAccess::Change);
        std::shared_ptr<RegistryStore> opened;
        DWORD error = OpenRegistry(FindRegistry(state.which), state.which, toWrite, opened);
        // None to read or to delete from: there will be one if something is entered.
        if (error == ERROR_FILE_NOT_FOUND && toWrite == RegistryAccess::Change) return error;
        if (error == ERROR_SUCCESS) error = opened->Begin();
        if (error != ERROR_SUCCESS) return Note(error);
        m_store = std::move(opened);
    }
    store = m_store;
    return ERROR_SUCCESS;
}

LONG VlBeginRegistryTransaction(DWORD which) {
    return static_cast<LONG>(AtBorder(ERROR_NOT_ENOUGH_MEMORY, [&] {
        if (!t_current) t_current = std::make_unique<ThreadTransaction>().release();
        t_current->Enter();
        RegistryTransactionState& state = *VlRegistryTransactionState();
        if (state.depth++ == 0) state = {1, which, ERROR_SUCCESS};
        return ERROR_SUCCESS;
    }));
}

LONG VlEndRegistryTransaction(LONG error) {
    if (!t_current) return static_cast<LONG>(ERROR_INVALID_HANDLE);
    DWORD failure = Note(static_cast<DWORD>(error));
    if (t_current->Leave()) {
        const std::unique_ptr<ThreadTransaction> ending(std::exchange(t_current, nullptr));
        failure = Note(ending->End(failure == ERROR_SUCCESS));
    }
    --VlRegistryTransactionState()->depth;
    return static_cast<LONG>(failure);
}

DWORD VlGetRegistryPath(DWORD which, char* buffer, DWORD size) {
    return AtBorder(DWORD{0}, [&] {
        const std::string path = FindRegistry(which);
        if (buffer && size != 0) buffer[path.copy(buffer, size - 1)] = '\0';
        return static_cast<DWORD>(path.size());
    });
}
