// A bounded ring of bytes between the thread that decodes and the one that reads. Each waits for the other;
// Close, Shut and flushes end waits. One writer and one reader at a time; the rest from any thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "platform/base/Types.h"

class Ring {
public:
    explicit Ring(size_t capacity /*bytes*/) : m_capacity(capacity) {}

    // Empty, and ready. Throws std::bad_alloc.
    void Open();
    // No byte passes any more until it is opened.
    void Close();
    // Nor ever again.
    void Shut();

    // Drops what is in it and takes no more until the end; a Read that waits starts again with
    // what comes then.
    void BeginFlush();
    void EndFlush();

    // Puts all of the bytes in, waiting for room. S_FALSE: they aren't wanted, by a flush or for ever.
    // VFW_E_WRONG_STATE: closed.
    HRESULT Write(std::span<const uint8_t> bytes);
    // No more bytes come, until a flush or Open: S_FALSE for the end of the stream, or why it broke off.
    void End(HRESULT reason);

    // Waits until `size` bytes have been taken out. Fewer come before the end, with S_FALSE, and before a
    // failure, which is then told for every further byte. VFW_E_WRONG_STATE: closed.
    HRESULT Read(uint8_t* buffer, uint32_t size, uint32_t& done);

    // Bytes taken out since Open or the last flush.
    uint64_t Taken() const;

private:
    bool IsClosed() const { return !m_open || m_shut; }
    size_t Room() const { return m_capacity - m_count; }
    void Await(std::unique_lock<std::mutex>& lock, size_t bytes);
    size_t Put(std::span<const uint8_t> bytes);
    size_t Take(uint8_t* buffer, size_t size);
    void Clear();

    const size_t m_capacity;
    mutable std::mutex m_lock;           // guards all below
    std::condition_variable m_changed;   // for the reader
    std::condition_variable m_roomMade;  // for the writer
    std::vector<uint8_t> m_bytes;        // of the capacity, once opened
    size_t m_start = 0;                  // of the bytes that are in it
    size_t m_count = 0;
    size_t m_bytesAwaited = 0;  // by the reader; 0 while it doesn't wait
    size_t m_roomAwaited = 0;   // by the writer
    uint64_t m_taken = 0;
    uint64_t m_flushes = 0;  // so far
    bool m_open = false;
    bool m_shut = false;
    bool m_flushing = false;
    HRESULT m_end = S_OK;  // why no more bytes come; S_OK: they do
};
