// The lower half of every object that the module hands out, as three stacked templates over its interface T:
// reference counting, the allocator, the attribute store. A concrete class derives from the last one and adds
// the operations of T, its interface table and its name.
//
// References may be taken and dropped from any thread; the attribute operations lock in the store. For all
// else one thread at a time calls an object: an operation that needs that begins with
//
//   const auto alone = Alone();
#pragma once

#include <cstdlib>
#include <memory>
#include <new>

#include "AudioCodec/attributes/CAttributeContainerV2.h"
#include "AudioCodec/shell/object/InterfaceTable.h"
#include "AudioCodec/shell/object/SoleUse.h"
#include "platform/com/ReferenceCount.h"

// Counts references; the object is born with none, and the Release that takes away the last one deletes it.
// The order of the three new virtual operations is part of the binary border.
template <class T>
class CBaseImpl : public T {
public:
    CBaseImpl() = default;
    CBaseImpl(const CBaseImpl&) = delete;
    CBaseImpl& operator=(const CBaseImpl&) = delete;

    Result QueryInterface(const GUID* iid, void** object) override {
        return InternalQueryInterface(iid, object);
    }
    uint32_t AddRef() override { return m_references.Add(); }
    uint32_t Release() override {
        return m_references.Drop([this] {
            // What hangs on the object may take a reference and drop it while it goes: not the last again.
            m_references.Begin();
            delete this;
        });
    }

    virtual ~CBaseImpl() = default;
    // QueryInterface over the class's own table.
    virtual Result InternalQueryInterface(const GUID* iid, void** object) = 0;
    // The class's own name, constant; for debugging.
    virtual const char16_t* GetClassName() = 0;

protected:
    SoleUse::Scope Alone(const char* operation = __builtin_FUNCTION()) {
        return SoleUse::Scope(m_use, *this, operation);
    }

private:
    ReferenceCount m_references{0};
    [[no_unique_address]] SoleUse m_use;
};

// The allocator. All objects and stores share the one heap, so a block may go back through any of them.
template <class T>
class CMemoryImpl : public CBaseImpl<T> {
public:
    void* Alloc(uint32_t size) override { return std::malloc(size); }
    void Free(void* block) override { std::free(block); }
};

// Owns the store and forwards every attribute operation to it. The store is built before the concrete
// constructor runs, which may write attributes at once, and it goes last.
template <class T>
class CAttributeContainerImpl : public CMemoryImpl<T> {
public:
    CAttributeContainerImpl() : m_store(std::make_unique<CAttributeContainerV2>()) {}  // throws bad_alloc

    // clang-format off
    uint32_t GetAttributeCount() override { return m_store->GetAttributeCount(); }
    Result GetAttributeByIndex(uint32_t index, uint32_t* id, uint32_t* type) override { return m_store->GetAttributeByIndex(index, id, type); }
    const char* GetAttributeIdText(uint32_t id) override { return m_store->GetAttributeIdText(id); }
    uint32_t GetLong(uint32_t id) override { return m_store->GetLong(id); }
    Result SetLong(uint32_t id, uint32_t value) override { return m_store->SetLong(id, value); }
    bool GetBool(uint32_t id) override { return m_store->GetBool(id); }
    Result SetBool(uint32_t id, uint8_t value) override { return m_store->SetBool(id, value); }
    Result GetLongArray(uint32_t id, uint32_t** values, uint32_t* count) override { return m_store->GetLongArray(id, values, count); }
    Result SetLongArray(uint32_t id, const uint32_t* values, uint32_t count) override { return m_store->SetLongArray(id, values, count); }
    Result GetString(uint32_t id, char16_t** text) override { return m_store->GetString(id, text); }
    Result SetString(uint32_t id, const char16_t* text) override { return m_store->SetString(id, text); }
    Result GetData(uint32_t id, uint8_t** block, uint32_t* size) override { return m_store->GetData(id, block, size); }
    Result SetData(uint32_t id, const uint8_t* block, uint32_t size) override { return m_store->SetData(id, block, size); }
    uint32_t GetInterfaceCount() override { return m_store->GetInterfaceCount(); }
    uint32_t GetInterfaceCountById(const GUID* iid) override { return m_store->GetInterfaceCountById(iid); }
    Result GetInterface(const GUID* iid, uint32_t index, void** object) override { return m_store->GetInterface(iid, index, object); }
    Result AddInterface(const GUID* iid, IBase* object, uint8_t addRef) override { return m_store->AddInterface(iid, object, addRef); }
    Result SetLong64(uint32_t id, uint64_t value) override { return m_store->SetLong64(id, value); }
    uint64_t GetLong64(uint32_t id) override { return m_store->GetLong64(id); }
    Result SetLong64Array(uint32_t id, const uint64_t* values, uint32_t count) override { return m_store->SetLong64Array(id, values, count); }
    Result GetLong64Array(uint32_t id, uint64_t** values, uint32_t* count) override { return m_store->GetLong64Array(id, values, count); }
    Result SetPointer(uint32_t id, void* value) override { return m_store->SetPointer(id, value); }
    Result GetPointer(uint32_t id, void** value) override { return m_store->GetPointer(id, value); }
    Result SetPointerArray(uint32_t id, void* const* values, uint32_t count) override { return m_store->SetPointerArray(id, values, count); }
    Result GetPointerArray(uint32_t id, void*** values, uint32_t* count) override { return m_store->GetPointerArray(id, values, count); }
    void Clear() override { m_store->Clear(); }
    Result RemoveInterface(const GUID* iid, IBase* object) override { return m_store->RemoveInterface(iid, object); }
    uint32_t CopyAttribute(uint32_t id, IAttributeContainer64* source) override { return m_store->CopyAttribute(id, source); }
    // clang-format on

protected:
    // For constructors: a text attribute that the object is not complete without. Throws std::bad_alloc.
    void PresetString(uint32_t id, const char16_t* text) {
        if (m_store->SetString(id, text) != RESULT_OK) throw std::bad_alloc();
    }

private:
    const std::unique_ptr<CAttributeContainerV2> m_store;
};
