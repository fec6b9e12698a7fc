// CAttributeContainerV2: the interfaces that hang on a store.
#include <algorithm>
#include <mutex>

#include "AudioCodec/attributes/CAttributeContainerV2.h"
#include "AudioCodec/shell/object/Border.h"

using Guard = std::lock_guard<RecursiveLock>;

CAttributeContainerV2::Holders::const_iterator CAttributeContainerV2::FindHolder(const GUID* iid,
                                                                                 const IBase* object,
                                                                                 uint32_t index) const {
    return std::find_if(m_interfaces.begin(), m_interfaces.end(),
                        [&](const auto& holder) { return holder->Matches(iid, object) && index-- == 0; });
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
    const auto found = FindHolder(iid, nullptr, index);
    if (found == m_interfaces.end()) return RESULT_NOT_FOUND;
    IBase* held = (*found)->GetObject();
    held->AddRef();
    *object = held;
    return RESULT_OK;
}

Result CAttributeContainerV2::GetInterfaceFlag(const GUID* iid, uint32_t index, uint8_t* addRef) {
    const Guard guard(m_lock);
    if (!addRef) return RESULT_BAD_ARGUMENT;
    const auto found = FindHolder(iid, nullptr, index);
    if (found == m_interfaces.end()) return RESULT_FAILED;
    *addRef = (*found)->HasReference() ? 1 : 0;
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

Result CAttributeContainerV2::RemoveInterface(const GUID* iid, IBase* object) {
    const Guard guard(m_lock);
    // Looked for anew each time, and only as often as there were matches: an object that goes may
    // call back into this store and even hang up a new one. The holder is out of the list before it
    // drops its reference.
    const auto matches = std::count_if(m_interfaces.begin(), m_interfaces.end(),
                                       [&](const auto& holder) { return holder->Matches(iid, object); });
    Result result = RESULT_NOT_FOUND;
    for (auto left = object ? std::min<std::ptrdiff_t>(matches, 1) : matches; left > 0; --left) {
        const auto found = FindHolder(iid, object, 0);
        if (found == m_interfaces.end()) break;
        const auto place = m_interfaces.begin() + (found - m_interfaces.cbegin());
        const std::unique_ptr<InterfaceHolder> holder = std::move(*place);
        m_interfaces.erase(place);
        result = RESULT_OK;
    }
    return result;
}
