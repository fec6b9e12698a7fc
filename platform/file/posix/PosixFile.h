// One open file of the system, and the only place that calls it: interrupted calls are repeated, short counts
// completed. Operations answer an errno, 0 for success. Knows no place, no share mode and no last error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

// Nameless: a new file in the folder of the path that no path leads to, so that it goes with its last user,
// however that ends. What lies at the path is neither looked at nor touched.
enum class Creation { Never, IfMissing, MustBeNew, Nameless };

struct OpenMode {
    bool read = false;
    bool write = false;
    Creation creation = Creation::Never;
};

class PosixFile {
public:
    PosixFile() = default;
    PosixFile(PosixFile&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1)),
          m_readable(other.m_readable),
          m_lockedBy(std::exchange(other.m_lockedBy, 0)) {}
    PosixFile& operator=(PosixFile&&) = delete;
    ~PosixFile();

    // Opens a regular file or a character device, and nothing else: EISDIR for a folder, pipes, sockets and
    // block devices EOPNOTSUPP, without waiting for anyone. A file that has no write permission bit and is
    // not new returns EACCES for writing, whoever asks. Never empties a file. Once for an object.
    int Open(const std::string& path, const OpenMode& mode);

    // Reads up to `size` bytes; fewer in `done` mean the end of the file. After an error `done` is what came.
    int ReadAt(void* buffer, size_t size, int64_t place, size_t& done) const;
    // Writes `size` bytes. After an error `done` is what reached the file.
    int WriteAt(const void* buffer, size_t size, int64_t place, size_t& done) const;

    // Makes a file that only its owner may read and write, under a name that nothing has yet. The six X in
    // front of the last `suffix` bytes of the path are replaced.
    static int CreateTemporary(std::string& path, int suffix);
    static int Remove(const std::string& path);

    int Size(int64_t& size) const;
    int Resize(int64_t size) const;
    int Flush() const;

    bool IsRegular() const;  // not a device

    // Another owner of the same open file.
    int Duplicate(PosixFile& other) const;
    // Makes the file at least `size` bytes long, with room on the medium for all of them, so that memory that
    // shows them can be written.
    int Reserve(int64_t size) const;
    // Shows the first `size` bytes in memory, for reading and writing, shared with all who map the file.
    int Map(size_t size, void*& view) const;
    static void Unmap(void* view, size_t size);

    // Shared locks on single bytes, seen by every other open file of any process and gone with this object,
    // though not with its copy in a child of the process.
    // EAGAIN if the lock can't be had.
    int Lock(int64_t byte) const;
    void Unlock(int64_t byte) const;
    int IsLockedByOther(int64_t byte, bool& locked) const;

private:
    int OpenDescriptor(const std::string& path, const OpenMode& mode, bool& created);
    int OpenNameless(const std::string& path);
    int CheckOpened(bool write, bool created) const;
    void UnlockAll() const;

    int m_descriptor = -1;
    bool m_readable = true;          // a shared lock needs a descriptor that may be read
    mutable int64_t m_lockedBy = 0;  // the process that took a lock; 0: none
};
