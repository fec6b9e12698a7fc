// Scalar names of the platform, as the module's code spells them. Text is UTF-16. A host doesn't meet them:
// the public headers spell the types out.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/base/PlatformResults.h"
#include "platform/base/Records.h"
#include "platform/base/Symbols.h"

using BOOL = int32_t;  // 0 is failure or false
using BYTE = uint8_t;
using WORD = uint16_t;
using DWORD = uint32_t;
using LONG = int32_t;
using ULONG = uint32_t;
using UINT = uint32_t;
using WCHAR = char16_t;  // one UTF-16 unit
using HRESULT = int32_t;
using HANDLE = void*;   // a kernel object, opaque; closed by CloseHandle
using HMODULE = void*;  // a module in memory: the very value that dlopen returns for it

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

inline constexpr HRESULT S_OK = PLATFORM_OK;
inline constexpr HRESULT S_FALSE = PLATFORM_LESS;
inline constexpr HRESULT E_NOTIMPL = PLATFORM_NOT_IMPLEMENTED;
inline constexpr HRESULT E_NOINTERFACE = PLATFORM_NO_INTERFACE;
inline constexpr HRESULT E_POINTER = PLATFORM_NULL_POINTER;
inline constexpr HRESULT E_FAIL = PLATFORM_FAILED;
inline constexpr HRESULT E_OUTOFMEMORY = PLATFORM_NO_MEMORY;
inline constexpr HRESULT E_INVALIDARG = PLATFORM_BAD_ARGUMENT;

constexpr bool SUCCEEDED(HRESULT result) { return result >= 0; }
constexpr bool FAILED(HRESULT result) { return result < 0; }

// The layer's functions have C linkage, so that any module of the process can call them by name (Symbols.h).
#define VL_PLATFORM_API extern "C" __attribute__((visibility("default")))
