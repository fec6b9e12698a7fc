// The bytes of a source, wherever they come from: of known size and readable at any place, or in order only
// and of unknown size. Knows nothing of audio. Its owner's thread and one that decodes may read at once; the
// source itself is never asked by two at once.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "capi/FileLabel.h"

class Input {
public:
    virtual ~Input() = default;
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    // Reads up to `count` bytes at a place: at least one, 0 only at the end. Throws Failure where not even
    // one can be had; a later call tries again. In order only: places ascend, but for the last few thousand
    // bytes and those that are kept.
    size_t ReadAt(uint64_t place, void* buffer, size_t count) {
        const std::lock_guard held(m_lock);
        return Get(place, buffer, count);
    }
    // Of an input in order, bytes from this place on may be asked for again, and none before it. Never waits
    // for a read.
    void KeepFrom(uint64_t place) { m_keptFrom = place; }
    // As ReadAt, but fewer than `count` bytes are the end. After a failure nothing of it is told.
    size_t ReadWholeAt(uint64_t place, void* buffer, size_t count);

    // In bytes; nothing for a source that is read in order only.
    std::optional<uint64_t> Size() const { return m_size; }
    bool IsSeekable() const { return m_size.has_value(); }
    const FileLabel& Label() const { return m_label; }

protected:
    Input(std::optional<uint64_t> size, FileLabel label) : m_size(size), m_label(std::move(label)) {}

    uint64_t KeptFrom() const { return m_keptFrom; }

private:
    virtual size_t Get(uint64_t place, void* buffer, size_t count) = 0;

    std::mutex m_lock;
    std::atomic<uint64_t> m_keptFrom = UINT64_MAX;
    const std::optional<uint64_t> m_size;
    const FileLabel m_label;
};
