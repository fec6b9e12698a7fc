// A regular file comes about in these steps: (1) refuse what can't be replaced, (2) a temporary beside the
// target, (3) the bytes, (4) mode and flush, (5) close, (6) the name. Each may fail, and up to (6) the target
// is as it was.
#include "host/Output.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "host/Failure.h"
#include "host/TemporaryCleanup.h"

namespace {

constexpr mode_t kPermissionBits = 07777;
constexpr mode_t kNewFile = 0666;

[[noreturn]] void FailWriting(const std::string& name, int error) {
    throw OutputFailure(fmt::format("Writing to {} failed: {}.", name, std::strerror(error)));
}

// Asked once: the mask can only be read by changing it, which other threads would see.
mode_t CreationMask() {
    static const mode_t s_mask = [] {
        const mode_t mask = umask(0);
        umask(mask);
        return mask;
    }();
    return s_mask;
}

// What a new file of this process, or the file that is replaced, would have as its mode.
mode_t ModeFor(const struct stat* replaced) {
    return replaced ? replaced->st_mode & kPermissionBits : kNewFile & ~CreationMask();
}

[[noreturn]] void FailExisting(const std::string& name) {
    throw OutputFailure(fmt::format("{} is there already; choose another name or use --overwrite.", name));
}

// After symbolic links, so that a link stays one.
std::string ResolveTarget(const std::string& path) {
    std::error_code error;
    const auto resolved = std::filesystem::weakly_canonical(path, error);
    return error ? path : resolved.string();
}

}  // namespace

Output Output::Standard() { return {STDOUT_FILENO, "standard output"}; }

Output Output::File(const std::string& path, Existing existing) {
    struct stat status {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && existing == Existing::Kept) FailExisting(path);
    if (exists && !S_ISREG(status.st_mode)) {  // a device or a pipe: it is written, never replaced
        Output output(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY), path);
        if (output.m_descriptor < 0) output.Fail(errno);
        return output;
    }
    // (1) To rename over a file takes no right on the file itself, so a write-protected one has to be
    // asked for it.
    if (exists && access(path.c_str(), W_OK) != 0) FailWriting(path, errno);

    Output output(-1, path);
    output.m_target = ResolveTarget(path);
    // (2) In the folder of the target: a rename works within one file system alone.
    std::string temporary = std::filesystem::path(output.m_target).parent_path() / ".vlwav-XXXXXX";
    output.m_descriptor = TemporaryCleanup::Create(temporary);
    if (output.m_descriptor < 0) output.Fail(errno);
    output.m_temporary = temporary;
    // For (4). Until then only the user can read it.
    output.m_mode = ModeFor(exists ? &status : nullptr);
    output.m_existing = existing;
    return output;
}

Output Output::Scratch() {
    std::string path = TemporaryCleanup::NewPath();
    Output output(TemporaryCleanup::Create(path), path);
    if (output.m_descriptor < 0) TemporaryCleanup::FailWriting();
    output.m_temporary = path;
    return output;
}

Output::Output(Output&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1)),
      m_name(std::move(other.m_name)),
      m_target(std::exchange(other.m_target, {})),
      m_temporary(std::exchange(other.m_temporary, {})),
      m_mode(other.m_mode),
      m_existing(other.m_existing) {}

Output::~Output() {
    // Standard output stays open: it is the process's, not this object's.
    if (m_descriptor > STDERR_FILENO) close(m_descriptor);
    DropTemporary();
}

void Output::Write(const void* data, size_t size) {
    const char* at = static_cast<const char*>(data);
    while (size > 0) {
        // (3) A pipe takes what fits; the rest is written in the next turn.
        const ssize_t done = write(m_descriptor, at, size);
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) Fail(errno);
        at += done;
        size -= static_cast<size_t>(done);
    }
}

void Output::Commit() {
    if (m_descriptor == STDOUT_FILENO) {
        // A second descriptor is closed for the sake of what only a close reports (network file systems).
        const int copy = dup(STDOUT_FILENO);
        if (copy < 0 || close(copy) != 0) Fail(errno);
        return;
    }
    // (4) Flushed before it gets its name, or a crash could leave the name on a file without its bytes.
    const bool whole = m_temporary.empty() || (fchmod(m_descriptor, m_mode) == 0 && fsync(m_descriptor) == 0);
    if (!whole) Fail(errno);
    // (5) Some file systems report a failed write only here. The descriptor is gone either way.
    if (close(std::exchange(m_descriptor, -1)) != 0) Fail(errno);
    if (m_temporary.empty()) return;
    // (6) The file may have come since (1), so the rename itself has to refuse.
    const bool replace = m_existing == Existing::Replaced;
    if (!TemporaryCleanup::Rename(m_temporary, m_target, replace)) {
        if (errno == EEXIST && !replace) FailExisting(m_name);
        Fail(errno);
    }
    // It isn't there any more under that name; the destructor must not look for it.
    m_temporary.clear();
}

bool Output::IsSameFile(const std::string& path) const {
    struct stat input {};
    struct stat mine {};
    if (stat(path.c_str(), &input) != 0) return false;
    // What is being written is a new file; what it will replace is the target.
    const int failed = m_temporary.empty() ? fstat(m_descriptor, &mine) : stat(m_target.c_str(), &mine);
    return failed == 0 && input.st_dev == mine.st_dev && input.st_ino == mine.st_ino;
}

bool Output::IsTerminal() const { return isatty(m_descriptor) != 0; }

void Output::Fail(int error) const { FailWriting(m_name, error); }

void Output::DropTemporary() noexcept {
    if (!m_temporary.empty()) TemporaryCleanup::Remove(m_temporary);
    m_temporary.clear();
}

void HoldStandardDescriptors() {
    constexpr int kDirections[] = {O_RDONLY, O_RDONLY, O_WRONLY};  // output for reading: each write fails
    for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor)
        if (fcntl(descriptor, F_GETFD) == -1 && open("/dev/null", kDirections[descriptor]) < 0) return;
}
