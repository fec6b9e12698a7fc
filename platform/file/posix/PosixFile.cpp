#include "platform/file/posix/PosixFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "platform/base/posix/CancellationOff.h"

namespace {

// No thread is cancelled in the middle: what was opened would stay open, and what is closed is often closed
// by a destructor, which lets nothing through.
template <class Call>
auto Repeat(Call call) {
    const CancellationOff off;
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

int Answer(int result) { return result < 0 ? errno : 0; }

// Pipes and sockets have no places to read at, and a block device is somebody's whole disk.
int CheckKind(mode_t mode) {
    if (S_ISREG(mode) || S_ISCHR(mode)) return 0;
    return S_ISDIR(mode) ? EISDIR : EOPNOTSUPP;
}

// What each creation tries in turn, for as long as it meets "there is none" or "there is one". Opening and
// creating are told apart so that a new file is known as such; the last try is for a link that leads nowhere.
struct CreationSteps {
    Creation creation;
    int count;
    int flags[4];
};
constexpr CreationSteps kCreationSteps[] = {
    {Creation::Never, 1, {0}},
    {Creation::MustBeNew, 1, {O_CREAT | O_EXCL}},
    {Creation::IfMissing, 4, {0, O_CREAT | O_EXCL, 0, O_CREAT}},
};

int OpenFlags(const std::string& path, int flags) {
    constexpr mode_t kNewFileMode = 0666;  // less the umask
    return Repeat(
        [&] { return open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, kNewFileMode); });
}

struct flock ByteLock(int type, int64_t byte) {
    struct flock lock = {};  // l_pid must be 0 for locks of the open file description
    lock.l_type = static_cast<short>(type);
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    return lock;
}

// `call` moves the bytes after the first `done` ones. A call that moves none ends it with `onNothing`: for a
// read that is the end of the file, but a write would be repeated for ever.
template <class Call>
int MoveAll(size_t size, size_t& done, int onNothing, Call call) {
    done = 0;
    while (done < size) {
        // A short count is no failure: the system may stop anywhere, at a signal or where a disk is full. The
        // next call tells which it was.
        const ssize_t moved = Repeat([&] { return call(done); });
        if (moved < 0) return errno;
        if (moved == 0) return onNothing;
        done += static_cast<size_t>(moved);
    }
    return 0;
}

}  // namespace

PosixFile::~PosixFile() {
    // A child of this process may hold the open file too, and with it the locks.
    if (m_lockedBy == getpid()) UnlockAll();
    const CancellationOff off;
    if (m_descriptor >= 0) close(m_descriptor);  // never repeated: the descriptor is gone after EINTR too
}

int PosixFile::Open(const std::string& path, const OpenMode& mode) {
    if (mode.creation == Creation::Nameless) return OpenNameless(path);
    // Before opening, since to open a pipe already wakes whoever waits at its other end.
    struct stat status = {};
    if (mode.creation != Creation::MustBeNew && stat(path.c_str(), &status) == 0)
        if (const int error = CheckKind(status.st_mode)) return error;

    bool created = false;
    if (const int error = OpenDescriptor(path, mode, created)) return error;
    // Asked of what was opened: the name may have got another file since the first look.
    return CheckOpened(mode.write, created);
}

int PosixFile::OpenDescriptor(const std::string& path, const OpenMode& mode, bool& created) {
    const auto tryAll = [&](int access) {
        for (const CreationSteps& steps : kCreationSteps) {
            if (steps.creation != mode.creation) continue;
            for (int i = 0; i < steps.count && m_descriptor < 0; ++i) {
                created = (steps.flags[i] & O_CREAT) != 0;
                // ENOENT and EEXIST alone go on to the next try: between two tries another process may have
                // made the file or removed it.
                m_descriptor = OpenFlags(path, access | steps.flags[i]);
                if (m_descriptor < 0 && errno != ENOENT && errno != EEXIST) break;
            }
        }
        return m_descriptor < 0 ? errno : 0;
    };
    // For writing alone too: share modes need a descriptor that may be read.
    int error = tryAll(mode.write ? O_RDWR : O_RDONLY);
    if (error == EACCES && mode.write && !mode.read) {
        m_readable = false;
        error = tryAll(O_WRONLY);
    }
    return error;
}

int PosixFile::OpenNameless(const std::string& path) {
    constexpr mode_t kOwnerAlone = 0600;
    // O_EXCL here: nobody can ever give the file a name.
    const std::string folder = path.substr(0, path.find_last_of('/') + 1) + ".";
    m_descriptor =
        Repeat([&] { return open(folder.c_str(), O_TMPFILE | O_EXCL | O_RDWR | O_CLOEXEC, kOwnerAlone); });
    if (m_descriptor >= 0) return 0;
    if (errno != EOPNOTSUPP && errno != EISDIR) return errno;
    // The file system knows no such files: a name that nobody can foresee, for a moment.
    std::string name = path + "-XXXXXX";
    m_descriptor = mkostemp(name.data(), O_CLOEXEC);
    return m_descriptor < 0 ? errno : Answer(unlink(name.c_str()));
}

