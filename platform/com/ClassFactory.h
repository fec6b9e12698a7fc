// How a module hands out the objects of its classes, and how they are had without knowing the module.
#pragma once

#include "platform/base/Types.h"
#include "platform/com/Unknown.h"

struct IClassFactory : IUnknown {
    virtual HRESULT CreateInstance(IUnknown* outer /*in: null*/, const GUID& iid /*in*/,
                                   void** object /*out: one reference*/) = 0;
    virtual HRESULT LockServer(BOOL lock /*in*/) = 0;

protected:
    ~IClassFactory() = default;
};
inline constexpr GUID IID_IClassFactory = MakeGuid("00000001-0000-0000-C000-000000000046");

// What a module with classes exports under the name "DllGetClassObject".
using DllGetClassObjectFunction = HRESULT (*)(const GUID& classId, const GUID& iid, void** factory);

inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr DWORD CLSCTX_INPROC_HANDLER = 2;

// Makes an object of a class and returns one reference on its interface `iid`. Knows the classes of the media
// layer, whose library it loads when the first one is asked for, and those that are registered. Fails with
// REGDB_E_CLASSNOTREG for a class that nobody has, CO_E_DLLNOTFOUND where the class's module can't be loaded
// (the media layer's, without the decoder's libraries), or the class's own code. `outer` must be null. Loaded
// modules stay. Any thread.
VL_PLATFORM_API HRESULT CoCreateInstance(const GUID& classId, IUnknown* outer, DWORD context, const GUID& iid,
                                         void** object);
