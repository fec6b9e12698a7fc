#include "capi/posix/Descriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <limits>

namespace {

// Larger requests the system cuts anyway.
constexpr size_t kMostAtOnce = SSIZE_MAX & ~size_t{0xFFFF};

// A call that a signal interrupted is made again.
template <class Call>
auto Repeat(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

// Whether a descriptor that its owner has set not to wait is ready now; it is waited for.
bool WaitsFor(int number, short events) {
    if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
    pollfd wanted{number, events, 0};
    return Repeat([&] { return poll(&wanted, 1, -1); }) > 0;
}

}  // namespace

Descriptor::~Descriptor() {
    if (m_number >= 0) close(m_number);
}

// Never one of the first three: in a program that closed those, what is written to its standard output or
// read from its input must not meet a file of the library.
int Descriptor::Take(int number) {
    if (number < 0) return errno;
    if (number <= STDERR_FILENO) {
        const int low = std::exchange(number, fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        const int error = errno;
        close(low);
        if (number < 0) return error;
    }
    if (m_number >= 0) close(m_number);
    m_number = number;
    return 0;
}

int Descriptor::Open(const std::string& path, uint64_t& size) {
    const int error = Take(Repeat([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY); }));
    if (error != 0) return error;
    struct stat status {};
    if (fstat(m_number, &status) != 0) return errno;
    size = S_ISREG(status.st_mode) ? static_cast<uint64_t>(status.st_size) : 0;
    return S_ISDIR(status.st_mode) ? EISDIR : 0;
}

int Descriptor::Duplicate(int number) { return Take(fcntl(number, F_DUPFD_CLOEXEC, 0)); }

int Descriptor::OpenForWriting(const std::string& path) {
    return Take(Repeat([&] { return open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY); }));
}

int Descriptor::MakeNameless(const std::string& folder, uint32_t mode) {
    const int error =
        Take(Repeat([&] { return open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode_t{mode}); }));
    if (error != 0) return error;
    return access(ReopeningPath().c_str(), F_OK) == 0 ? 0 : errno;
}

int Descriptor::MakeNew(const std::string& path, uint32_t mode) {
    return Take(
        Repeat([&] { return open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode_t{mode}); }));
}

int Descriptor::OpenLeftover(const std::string& path) {
    const int error = Take(
        Repeat([&] { return open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    if (error != 0) return error;
    return IsRegular() ? 0 : EINVAL;
}

int Descriptor::MakeInMemory() { return Take(memfd_create("vlwav", MFD_CLOEXEC)); }

int Descriptor::ReadAt(void* buffer, size_t size, uint64_t place, size_t& done) const {
    done = 0;
    while (done < size) {
        const size_t wanted = std::min(size - done, kMostAtOnce);
        const ssize_t got = Repeat([&] {
            return pread(m_number, static_cast<char*>(buffer) + done, wanted,
                         static_cast<off_t>(place + done));
        });
        if (got < 0) return errno;
        if (got == 0) break;
        done += static_cast<size_t>(got);
    }
    return 0;
}

int Descriptor::ReadNext(void* buffer, size_t size, size_t& done) const {
    done = 0;
    for (;;) {
        const ssize_t got = Repeat([&] { return read(m_number, buffer, std::min(size, kMostAtOnce)); });
        if (got >= 0) {
            done = static_cast<size_t>(got);
            return 0;
        }
        if (!WaitsFor(m_number, POLLIN)) return errno;
    }
}

int Descriptor::Write(const void* bytes, size_t size) const {
    const char* at = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t done = Repeat([&] { return write(m_number, at, std::min(size, kMostAtOnce)); });
        if (done < 0) {
            if (WaitsFor(m_number, POLLOUT)) continue;
            return errno;
        }
        at += done;
        size -= static_cast<size_t>(done);
    }
    return 0;
}

int Descriptor::WriteAt(const void* bytes, size_t size, uint64_t place) const {
    const char* at = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t done = Repeat(
            [&] { return pwrite(m_number, at, std::min(size, kMostAtOnce), static_cast<off_t>(place)); });
        if (done < 0) return errno;
        at += done;
        place += static_cast<uint64_t>(done);
        size -= static_cast<size_t>(done);
    }
    return 0;
}

int Descriptor::Flush() const {
    if (Repeat([&] { return fsync(m_number); }) == 0) return 0;
    return errno == EINVAL || errno == ENOTSUP || errno == EROFS ? 0 : errno;  // a pipe, a device
}

int Descriptor::TakeOver(uint32_t mode, uint32_t owner, uint32_t group) const {
    // The mode comes last: a change of the owner takes rights away. Who isn't allowed to give a file away may
    // still choose among his groups.
    const bool same = fchown(m_number, owner, group) == 0;
    if (!same && fchown(m_number, static_cast<uid_t>(-1), group) != 0) mode &= ~mode_t{S_ISGID};
    if (!same) mode &= ~mode_t{S_ISUID};  // meant for the other owner's identity
    return fchmod(m_number, mode) == 0 ? 0 : errno;
}

int Descriptor::Hold() const {
    // One byte where no file has any, beside those that the codec module locks.
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = std::numeric_limits<off_t>::max() - 0x1FF;
    lock.l_len = 1;
    if (Repeat([&] { return fcntl(m_number, F_OFD_SETLK, &lock); }) == 0) return 0;
    return errno == EACCES ? EAGAIN : errno;
}

int Descriptor::Link(const std::string& path) const {
    const int done = linkat(AT_FDCWD, ReopeningPath().c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW);
    return done == 0 ? 0 : errno;
}

bool Descriptor::IsWritable() const {
    const int flags = fcntl(m_number, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

bool Descriptor::HasName() const {
    struct stat status {};
    return fstat(m_number, &status) == 0 && status.st_nlink != 0;
}

bool Descriptor::IsRegular() const {
    struct stat status {};
    return fstat(m_number, &status) == 0 && S_ISREG(status.st_mode);
}

int Descriptor::Size(uint64_t& bytes) const {
    struct stat status {};
    if (fstat(m_number, &status) != 0) return errno;
    bytes = static_cast<uint64_t>(status.st_size);
    return 0;
}

int Descriptor::Place(uint64_t& place) const {
    const off_t here = lseek(m_number, 0, SEEK_CUR);
    if (here < 0) return errno;
    place = static_cast<uint64_t>(here);
    return 0;
}

int Descriptor::FreeRoom(uint64_t& bytes) const {
    struct statvfs status {};
    if (Repeat([&] { return fstatvfs(m_number, &status); }) != 0) return errno;
    bytes = uint64_t{status.f_bavail} * status.f_frsize;
    return 0;
}

std::string Descriptor::ReopeningPath() const { return "/proc/self/fd/" + std::to_string(m_number); }
