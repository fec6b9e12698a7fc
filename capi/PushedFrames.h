// A stream for the module's reader whose audio is pushed in from the other side: a head that promises audio
// without an end, and then what was pushed. What isn't there yet reads as the end, so it is asked only when
// there is enough. 16-bit frames; one thread at a time.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/com/Stream.h"

class PushedFrames final : public vlacwav3::IStream {
public:
    PushedFrames(uint32_t channels, uint32_t rate);
    ~PushedFrames() = default;

    void Push(const int16_t* samples, size_t frames);
    size_t Frames() const { return (m_samples.size() - m_used) / m_channels; }  // pushed and not yet read
    // As the head tells it.
    static constexpr uint32_t kPromisedBytes = 0xFFFFFF00;

    int32_t Read(void* buffer, uint32_t size, uint32_t* done) override;
    int32_t Seek(LARGE_INTEGER move, uint32_t origin, ULARGE_INTEGER* position) override;

    // The module calls nothing of these. Its owner keeps the stream, so references aren't counted.
    int32_t QueryInterface(const GUID& iid, void** object) override;
    uint32_t AddRef() override { return 1; }
    uint32_t Release() override { return 1; }
    int32_t Write(const void* buffer, uint32_t size, uint32_t* done) override;
    int32_t SetSize(ULARGE_INTEGER size) override;
    int32_t CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* read,
                   ULARGE_INTEGER* written) override;
    int32_t Commit(uint32_t flags) override;
    int32_t Revert() override;
    int32_t LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, uint32_t type) override;
    int32_t UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, uint32_t type) override;
    int32_t Stat(STATSTG* status, uint32_t flags) override;
    int32_t Clone(IStream** copy) override;

private:
    size_t m_channels;
    std::vector<uint8_t> m_head;
    uint64_t m_place = 0;  // in bytes, as the module knows it
    std::vector<int16_t> m_samples;
    size_t m_used = 0;  // samples of it that were read
};
