// One audio file, open in a reader of the module, with the module's codes turned into Failures.
// Reads and lengths are in frames of the output format, which begins as the source's own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/wave/IAC3StreamReader.h"
#include "host/Module.h"

// What can be told of the audio.
struct SourceFormat {
    bool direct = false;    // the module reads the file itself; else a graph decodes it to 16-bit PCM
    uint32_t channels = 0;  // of the source; of the decoded audio where a graph is in between
    uint32_t rate = 0;      // frames per second, likewise
    uint32_t bits = 0;      // of a source sample; 0 where a graph hides it
};

// Whether the module can turn so many channels into so many others.
constexpr bool CanMix(uint32_t from, uint32_t to) { return from == to || from == 1 || to == 1; }

class Source {
public:
    // Opens the file for reading alone. The path is any bytes that the system takes. Throws Failure.
    Source(const Module& module, const std::string& path);

    const SourceFormat& Format() const { return m_format; }
    // The file's metadata, a new object each time.
    RefPtr<IAC3Metadata> Metadata() const;
    // Throws a Failure for channel counts that the module can't turn into one another.
    void SetOutput(uint32_t channels, uint32_t rate);
    // What the file's header promises; of decoded audio the whole seconds alone.
    int64_t Length() const;
    // The exact length. What is decoded is read to its end for it.
    int64_t CountFrames();
    // Fills at most the buffer; returns the frames read. Only 0 is the end.
    uint32_t Read(std::vector<int16_t>& buffer);

private:
    void ReadFormat(const std::string& path);

    RefPtr<IAC3StreamReader> m_reader;
    SourceFormat m_format;
    uint32_t m_outChannels = 0;
};
