// A caller's stream over bytes in memory, which can be told to misbehave.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "platform/base/Types.h"
#include "platform/com/Stream.h"

class ByteStream : public IStream {
public:
    explicit ByteStream(std::vector<uint8_t> bytes) : m_bytes(std::move(bytes)) {}
    virtual ~ByteStream() = default;

    // Calls of Read and Seek are counted from 0; the one of this number and all after it fail.
    uint64_t failFromCall = std::numeric_limits<uint64_t>::max();
    // The call of this number reads one byte less than it could.
    uint64_t shortCall = std::numeric_limits<uint64_t>::max();
    // The call of this number reads nothing, with success.
    uint64_t emptyCall = std::numeric_limits<uint64_t>::max();
    uint64_t calls = 0;
    uint64_t position = 0;

    HRESULT QueryInterface(const GUID&, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    uint32_t AddRef() override { return 2; }
    uint32_t Release() override { return 1; }

    HRESULT Read(void* buffer, uint32_t size, uint32_t* done) override {
        const uint64_t call = calls++;
        *done = 0;
        if (call >= failFromCall) return E_FAIL;
        const uint64_t left = position < m_bytes.size() ? m_bytes.size() - position : 0;
        auto count = static_cast<uint32_t>(std::min<uint64_t>(size, left));
        if (call == shortCall && count > 0) --count;
        if (call == emptyCall) count = 0;
        if (count > 0) std::memcpy(buffer, m_bytes.data() + position, count);
        position += count;
        *done = count;
        return S_OK;
    }
    HRESULT Seek(LARGE_INTEGER move, uint32_t origin, ULARGE_INTEGER* reached) override {
        if (calls++ >= failFromCall) return E_FAIL;
        const uint64_t base = origin == STREAM_SEEK_SET   ? 0
                              : origin == STREAM_SEEK_CUR ? position
                                                          : m_bytes.size();
        position = base + static_cast<uint64_t>(move.QuadPart);
        if (reached) reached->QuadPart = position;
        return S_OK;
    }

    // The module reads and seeks and calls nothing else.
    HRESULT Write(const void*, uint32_t, uint32_t*) override { return E_FAIL; }
    HRESULT SetSize(ULARGE_INTEGER) override { return E_FAIL; }
    HRESULT CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override { return E_FAIL; }
    HRESULT Commit(uint32_t) override { return E_FAIL; }
    HRESULT Revert() override { return E_FAIL; }
    HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, uint32_t) override { return E_FAIL; }
    HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, uint32_t) override { return E_FAIL; }
    HRESULT Stat(STATSTG*, uint32_t) override { return E_FAIL; }
    HRESULT Clone(IStream**) override { return E_FAIL; }

private:
    std::vector<uint8_t> m_bytes;
};
