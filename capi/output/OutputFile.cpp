#include "capi/output/OutputFile.h"

#include <cerrno>

#include "capi/output/Leftovers.h"
#include "capi/output/TemporaryNames.h"
#include "capi/posix/FileNames.h"

namespace {

// Calls `make` with one temporary name after the other, until it makes one that nobody has.
template <class Make>
int MakeUnderNewName(const std::string& folder, std::string& name, Make make) {
    constexpr int kMostTries = 1000;
    Leftovers::RemoveFrom(folder);
    int error = EEXIST;
    for (int i = 0; i < kMostTries && error == EEXIST; ++i) {
        std::string path = FileNames::Temporary(folder);
        error = make(path);
        if (error == 0) {
            TemporaryNames::Add(path);
            name = std::move(path);
        }
    }
    return error;
}

}  // namespace

int OutputFile::MakeIn(const std::string& folder, uint32_t mode) {
    if (m_bytes.MakeNameless(folder, mode) == 0) return 0;
    // Whatever the reason was: if the folder can't be written at all, this fails for it too.
    return MakeUnderNewName(folder, m_name, [&](const std::string& path) {
        if (const int error = m_bytes.MakeNew(path, mode)) return error;
        // Another process may have taken it for a leftover before it was held. Where nothing can be locked,
        // nobody takes anything for one.
        return m_bytes.Hold() == EAGAIN || !m_bytes.HasName() ? EEXIST : 0;
    });
}

int OutputFile::MakeInMemory(const std::string& folderElse) {
    constexpr uint32_t kPrivate = 0600;
    FileNames::Facts facts;
    const int error = m_bytes.MakeInMemory();
    if (error == 0 && FileNames::Look(Path(), facts) == 0) return 0;
    return MakeIn(folderElse, kPrivate);
}

int OutputFile::NameNew(const std::string& path) {
    if (m_name.empty()) return m_bytes.Link(path);
    return Renamed(FileNames::RenameToNew(m_name, path));
}

int OutputFile::NameInPlace(const std::string& path) {
    // A rename needs a name to begin with.
    if (m_name.empty()) {
        const int error = GetTemporaryName(FileNames::FolderOf(path));
        if (error != 0) return error;
    }
    return Renamed(FileNames::Rename(m_name, path));
}

int OutputFile::GetTemporaryName(const std::string& folder) {
    // Without a name it is nobody else's: this fails only where nothing can be locked.
    static_cast<void>(m_bytes.Hold());
    return MakeUnderNewName(folder, m_name, [&](const std::string& path) { return m_bytes.Link(path); });
}

int OutputFile::Renamed(int error) {
    if (error == 0) {
        TemporaryNames::Forget(m_name);
        m_name.clear();
    }
    return error;
}

void OutputFile::RemoveName() noexcept {
    if (m_name.empty()) return;
    FileNames::Remove(m_name);
    TemporaryNames::Forget(m_name);
}
