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
    if (exists && access(path.c_str(), W_OK) != 0) FailWriting(path, errno);

    Output output(-1, path);
    output.m_target = ResolveTarget(path);
    std::string temporary = std::filesystem::path(output.m_target).parent_path() / ".vlwav-XXXXXX";
    output.m_descriptor = TemporaryCleanup::Create(temporary);
    if (output.m_descriptor < 0) output.Fail(errno);
    output.m_temporary = temporary;
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
    if (m_descriptor > STDERR_FILENO) close(m_descriptor);
    DropTemporary();
}

void Output::Write(const void* data, size_t size) {
    const char* at = static_cast<const char*>(data);
    while (size > 0) {
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
    const bool whole = m_temporary.empty() || (fchmod(m_descriptor, m_mode) == 0 && fsync(m_descriptor) == 0);
    if (!whole) Fail(errno);
    if (close(std::exchange(m_descriptor, -1)) != 0) Fail(errno);
    if (m_temporary.empty()) return;
    const bool replace = m_existing == Existing::Replaced;
    if (!TemporaryCleanup::Rename(m_temporary, m_target, replace)) {
        if (errno == EEXIST && !replace) FailExisting(m_name);
        Fail(errno);
    }
    m_temporary.clear();
}

bool Output::IsSameFile(const std::string& path) const {
    struct stat input {};
    struct stat mine {};
    if (stat(path.c_str(), &input) != 0) return false;
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
