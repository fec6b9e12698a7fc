#include "capi/output/PlainFile.h"

#include <cerrno>

#include "capi/SystemFailure.h"
#include "capi/vlwav.h"

void PlainFile::Create(const std::string& path, uint32_t flags) {
    Drop();
    FileNames::Facts facts;
    const int looked = FileNames::Look(path, facts);
    if (looked != ENOENT) RequireSystem(looked, "Writing to", path);
    const bool exists = looked == 0;
    const bool overwrite = (flags & VLW_OVERWRITE) != 0;
    m_path = path;
    if (exists && !facts.regular) {
        RequireSystem(m_direct.OpenForWriting(path), "Writing to", path);
        return;
    }
    if (exists && !overwrite) throw SystemFailure(EEXIST, "Writing to " + path, path);
    auto target = std::make_unique<NamedTarget>();
    RequireSystem(target->Open(path, exists ? &facts : nullptr, overwrite), "Writing to", path);
    m_target = std::move(target);
}

void PlainFile::Write(const void* bytes, size_t size) {
    const Descriptor& file = m_target ? m_target->File().Bytes() : m_direct;
    RequireSystem(file.Write(bytes, size), "Writing to", m_path);
}

void PlainFile::Finish() {
    if (m_target) RequireSystem(m_target->Commit(), "Writing to", m_path);
    Drop();
}

void PlainFile::Drop() noexcept {
    m_target.reset();
    m_direct = Descriptor();
}
