// Makes the system's pread, pwrite, ftruncate, fsync and fcntl behave as they may and seldom do: interrupted
// calls, short counts, errors, delays. The definitions in this program come before the C library's, for
// libvlplatform too.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// A change of a file, as the system was asked for it.
struct FileChange {
    enum class Kind { Write, Cut, Flush } kind;
    uint64_t place;     // of the write; where the file is cut
    std::string bytes;  // that are written
};

struct SystemFaults {
    int interruptions = 0;        // calls that fail with EINTR first, before each call that goes through
    size_t longest = ~size_t{0};  // bytes that one call moves at most
    int callsUntilError = -1;     // calls that go through before `error`; -1: no error
    int changesUntilError = -1;   // likewise, but of pwrite, ftruncate and fsync alone; that one is torn
    bool lasting = false;         // those after it fail too, as if the process had died
    int slowLocks = 0;            // calls of fcntl that take a millisecond, so that racers meet
    bool flushes = true;          // fsync reaches the system; a test of many saves would wait for the medium
    int error = 0;
    std::vector<FileChange>* recorded = nullptr;  // gets all changes that go through, in their order
};

// Holds for the calling thread until the object ends.
class WithFaults {
public:
    explicit WithFaults(const SystemFaults& faults);
    WithFaults(const WithFaults&) = delete;
    WithFaults& operator=(const WithFaults&) = delete;
    ~WithFaults();

    // So that a test knows that it tested something.
    int CallsSeen() const;      // pread and pwrite
    int ChangesSeen() const;    // pwrite, ftruncate and fsync
    size_t BytesMoved() const;  // read or written
    size_t BytesWritten() const;
};

// Makes pread fail in all threads of the process after so many calls, until the object ends.
class WithReadErrors {
public:
    explicit WithReadErrors(int calls);
    WithReadErrors(const WithReadErrors&) = delete;
    WithReadErrors& operator=(const WithReadErrors&) = delete;
    ~WithReadErrors();
};
