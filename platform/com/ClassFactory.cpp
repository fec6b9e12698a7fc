#include "platform/com/ClassFactory.h"

#include <bit>
#include <optional>
#include <string>

#include "platform/base/Border.h"
#include "platform/com/ClassResults.h"
#include "platform/com/OwnClasses.h"
#include "platform/com/RefPtr.h"
#include "platform/com/RegisteredClass.h"
#include "platform/loader/UniqueLibrary.h"

namespace {

// Nothing if nobody knows the class; holds no library where its own can't be loaded.
std::optional<UniqueLibrary> LoadLibraryOf(const GUID& classId) {
    for (const OwnClass& row : kOwnClasses)
        if (row.id == classId) return UniqueLibrary::LoadSibling(row.library);
    const std::optional<std::string> path = FindRegisteredModule(classId);
    return path ? std::optional(UniqueLibrary::Load(*path)) : std::nullopt;
}

HRESULT GetFactory(const GUID& classId, IClassFactory** factory) {
    std::optional<UniqueLibrary> library = LoadLibraryOf(classId);
    if (!library) return REGDB_E_CLASSNOTREG;
    const auto entry = library->Find<DllGetClassObjectFunction>("DllGetClassObject");
    library->Keep();  // nobody counts the objects of its classes
    if (!entry) return CO_E_DLLNOTFOUND;
    return entry(classId, IID_IClassFactory, std::bit_cast<void**>(factory));
}

}  // namespace

HRESULT CoCreateInstance(const GUID& classId, IUnknown* outer, DWORD, const GUID& iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    return AtBorder(E_OUTOFMEMORY, [&] {
        RefPtr<IClassFactory> factory;
        const HRESULT result = GetFactory(classId, factory.Put());
        return FAILED(result) ? result : factory->CreateInstance(nullptr, iid, object);
    });
}
