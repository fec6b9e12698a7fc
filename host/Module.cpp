#include "host/Module.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <filesystem>

#include "AudioCodec/shell/ClassIds.h"
#include "capi/RegisteredModule.h"
#include "host/Failure.h"
#include "host/Require.h"

namespace {

constexpr const char* kModuleName = "VlACWav3.so";
// Relative to the program's own folder, in this order.
constexpr const char* kModuleFolders[] = {".", "../lib", VLWAV_LIBRARY_FOLDER};

std::string FindBesideProgram() {
    std::error_code ignored;
    const auto home = std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
    for (const char* folder : kModuleFolders) {
        const auto candidate = (home / folder / kModuleName).lexically_normal();
        if (std::filesystem::exists(candidate, ignored)) return candidate.string();
    }
    throw Failure(
        fmt::format("There is no {} in {} or in the library folder beside it; name one with --module.",
                    kModuleName, home.string()));
}

}  // namespace

// Never a bare name: the loader would look for that in the system's library folders.
Module::Found Module::Find(const std::string& path, Search search) {
    std::error_code ignored;
    if (!path.empty()) return {std::filesystem::absolute(path, ignored).string(), "by --module"};
    if (search == Search::RegistryFirst) {
        // A registered file that is gone is as good as none.
        std::string registered;
        ReadRegisteredModule(registered);
        if (std::filesystem::exists(registered, ignored)) return {registered, "by the registry"};
    }
    return {FindBesideProgram(), "beside the program"};
}

void Module::Closer::operator()(void* library) const noexcept { dlclose(library); }

Module::Module(const std::string& path, Search search)
    : m_found(Find(path, search)), m_library(dlopen(Path().c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!m_library)
        throw Failure(fmt::format("The module can't be loaded ({}); name another with --module.", dlerror()));
    m_getClassObject = reinterpret_cast<GetClassObject>(dlsym(m_library.get(), "DllVlGetClassObject"));
    if (!m_getClassObject)
        throw Failure(fmt::format("{} is no codec module; name another with --module.", Path()));
}

RefPtr<IPrivateCodecMain3> Module::CreateCodec() const {
    void* object = nullptr;
    Require(m_getClassObject(&CLSID_VlACWav3, &IID_IPrivateCodecMain3, &object));
    return RefPtr<IPrivateCodecMain3>::Adopt(static_cast<IPrivateCodecMain3*>(object));
}

void Module::CallServerExport(const char* name) const {
    const auto call = reinterpret_cast<int32_t (*)()>(dlsym(m_library.get(), name));
    if (!call) throw Failure(fmt::format("{} can't be registered.", Path()));
    call();
}

void Module::Register() const { CallServerExport("DllRegisterServer"); }

void Module::Unregister() const { CallServerExport("DllUnregisterServer"); }
