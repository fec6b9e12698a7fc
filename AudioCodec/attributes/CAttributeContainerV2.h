// The one implementation of the attribute store, owned by every object of the module. It knows nothing of
// what an id means; the setter decides what an attribute holds, and the id's nibble counts only in
// CopyAttribute and GetAttributeIdText.
//
// Any thread. One recursive lock covers the whole of each operation, calls to foreign objects included. Two
// threads must not copy between the same two stores in opposite directions at one time. An owner deletes the
// store directly; nothing else may then hold it by its count.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "AudioCodec/attributes/AttributeValue.h"
#include "AudioCodec/attributes/IAttributeContainer64.h"
#include "AudioCodec/attributes/InterfaceHolder.h"
#include "AudioCodec/shell/object/RecursiveLock.h"
#include "platform/base/IndexedPlace.h"

// A further name of IAttributeContainer64, known to the store alone.
inline constexpr GUID IID_IStoreAlias = MakeGuid("6A822AF0-8037-4186-9F24-D38A8598EFD8");

class CAttributeContainerV2 : public IAttributeContainer64 {
public:
    CAttributeContainerV2() = default;  // throws std::bad_alloc
    CAttributeContainerV2(const CAttributeContainerV2&) = delete;
    CAttributeContainerV2& operator=(const CAttributeContainerV2&) = delete;

    Result QueryInterface(const GUID* iid, void** object) override;  // RESULT_NOT_FOUND for an unknown one
    uint32_t AddRef() override;
    uint32_t Release() override;
    void* Alloc(uint32_t size) override;
    void Free(void* block) override;

    uint32_t GetAttributeCount() override;
    Result GetAttributeByIndex(uint32_t index, uint32_t* id, uint32_t* type) override;
    const char* GetAttributeIdText(uint32_t id) override;
    uint32_t GetLong(uint32_t id) override;
    Result SetLong(uint32_t id, uint32_t value) override;
    bool GetBool(uint32_t id) override;
    Result SetBool(uint32_t id, uint8_t value) override;
    Result GetLongArray(uint32_t id, uint32_t** values, uint32_t* count) override;
    Result SetLongArray(uint32_t id, const uint32_t* values, uint32_t count) override;
    Result GetString(uint32_t id, char16_t** text) override;
    Result SetString(uint32_t id, const char16_t* text) override;
    Result GetData(uint32_t id, uint8_t** block, uint32_t* size) override;
    Result SetData(uint32_t id, const uint8_t* block, uint32_t size) override;
    uint32_t GetInterfaceCount() override;
    uint32_t GetInterfaceCountById(const GUID* iid) override;
    Result GetInterface(const GUID* iid, uint32_t index, void** object) override;
    Result AddInterface(const GUID* iid, IBase* object, uint8_t addRef) override;
    Result SetLong64(uint32_t id, uint64_t value) override;
    uint64_t GetLong64(uint32_t id) override;
    Result SetLong64Array(uint32_t id, const uint64_t* values, uint32_t count) override;
    Result GetLong64Array(uint32_t id, uint64_t** values, uint32_t* count) override;
    Result SetPointer(uint32_t id, void* value) override;
    Result GetPointer(uint32_t id, void** value) override;
    Result SetPointerArray(uint32_t id, void* const* values, uint32_t count) override;
    Result GetPointerArray(uint32_t id, void*** values, uint32_t* count) override;
    void Clear() override;
    Result RemoveInterface(const GUID* iid, IBase* object) override;
    uint32_t CopyAttribute(uint32_t id, IAttributeContainer64* source) override;

    virtual ~CAttributeContainerV2();

    // For code that holds the class itself.

    // Copies everything into an empty store: RESULT_BAD_ARGUMENT for one that isn't, or null;
    // RESULT_NO_MEMORY, where what was copied by then stays there. A holder whose object refuses is left out.
    // Otherwise returns the status of the last holder. Takes no lock: the caller keeps both stores still.
    Result CopyTo(CAttributeContainerV2* target) const;
    // Empty for an attribute without text. Throws std::bad_alloc.
    void GetStringInto(uint32_t id, std::u16string& text);
    // Resizes `data` to the attribute's block and fills it; returns the bytes, 0 if there are none
    // or no memory.
    uint32_t GetDataInto(uint32_t id, CRawData& data);
    // Nothing happens for a source without a text, or without memory for it, which is RESULT_NO_MEMORY;
    // otherwise the result of SetString.
    Result CopyStringFrom(uint32_t id, IAttributeContainer64* source);
    // Nothing happens for a source without bytes. Returns the size, in bytes.
    uint32_t CopyDataFrom(uint32_t id, IAttributeContainer64* source);
    // Whether the index-th holder of the identifier holds a reference. RESULT_FAILED if there is
    // no such holder.
    Result GetInterfaceFlag(const GUID* iid, uint32_t index, uint8_t* addRef);
    uint32_t GetChangeCount(uint32_t id);                  // stores since the attribute's creation
    uint32_t SetChangeCount(uint32_t id, uint32_t count);  // returns the old one

private:
    using Attributes = std::map<uint32_t, std::unique_ptr<AttributeValue>>;
    using Holders = std::vector<std::unique_ptr<InterfaceHolder>>;
    // Of the holder that was asked for last, by which the next one is found without a walk from the start.
    struct FoundHolder {
        GUID iid = {};
        uint32_t index = 0;  // among those of the identifier
        size_t place = 0;    // in m_interfaces
        bool isKnown = false;
    };

    AttributeValue* Find(uint32_t id) const;
    Result Store(uint32_t id, uint32_t type, const void* source, uint32_t count);
    template <class T>
    using ArrayOf = const T* (AttributeValue::*)() const;
    using CountOf = uint32_t (AttributeValue::*)() const;
    template <class T>
    Result GetArray(uint32_t id, uint32_t type, ArrayOf<T> array, CountOf arrayCount, T** values,
                    uint32_t* count);
    template <class T>
    Result HandOut(const T* source, uint64_t bytes, T** copy);

    const InterfaceHolder* FindHolder(const GUID* iid, uint32_t index);
    std::unique_ptr<InterfaceHolder> TakeHolders(const GUID* iid, const IBase* object);

    uint32_t m_refCount = 0;
    bool m_isGoing = false;  // in the destructor: takes no interface any more
    RecursiveLock m_lock;    // guards everything here
    Attributes m_attributes;
    IndexedPlace<Attributes> m_asked;
    Holders m_interfaces;  // in order of addition
    FoundHolder m_found;
};
