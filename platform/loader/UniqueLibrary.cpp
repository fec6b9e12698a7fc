#include "platform/loader/UniqueLibrary.h"

#include "platform/loader/posix/LoadedModule.h"
#include "platform/sync/ForkPass.h"

UniqueLibrary UniqueLibrary::Load(const std::string& path) {
    const ForkPass pass;  // a child would have half of the library
    return UniqueLibrary(LoadModule(path.c_str()));
}

UniqueLibrary UniqueLibrary::LoadSibling(const char* file) {
    static const char here = 0;
    return Load(FindLoadedModule(&here).folder + "/" + file);
}

void* UniqueLibrary::FindSymbol(const char* name) const {
    return m_module ? FindOwnSymbol(m_module.get(), name) : nullptr;
}

void UniqueLibrary::Unload::operator()(HMODULE module) const noexcept {
    const ForkPass pass;
    UnloadModule(module);
}
