// What the module exports. A host that loads the module by path finds each function by its name with dlsym,
// and has its type from here: reinterpret_cast<decltype(&DllVlGetClassObject)>(symbol). Any thread.
#pragma once

#include "AudioCodec/shell/object/ResultCodes.h"
#include "platform/base/Guid.h"

// What a module shows to its host.
#define VL_MODULE_EXPORT extern "C" __attribute__((visibility("default")))

namespace vlacwav3 {

// Makes a codec main object. RESULT_OK; otherwise *object is null: RESULT_BAD_ARGUMENT for a null receiver,
// RESULT_NOT_FOUND for another class, RESULT_NO_MEMORY, RESULT_FAILED where the module was loaded without the
// layer beside it, for want of that or of memory (loaded anew, it may work), or a failure of QueryInterface
// such as PLATFORM_NO_INTERFACE.
VL_MODULE_EXPORT Result DllVlGetClassObject(const GUID* clsid /*in: CLSID_VlACWav3*/,
                                            const GUID* iid /*in: such as IID_IPrivateCodecMain3*/,
                                            void** object /*out: one reference*/);
// Enter the module into the registry, and take it out. Always 1, whether or not
// the registry took it.
VL_MODULE_EXPORT int32_t DllRegisterServer();
VL_MODULE_EXPORT int32_t DllUnregisterServer();
// Tells CLSID_VlACWav3. RESULT_OK, RESULT_BAD_ARGUMENT for null.
VL_MODULE_EXPORT Result GetCodecGUID(GUID* clsid /*out*/);

}  // namespace vlacwav3
