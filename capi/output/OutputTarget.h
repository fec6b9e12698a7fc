// Where a finished file goes. Up to Commit there is nothing of it there, and without Commit there never is.
// Operations return an errno, 0 for success. One thread at a time.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "capi/output/OutputFile.h"

class OutputTarget {
public:
    virtual ~OutputTarget() = default;

    // What is being written.
    const OutputFile& File() const { return m_file; }
    // Hands the file over, which is written and closed by now. Once.
    virtual int Commit() = 0;

protected:
    OutputFile m_file;
};

// A file that stays in memory, for who asks File() for its bytes.
class MemoryTarget final : public OutputTarget {
public:
    int Open(const std::string& folderElse) { return m_file.MakeInMemory(folderElse); }
    int Commit() override { return 0; }
};

// Takes all of the bytes, or returns an errno.
using ByteTaker = std::function<int(const void* bytes, size_t size)>;

// Bytes for someone who takes them in order, all of them at the end.
class OrderedTarget final : public OutputTarget {
public:
    // `flusher` is called after the last byte; it may be empty.
    OrderedTarget(ByteTaker taker, std::function<int()> flusher)
        : m_taker(std::move(taker)), m_flusher(std::move(flusher)) {}
    int Open(const std::string& folder);
    int Commit() override;

private:
    ByteTaker m_taker;
    std::function<int()> m_flusher;
};
