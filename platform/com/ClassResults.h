// Results of making objects of classes, beyond the common ones of Types.h.
#pragma once

#include "platform/base/Types.h"

// clang-format off
inline constexpr HRESULT CLASS_E_NOAGGREGATION     = static_cast<HRESULT>(0x80040110);  // no part of another object
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = static_cast<HRESULT>(0x80040111);  // the module has no such class
inline constexpr HRESULT REGDB_E_CLASSNOTREG       = static_cast<HRESULT>(0x80040154);  // no module is known for it
inline constexpr HRESULT CO_E_DLLNOTFOUND          = static_cast<HRESULT>(0x800401F8);  // its module can't be loaded
// clang-format on
