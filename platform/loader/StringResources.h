// String resources of modules: blocks of 16 counted strings, found by type, name and language in a table that
// is compiled into the module. A string's count stands in front of its units, 16 bits like them; 0 is an
// empty string. String `id` is number id mod 16 of the block of name id / 16 + 1. Nothing here looks into a
// block or falls back on another language.
//
//   static const StringResources s_texts(kBlocks);
//
// tells the layer of a module's table, for as long as the module is loaded. Any thread may ask. What has been
// found is the module's own memory: nothing is given back, and it goes with the module.
#pragma once

#include <bit>
#include <cstdint>
#include <span>

#include "platform/base/Types.h"

using HRSRC = const void*;    // a resource, opaque
using HGLOBAL = const void*;  // its bytes in memory, opaque

// Types and names of resources are numbers in the place of a text. Real texts name nothing here.
inline const WCHAR* MAKEINTRESOURCEW(WORD id) { return std::bit_cast<const WCHAR*>(uintptr_t{id}); }
inline const WCHAR* const RT_STRING = MAKEINTRESOURCEW(6);

inline constexpr DWORD kStringsInBlock = 16;

// The block that has the string `id`.
constexpr WORD StringBlockName(DWORD id) { return static_cast<WORD>(id / kStringsInBlock + 1); }

struct StringBlock {
    WORD name;
    WORD language;
    const WCHAR* units;
    DWORD size;  // in bytes
};

// The resource of exactly this language; no module means the program. Null if there is none, with
// ERROR_RESOURCE_DATA_NOT_FOUND for a module that has no table, else ERROR_RESOURCE_TYPE_NOT_FOUND,
// ERROR_RESOURCE_NAME_NOT_FOUND or ERROR_RESOURCE_LANG_NOT_FOUND.
VL_PLATFORM_API HRSRC FindResourceExW(HMODULE module, const WCHAR* type, const WCHAR* name, WORD language);

// A resource's bytes are loaded and locked as soon as it is found. Null, or a size of 0, for a null
// resource, with ERROR_RESOURCE_DATA_NOT_FOUND.
VL_PLATFORM_API HGLOBAL LoadResource(HMODULE module, HRSRC resource);
VL_PLATFORM_API const void* LockResource(HGLOBAL data);
VL_PLATFORM_API DWORD SizeofResource(HMODULE module, HRSRC resource);  // in bytes

// For StringResources. Notes the table for the module that holds it, whose handle it returns, or null where
// there is no memory for that; a module has one.
VL_PLATFORM_API HMODULE VlAddStringBlocks(const StringBlock* blocks, size_t count);
VL_PLATFORM_API void VlRemoveStringBlocks(HMODULE module);

// Registers a module's table; the table is constant data of the module that builds this.
class StringResources {
public:
    explicit StringResources(std::span<const StringBlock> blocks)
        : m_module(VlAddStringBlocks(blocks.data(), blocks.size())) {}
    StringResources(const StringResources&) = delete;
    StringResources& operator=(const StringResources&) = delete;
    ~StringResources() { VlRemoveStringBlocks(m_module); }

    // Whether the layer has taken the table.
    bool AreKnown() const { return m_module != nullptr; }

private:
    HMODULE m_module;
};
