// A descriptor of the system, owned, and the only place of the library that reads and writes through one:
// interrupted calls are repeated. Operations return an errno, 0 for success.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

class Descriptor {
public:
    Descriptor() = default;
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor();

    explicit operator bool() const { return m_number >= 0; }

    // Each of these makes a new descriptor, which no program that is started gets, in place of what was held.
    // For reading; waits for the writer of a FIFO. EISDIR for a folder. `size`: bytes of a regular file; 0
    // for what has none.
    int Open(const std::string& path, uint64_t& size);
    int Duplicate(int number);                    // of one that stays its owner's, with one place for both
    int OpenForWriting(const std::string& path);  // what is there; waits for the reader of a FIFO
    int MakeInMemory();                           // an empty file that no path leads to
    // An empty file in a folder, which has no name and so is gone with its descriptors; `mode` less the
    // process's mask. Refused where the file system has none, and where ReopeningPath leads nowhere.
    int MakeNameless(const std::string& folder, uint32_t mode);
    int MakeNew(const std::string& path, uint32_t mode);  // EEXIST where there is one
    int OpenLeftover(const std::string& path);            // a regular file itself, for Hold

    // Reads at a place and leaves the descriptor's own alone; fewer bytes in `done` are the end. After an
    // error `done` is what came.
    int ReadAt(void* buffer, size_t size, uint64_t place, size_t& done) const;
    // Reads what there is next, at least one byte; 0 in `done` is the end.
    int ReadNext(void* buffer, size_t size, size_t& done) const;
    // Writes all of it at the descriptor's own place, which waits until a pipe has room.
    int Write(const void* bytes, size_t size) const;
    // Writes all of it at a place of a regular file, and leaves the descriptor's own alone.
    int WriteAt(const void* bytes, size_t size, uint64_t place) const;
    // Brings the bytes to the disk; nothing to do for what isn't kept there.
    int Flush() const;
    // Gives a file the mode and as far as the system lets us the owner of another.
    int TakeOver(uint32_t mode, uint32_t owner, uint32_t group) const;
    // Keeps the file for as long as it is open here; EAGAIN where another process, or another opening, has
    // it.
    int Hold() const;
    // Gives a file, also a nameless one, a name that is new. EEXIST where there is one.
    int Link(const std::string& path) const;

    bool IsWritable() const;
    bool HasName() const;
    // Whether it has places and a size.
    bool IsRegular() const;
    int Size(uint64_t& bytes) const;
    int Place(uint64_t& place) const;
    int FreeRoom(uint64_t& bytes) const;  // of the file system that it is in
    // A path under which the system opens this very file anew, also one that has no name any more.
    std::string ReopeningPath() const;

private:
    int Take(int number);

    int m_number = -1;
};