int PosixFile::CheckOpened(bool write, bool created) const {
    struct stat status = {};
    if (fstat(m_descriptor, &status) < 0) return errno;
    if (const int error = CheckKind(status.st_mode)) return error;
    // A user with all rights could write to it. But the answer mustn't depend on who asks.
    constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    if (write && !created && (status.st_mode & kAnyWrite) == 0) return EACCES;
    // O_NONBLOCK was for the opening; a device then waits as devices do.
    const int flags = fcntl(m_descriptor, F_GETFL);
    return flags < 0 ? errno : Answer(fcntl(m_descriptor, F_SETFL, flags & ~O_NONBLOCK));
}

int PosixFile::ReadAt(void* buffer, size_t size, int64_t place, size_t& done) const {
    return MoveAll(size, done, 0, [&](size_t from) {
        return pread(m_descriptor, static_cast<char*>(buffer) + from, size - from,
                     place + static_cast<int64_t>(from));
    });
}

int PosixFile::WriteAt(const void* buffer, size_t size, int64_t place, size_t& done) const {
    return MoveAll(size, done, EIO, [&](size_t from) {
        return pwrite(m_descriptor, static_cast<const char*>(buffer) + from, size - from,
                      place + static_cast<int64_t>(from));
    });
}

int PosixFile::CreateTemporary(std::string& path, int suffix) {
    const CancellationOff off;
    const int descriptor = mkostemps(path.data(), suffix, O_CLOEXEC);
    if (descriptor < 0) return errno;
    close(descriptor);
    return 0;
}

int PosixFile::Remove(const std::string& path) { return Answer(unlink(path.c_str())); }

int PosixFile::Size(int64_t& size) const {
    struct stat status = {};
    if (fstat(m_descriptor, &status) < 0) return errno;
    size = status.st_size;
    return 0;
}

int PosixFile::Resize(int64_t size) const {
    return Answer(Repeat([&] { return ftruncate(m_descriptor, size); }));
}

int PosixFile::Flush() const {
    const int error = Answer(Repeat([&] { return fsync(m_descriptor); }));
    return error == EINVAL ? 0 : error;  // a device that keeps nothing back
}

bool PosixFile::IsRegular() const {
    struct stat status = {};
    return fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

int PosixFile::Duplicate(PosixFile& other) const {
    other.m_descriptor = fcntl(m_descriptor, F_DUPFD_CLOEXEC, 0);
    other.m_readable = m_readable;
    return other.m_descriptor < 0 ? errno : 0;
}

int PosixFile::Reserve(int64_t size) const {
    int error = 0;
    // This one returns its error and leaves errno alone. A file that was merely made longer would have holes,
    // and writing into their memory on a full disk kills the process.
    do error = posix_fallocate(m_descriptor, 0, size);
    while (error == EINTR);
    return error;
}

int PosixFile::Map(size_t size, void*& view) const {
    void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, m_descriptor, 0);
    if (memory == MAP_FAILED) return errno;
    view = memory;
    return 0;
}

void PosixFile::Unmap(void* view, size_t size) { munmap(view, size); }

int PosixFile::Lock(int64_t byte) const {
    m_lockedBy = getpid();
    // Locks of the open file: those of a process would go as soon as it closes any descriptor of the file.
    struct flock lock = ByteLock(m_readable ? F_RDLCK : F_WRLCK, byte);
    const int error = Answer(Repeat([&] { return fcntl(m_descriptor, F_OFD_SETLK, &lock); }));
    // The two stand for the same, and a system may choose.
    return error == EACCES ? EAGAIN : error;
}

void PosixFile::Unlock(int64_t byte) const {
    struct flock lock = ByteLock(F_UNLCK, byte);
    Repeat([&] { return fcntl(m_descriptor, F_OFD_SETLK, &lock); });
}

void PosixFile::UnlockAll() const {
    struct flock locks = ByteLock(F_UNLCK, 0);
    locks.l_len = 0;  // to the end
    Repeat([&] { return fcntl(m_descriptor, F_OFD_SETLK, &locks); });
}

int PosixFile::IsLockedByOther(int64_t byte, bool& locked) const {
    // Asked as if for a lock that goes with no other, so that shared ones are found too.
    struct flock lock = ByteLock(F_WRLCK, byte);
    const int error = Answer(Repeat([&] { return fcntl(m_descriptor, F_OFD_GETLK, &lock); }));
    locked = error == 0 && lock.l_type != F_UNLCK;
    return error;
}
