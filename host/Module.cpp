#include "host/Module.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <filesystem>

#include "AudioCodec/shell/ClassIds.h"
#include "host/Failure.h"
#include "host/Require.h"

namespace {

constexpr const char* kModuleName = "VlACWav3.so";
// Relative to the program's own folder, in this order.
constexpr const char* kModuleFolders[] = {".", "../lib", VLWAV_LIBRARY_FOLDER};

// Never a bare name: the loader would look for that in the system's library folders.
std::string FindModule(const std::string& path) {
    std::error_code ignored;
    if (!path.empty()) return std::filesystem::absolute(path, ignored).string();
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

void Module::Closer::operator()(void* library) const noexcept { dlclose(library); }

Module::Module(const std::string& path)
    : m_path(FindModule(path)), m_library(dlopen(m_path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!m_library)
        throw Failure(fmt::format("The module can't be loaded ({}); name another with --module.", dlerror()));
    m_getClassObject = reinterpret_cast<GetClassObject>(dlsym(m_library.get(), "DllVlGetClassObject"));
    if (!m_getClassObject)
        throw Failure(fmt::format("{} is no codec module; name another with --module.", m_path));
}

RefPtr<IPrivateCodecMain3> Module::CreateCodec() const {
    void* object = nullptr;
    Require(m_getClassObject(&CLSID_VlACWav3, &IID_IPrivateCodecMain3, &object));
    return RefPtr<IPrivateCodecMain3>::Adopt(static_cast<IPrivateCodecMain3*>(object));
}
