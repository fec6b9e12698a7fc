// What the module exports, as a host finds it by name.
#pragma once

#include "AudioCodec/shell/object/ResultCodes.h"
#include "platform/base/Guid.h"

#define VL_MODULE_EXPORT extern "C" __attribute__((visibility("default")))

// A new codec main object for CLSID_VlACWav3, through its interface `iid`, with one reference. 4 for a null
// receiver, 3 for another class, 2 if there is no memory, or what QueryInterface returns, such as
// E_NOINTERFACE for an interface that it doesn't have; *object is then null.
VL_MODULE_EXPORT Result DllVlGetClassObject(const GUID* clsid /*in*/, const GUID* iid /*in*/,
                                            void** object /*out: one reference*/);
// Enter the module into the registry, and take it out. Always 1: whether the registry took it is told to
// nobody.
VL_MODULE_EXPORT int32_t DllRegisterServer();
VL_MODULE_EXPORT int32_t DllUnregisterServer();
// CLSID_VlACWav3; 4 for a null pointer.
VL_MODULE_EXPORT Result GetCodecGUID(GUID* clsid /*out*/);
