// The typed attribute store that every object of the module carries, and beside it a list of interface
// references. Any thread may call any operation. The order of the operations is the binary border: nothing
// moves, nothing is added.
//
// What an attribute holds (StoreTypes.h) is decided by the first setter that names it. A setter of another
// type leaves the value alone: those of texts, arrays and blocks return RESULT_FAILED, those of single
// numbers and pointers RESULT_OK, so read back what must be certain. Every setter copies what it is given and
// returns RESULT_NO_MEMORY, the old value in place, where the copy can't be had.
//
// Getters of arrays and blocks write nothing for a missing attribute and return RESULT_OK, so preset pointer
// and count with null and 0. What a getter hands out is the caller's own copy and goes back through Free.
#pragma once

#include "AudioCodec/attributes/StoreTypes.h"
#include "AudioCodec/shell/object/IMemory.h"

namespace vlacwav3 {

struct IAttributeContainer64 : IMemory {
    virtual uint32_t GetAttributeCount() = 0;  // returns the number of attributes
    // RESULT_OK; RESULT_BAD_ARGUMENT for an index that isn't below the count, and for null.
    virtual Result GetAttributeByIndex(uint32_t index /*in: in ascending order of ids*/, uint32_t* id /*out*/,
                                       uint32_t* type /*out: STORE_...*/) = 0;
    // For traces: returns narrow text about an id, "0x34000004 (type:STRING)", in one buffer of the process
    // that the next call overwrites.
    virtual const char* GetAttributeIdText(uint32_t id /*in*/) = 0;

    // Returns the number; 0 for a missing attribute, and for one of another type.
    virtual uint32_t GetLong(uint32_t id /*in*/) = 0;
    // RESULT_OK, also where the attribute is of another type and nothing happens; RESULT_NO_MEMORY.
    virtual Result SetLong(uint32_t id /*in*/, uint32_t value /*in*/) = 0;
    // Returns the value; false for a missing attribute, and for one of another type.
    virtual bool GetBool(uint32_t id /*in*/) = 0;
    // As SetLong.
    virtual Result SetBool(uint32_t id /*in*/, uint8_t value /*in: 0 or 1*/) = 0;

    // RESULT_OK: the array and its count, for an empty one a count of 0 alone, for a missing attribute
    // nothing. RESULT_FAILED for another type, RESULT_BAD_ARGUMENT for null, RESULT_NO_MEMORY.
    virtual Result GetLongArray(uint32_t id /*in*/, uint32_t** values /*out: owned by the caller*/,
                                uint32_t* count /*out: elements*/) = 0;
    // RESULT_OK, RESULT_FAILED for an attribute of another type, RESULT_NO_MEMORY.
    virtual Result SetLongArray(uint32_t id /*in*/, const uint32_t* values /*in*/,
                                uint32_t count /*in: elements*/) = 0;

    // RESULT_OK; RESULT_BAD_ARGUMENT for a missing attribute, one without a text, and null; RESULT_FAILED for
    // another type; RESULT_NO_MEMORY.
    virtual Result GetString(uint32_t id /*in*/, char16_t** text /*out: owned by the caller*/) = 0;
    // RESULT_OK, RESULT_FAILED for an attribute of another type, RESULT_NO_MEMORY. Null makes an attribute
    // without a text.
    virtual Result SetString(uint32_t id /*in*/, const char16_t* text /*in: terminated*/) = 0;

    // RESULT_OK: the bytes and their count, for an empty block and a missing attribute nothing. RESULT_FAILED
    // for another type, RESULT_BAD_ARGUMENT for null, RESULT_NO_MEMORY.
    virtual Result GetData(uint32_t id /*in*/, uint8_t** block /*out: owned by the caller*/,
                           uint32_t* size /*out: bytes*/) = 0;
    // RESULT_OK, RESULT_FAILED for an attribute of another type, RESULT_BAD_ARGUMENT for a size without a
    // block, RESULT_NO_MEMORY.
    virtual Result SetData(uint32_t id /*in*/, const uint8_t* block /*in*/, uint32_t size /*in: bytes*/) = 0;

    virtual uint32_t GetInterfaceCount() = 0;  // returns the number of interface references
    // Returns how many of them are of this identifier; 0 for null.
    virtual uint32_t GetInterfaceCountById(const GUID* iid /*in*/) = 0;
    // RESULT_OK; otherwise *object is null: RESULT_NOT_FOUND where there are not so many of this identifier,
    // RESULT_BAD_ARGUMENT for null.
    virtual Result GetInterface(const GUID* iid /*in*/, uint32_t index /*in: in order of addition*/,
                                void** object /*out: one reference*/) = 0;
    // RESULT_OK, RESULT_BAD_ARGUMENT for null, RESULT_NO_MEMORY, or the failure of the object's
    // QueryInterface, through which a reference is taken; nothing is added then.
    virtual Result AddInterface(const GUID* iid /*in: kept as a pointer, so it must outlive the store*/,
                                IBase* object /*in*/, uint8_t addRef /*in: 0 borrows the object*/) = 0;

    // As SetLong and GetLong.
    virtual Result SetLong64(uint32_t id /*in*/, uint64_t value /*in*/) = 0;
    virtual uint64_t GetLong64(uint32_t id /*in*/) = 0;
    // As SetLongArray and GetLongArray.
    virtual Result SetLong64Array(uint32_t id /*in*/, const uint64_t* values /*in*/,
                                  uint32_t count /*in: elements*/) = 0;
    virtual Result GetLong64Array(uint32_t id /*in*/, uint64_t** values /*out: owned by the caller*/,
                                  uint32_t* count /*out: elements*/) = 0;
    // As SetLong.
    virtual Result SetPointer(uint32_t id /*in*/, void* value /*in: not owned*/) = 0;
    // RESULT_OK, RESULT_BAD_ARGUMENT for a missing attribute and for null, RESULT_FAILED for another type.
    virtual Result GetPointer(uint32_t id /*in*/, void** value /*out: not owned*/) = 0;
    // As SetLongArray and GetLongArray; what the elements point at is not owned.
    virtual Result SetPointerArray(uint32_t id /*in*/, void* const* values /*in*/,
                                   uint32_t count /*in: elements*/) = 0;
    virtual Result GetPointerArray(uint32_t id /*in*/, void*** values /*out: owned by the caller*/,
                                   uint32_t* count /*out: elements*/) = 0;

    virtual void Clear() = 0;  // takes out all attributes and all interface references
    // RESULT_OK, or RESULT_NOT_FOUND where there is no such reference.
    virtual Result RemoveInterface(const GUID* iid /*in*/,
                                   IBase* object /*in: null for all of the identifier*/) = 0;
    // Copies one attribute of another store by the type nibble of its id (BOOL, DATA, LONG, LONG_ARRAY and
    // STRING; others aren't copied), also as 0 or false where the source lacks it. Returns the bytes of what
    // was there to copy: 1, the block's, 4, 0, the text's without its terminator; 0 for a null source.
    virtual uint32_t CopyAttribute(uint32_t id /*in*/, IAttributeContainer64* source /*in*/) = 0;

protected:
    ~IAttributeContainer64() = default;
};

inline constexpr GUID IID_IAttributeContainer64 = MakeGuid("CAD6A73A-E62F-41AE-AD81-5969F820BAE8");

}  // namespace vlacwav3
