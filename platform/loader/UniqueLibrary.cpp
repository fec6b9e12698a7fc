#include "platform/loader/UniqueLibrary.h"

#include <filesystem>

#include "platform/loader/posix/LoadedModule.h"
#include "platform/sync/ForkPass.h"

UniqueLibrary UniqueLibrary::Load(const std::string& path) {
    const ForkPass pass;  // a child would have half of the library
    return UniqueLibrary(LoadModule(path.c_str()));
}

UniqueLibrary UniqueLibrary::LoadSibling(const char* file) {
    static const char here = 0;
    const std::filesystem::path own = FindLoadedModule(&here).path;
    return Load((own.parent_path() / file).string());
}

void* UniqueLibrary::FindSymbol(const char* name) const {
    return m_module ? FindOwnSymbol(m_module.get(), name) : nullptr;
}

void UniqueLibrary::Unload::operator()(HMODULE module) const noexcept {
    const ForkPass pass;
    UnloadModule(module);
}
