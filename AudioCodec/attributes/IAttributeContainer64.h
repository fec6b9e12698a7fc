// The typed attribute store that every object of the module carries, and beside it a list of interface
// references. Any thread may call any operation. The order of the operations is the binary border: nothing
// moves, nothing is added.
//
// Getters of arrays and blocks write nothing for a missing attribute and return 0, so a caller presets its
// pointer and count. What they hand out is the caller's and goes back through Free.
#pragma once

#include "AudioCodec/shell/object/IMemory.h"

struct IAttributeContainer64 : IMemory {
    virtual uint32_t GetAttributeCount() = 0;
    virtual Result GetAttributeByIndex(uint32_t index /*in: in ascending order of ids*/, uint32_t* id /*out*/,
                                       uint32_t* type /*out: store type, 1 to 9*/) = 0;
    // Narrow text in one buffer of the process, overwritten by the next call; for traces.
    virtual const char* GetAttributeIdText(uint32_t id) = 0;
    virtual uint32_t GetLong(uint32_t id) = 0;  // 0 also for a missing attribute or one of another type
    virtual Result SetLong(uint32_t id, uint32_t value) = 0;
    virtual bool GetBool(uint32_t id) = 0;
    virtual Result SetBool(uint32_t id, uint8_t value) = 0;
    virtual Result GetLongArray(uint32_t id, uint32_t** values /*out: owned by the caller*/,
                                uint32_t* count /*out: elements*/) = 0;
    virtual Result SetLongArray(uint32_t id, const uint32_t* values, uint32_t count) = 0;
    virtual Result GetString(uint32_t id, char16_t** text /*out: owned by the caller*/) = 0;
    virtual Result SetString(uint32_t id, const char16_t* text) = 0;
    virtual Result GetData(uint32_t id, uint8_t** block /*out: owned by the caller*/,
                           uint32_t* size /*out: bytes*/) = 0;
    virtual Result SetData(uint32_t id, const uint8_t* block, uint32_t size) = 0;
    virtual uint32_t GetInterfaceCount() = 0;
    virtual uint32_t GetInterfaceCountById(const GUID* iid) = 0;
    virtual Result GetInterface(const GUID* iid, uint32_t index /*in: in order of addition*/,
                                void** object /*out: one reference*/) = 0;
    // The identifier must outlive the store: it is kept as a pointer. Without addRef the object is only
    // borrowed.
    virtual Result AddInterface(const GUID* iid, IBase* object, uint8_t addRef) = 0;
    virtual Result SetLong64(uint32_t id, uint64_t value) = 0;
    virtual uint64_t GetLong64(uint32_t id) = 0;
    virtual Result SetLong64Array(uint32_t id, const uint64_t* values, uint32_t count) = 0;
    virtual Result GetLong64Array(uint32_t id, uint64_t** values, uint32_t* count) = 0;
    virtual Result SetPointer(uint32_t id, void* value /*in: not owned*/) = 0;
    virtual Result GetPointer(uint32_t id, void** value) = 0;
    virtual Result SetPointerArray(uint32_t id, void* const* values, uint32_t count) = 0;
    virtual Result GetPointerArray(uint32_t id, void*** values, uint32_t* count) = 0;
    virtual void Clear() = 0;  // attributes and interfaces
    virtual Result RemoveInterface(const GUID* iid, IBase* object /*in: null for all of the identifier*/) = 0;
    // Copies by the id's type nibble; returns the bytes copied as that type counts them.
    virtual uint32_t CopyAttribute(uint32_t id, IAttributeContainer64* source) = 0;

protected:
    ~IAttributeContainer64() = default;
};

inline constexpr GUID IID_IAttributeContainer64 = MakeGuid("CAD6A73A-E62F-41AE-AD81-5969F820BAE8");
