#include "capi/posix/ModuleFile.h"

#include <dlfcn.h>
#include <link.h>

#include <cstring>
#include <filesystem>

namespace {

constexpr char kOwner[] = "VlACWav3";
constexpr uint32_t kVersionNote = 1;

constexpr size_t Filled(size_t size) { return (size + 3) & ~size_t{3}; }

struct Search {
    ElfW(Addr) base;  // of the module that is looked for
    std::string version;
};

// Takes the version out of a segment of notes.
void ReadNotes(const char* at, size_t size, std::string& version) {
    ElfW(Nhdr) note;
    while (size >= sizeof note) {
        std::memcpy(&note, at, sizeof note);
        const size_t owner = Filled(note.n_namesz);
        const size_t content = Filled(note.n_descsz);
        if (owner > size - sizeof note || content > size - sizeof note - owner) return;
        const char* const name = at + sizeof note;
        if (note.n_type == kVersionNote && note.n_namesz == sizeof kOwner &&
            std::memcmp(name, kOwner, sizeof kOwner) == 0)
            version.assign(name + owner, strnlen(name + owner, note.n_descsz));
        at += sizeof note + owner + content;
        size -= sizeof note + owner + content;
    }
}

int VisitModule(dl_phdr_info* module, size_t, void* data) {
    auto& search = *static_cast<Search*>(data);
    if (module->dlpi_addr != search.base) return 0;
    for (int i = 0; i < module->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = module->dlpi_phdr[i];
        if (segment.p_type == PT_NOTE) {
            // NOLINTNEXTLINE(performance-no-int-to-ptr): the loader tells addresses as numbers
            ReadNotes(reinterpret_cast<const char*>(module->dlpi_addr + segment.p_vaddr), segment.p_memsz,
                      search.version);
        }
    }
    return 1;
}

}  // namespace

void ModuleFile::Closer::operator()(void* library) const noexcept { dlclose(library); }

ModuleFile::ModuleFile(const std::string& path, std::string& reason)
    : m_library(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!m_library) reason = dlerror();
}

void* ModuleFile::Find(const char* name) const { return dlsym(m_library.get(), name); }

std::string ModuleFile::Version() const {
    link_map* map = nullptr;
    if (dlinfo(m_library.get(), RTLD_DI_LINKMAP, &map) != 0) return {};
    Search search{map->l_addr, {}};
    dl_iterate_phdr(&VisitModule, &search);
    return search.version;
}

std::string ModuleFile::OfOurs(const char* name) {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&VisitModule), &info) == 0) return {};
    std::error_code ignored;
    const auto folder = std::filesystem::weakly_canonical(info.dli_fname, ignored).parent_path();
    const auto installed = folder / VL_PRIVATE_FOLDER / name;
    return (std::filesystem::exists(installed, ignored) ? installed : folder / name).string();
}
