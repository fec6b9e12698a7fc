#include "capi/output/NamedTarget.h"

#include <cerrno>

namespace {

constexpr uint32_t kNewFile = 0666;      // less the process's mask
constexpr uint32_t kUnnamedMode = 0600;  // until it has the mode of what it replaces

}  // namespace

int NamedTarget::Open(const std::string& path, const FileNames::Facts* replaced, bool overwrite) {
    m_path = path;
    m_overwrite = overwrite;
    m_replaces = replaced != nullptr;
    if (replaced) m_replaced = *replaced;
    if (const int error = FileNames::Resolve(m_path)) return error;
    // At once, and not only when it is to get that name.
    if (m_path.empty()) return ENOENT;
    if (m_path.back() == '/') return EISDIR;
    // A rename over a file takes no right on the file itself, so a write-protected one has to be asked.
    if (const int error = m_replaces ? FileNames::MayWrite(m_path) : 0) return error;
    // In the target's folder: a link and a rename work within one file system alone.
    return m_file.MakeIn(FileNames::FolderOf(m_path), m_replaces ? kUnnamedMode : kNewFile);
}

int NamedTarget::Commit() {
    if (m_replaces)
        if (const int error = m_file.Bytes().TakeOver(m_replaced.mode, m_replaced.owner, m_replaced.group))
            return error;
    // Before it gets its name, or a crash could leave the name on a file without its bytes.
    if (const int error = m_file.Bytes().Flush()) return error;
    bool isNew = false;
    if (const int error = GiveName(isNew)) return error;
    const int error = FileNames::FlushFolder(FileNames::FolderOf(m_path));
    // What failed isn't there. What was replaced can't come back.
    if (error != 0 && isNew) FileNames::Remove(m_path);
    return error;
}

int NamedTarget::GiveName(bool& isNew) {
    if (!m_replaces) {
        const int error = m_file.NameNew(m_path);
        isNew = error == 0;
        if (error != EEXIST || !m_overwrite) return error;
    }
    return m_file.NameInPlace(m_path);
}
