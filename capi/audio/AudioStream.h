// A source as the module reads it: a clean head, and after it a window of the input's audio. So the module
// never meets a size that lies, and begins wherever a frame or a block does. Reads come whole; a failure of
// the input is kept here, since the module tells it as an end. Called on the module's threads too, one at a
// time.
#pragma once

#include <atomic>
#include <exception>
#include <mutex>
#include <optional>
#include <vector>

#include "capi/audio/ReadOnlyStream.h"
#include "capi/input/Input.h"
#include "capi/input/SourceFacts.h"

class AudioStream final : public ReadOnlyStream {
public:
    // Both are borrowed. Of a read that a failure cuts short, whole frames of `frameBytes` are given.
    AudioStream(Input& input, const SourceFacts& facts, uint32_t frameBytes);

    // The audio begins at this byte of it from now on, and the stream is read from its start, without a
    // failure. Nobody may be reading.
    void ShowFrom(uint64_t audioByte);

    // As if there were no audio yet, for who walks over all chunks before he reads.
    void HideAudio(bool hidden) { m_isHidden = hidden; }

    // Whether the input failed. All reads of audio fail from then on, until it is thrown.
    bool HasFailed() const;
    // Throws what failed since the last call, and forgets it.
    void ThrowFailure();
    // Where the last read of audio ended, in bytes from the audio's start.
    uint64_t BytesSeen() const { return m_seen; }

    int32_t Read(void* buffer, uint32_t size, uint32_t* done) override;

private:
    uint64_t SizeOfStream() const override;
    void KeepFailure();
    uint32_t ReadHead(uint8_t* buffer, uint32_t size);
    uint32_t ReadAudio(uint8_t* buffer, uint32_t size);
    size_t ReadAhead(uint64_t at, uint8_t* buffer, size_t size);

    Input& m_input;
    const SourceFacts& m_facts;
    const uint32_t m_frameBytes;
    std::vector<uint8_t> m_head;
    bool m_isHidden = false;
    uint64_t m_windowAt = 0;       // audio bytes before the window
    std::vector<uint8_t> m_block;  // read ahead
    uint64_t m_blockAt = 0;
    size_t m_blockBytes = 0;
    std::atomic<uint64_t> m_seen = 0;
    mutable std::mutex m_failureLock;
    std::exception_ptr m_failure;
};
