// CAttributeContainerV2: the interfaces that hang on a store.
#include <algorithm>
#include <mutex>

#include "AudioCodec/attributes/CAttributeContainerV2.h"
#include "AudioCodec/shell/object/Border.h"

using Guard = std::lock_guard<RecursiveLock>;

// The index-th holder of the identifier, or null.
const InterfaceHolder* CAttributeContainerV2::FindHolder(const GUID* iid, uint32_t index) {
    // What lies in front of a holder changes only by a removal, which forgets it: the list grows at its end.
    const bool goesOn = m_found.isKnown && m_found.iid == *iid && index >= m_found.index;
    uint32_t left = goesOn ? index - m_found.index : index;
    for (size_t place = goesOn ? m_found.place : 0; place < m_interfaces.size(); ++place) {
        const InterfaceHolder& holder = *m_interfaces[place];
        if (!holder.Matches(iid, nullptr) || left-- != 0) continue;
        m_found = {*iid, index, place, true};
        return &holder;
    }
    return nullptr;
}

uint32_t CAttributeContainerV2::GetInterfaceCount() {
    const Guard guard(m_lock);
    return static_cast<uint32_t>(m_interfaces.size());
}

uint32_t CAttributeContainerV2::GetInterfaceCountById(const GUID* iid) {
    const Guard guard(m_lock);
    const auto matches = [&](const auto& holder) { return holder->Matches(iid, nullptr); };
    return static_cast<uint32_t>(std::count_if(m_interfaces.begin(), m_interfaces.end(), matches));
}

Result CAttributeContainerV2::GetInterface(const GUID* iid, uint32_t index, void** object) {
    const Guard guard(m_lock);
    if (!object) return RESULT_BAD_ARGUMENT;
    *object = nullptr;
    if (!iid) return RESULT_BAD_ARGUMENT;
    const InterfaceHolder* const found = FindHolder(iid, index);
    if (!found) return RESULT_NOT_FOUND;
    IBase* held = found->GetObject();
    held->AddRef();
    *object = held;
    return RESULT_OK;
}

Result CAttributeContainerV2::GetInterfaceFlag(const GUID* iid, uint32_t index, uint8_t* addRef) {
    const Guard guard(m_lock);
    if (!addRef) return RESULT_BAD_ARGUMENT;
    const InterfaceHolder* const found = iid ? FindHolder(iid, index) : nullptr;
    if (!found) return RESULT_FAILED;
    *addRef = found->HasReference() ? 1 : 0;
    return RESULT_OK;
}

Result CAttributeContainerV2::AddInterface(const GUID* iid, IBase* object, uint8_t addRef) {
    const Guard guard(m_lock);
    if (!iid || !object) return RESULT_BAD_ARGUMENT;
    if (m_isGoing) return RESULT_FAILED;
    return AtBorder(RESULT_NO_MEMORY, [&] {
        auto holder = std::make_unique<InterfaceHolder>(iid, object, addRef != 0);
        const Result status = holder->GetStatus();
        if (status == RESULT_OK) m_interfaces.push_back(std::move(holder));
        return status;
    });
}

// Takes the holders of an identifier out of the list, in their order; of an object the first alone.
std::unique_ptr<InterfaceHolder> CAttributeContainerV2::TakeHolders(const GUID* iid, const IBase* object) {
    m_found.isKnown = false;
    std::unique_ptr<InterfaceHolder> first;
    std::unique_ptr<InterfaceHolder>* end = &first;
    size_t kept = 0;
    for (std::unique_ptr<InterfaceHolder>& holder : m_interfaces) {
        if (!holder->Matches(iid, object) || (object && first)) {
            m_interfaces[kept++] = std::move(holder);
        } else {
            *end = std::move(holder);
            end = &(*end)->next;
        }
    }
    m_interfaces.resize(kept);
    return first;
}

Result CAttributeContainerV2::RemoveInterface(const GUID* iid, IBase* object) {
    const Guard guard(m_lock);
    // All are out of the list before one drops its reference: an object that goes may call back into this
    // store and even hang up a new one.
    std::unique_ptr<InterfaceHolder> taken = TakeHolders(iid, object);
    const Result result = taken ? RESULT_OK : RESULT_NOT_FOUND;
    while (taken) taken = std::move(taken->next);  // oldest first
    return result;
}
