#include "platform/com/ClassFactory.h"

#include <bit>
#include <filesystem>

#include "platform/base/Border.h"
#include "platform/com/RefPtr.h"
#include "platform/com/RegisteredClass.h"
#include "platform/loader/posix/LoadedModule.h"
#include "platform/media/MediaResults.h"
#include "platform/media/MediaTypes.h"
#include "platform/media/streamreader/IStreamReaderControl.h"

namespace {

// Classes that need no registry, and their modules in the folder of this library.
struct OwnClass {
    const GUID& id;
    const char* module;
};
constexpr OwnClass kOwnClasses[] = {
    {CLSID_FilterGraph, "libvlmedia.so"},
    {CLSID_AsyncReader, "libvlmedia.so"},
    {CLSID_WaveParser, "libvlmedia.so"},
    {CLSID_ACMWrapper, "libvlmedia.so"},
    {CLSID_StreamReader, "Filters/VlDSAudioStreamReader.ax"},
};

std::optional<std::string> FindModule(const GUID& classId) {
    for (const OwnClass& row : kOwnClasses) {
        if (!(row.id == classId)) continue;
        const auto here = FindLoadedModule(std::bit_cast<const void*>(&CoCreateInstance)).path;
        return (std::filesystem::path(here).parent_path() / row.module).string();
    }
    return FindRegisteredModule(classId);
}

HRESULT GetFactory(const GUID& classId, IClassFactory** factory) {
    const std::optional<std::string> path = FindModule(classId);
    if (!path) return REGDB_E_CLASSNOTREG;
    const HMODULE module = LoadModule(path->c_str());
    void* const entry = module ? FindOwnSymbol(module, "DllGetClassObject") : nullptr;
    if (!entry) return CO_E_DLLNOTFOUND;
    return std::bit_cast<DllGetClassObjectFunction>(entry)(classId, IID_IClassFactory,
                                                           std::bit_cast<void**>(factory));
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
