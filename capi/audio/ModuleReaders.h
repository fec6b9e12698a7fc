// The readers of the module that a handle works with, made when first needed and kept for all its files.
#pragma once

#include <string>

#include "AudioCodec/wave/IAC3StreamReader.h"
#include "capi/Module.h"

inline constexpr uint32_t kBytesPerSample = 2;  // of what they give

class ModuleReaders {
public:
    // Borrows the module.
    explicit ModuleReaders(const Module& module) : m_module(module) {}

    // Reads streams of plain PCM of 8 and 16 bits. Throws Failure.
    vlacwav3::IAC3StreamReader& Direct();
    // Decodes a stream of any kind. Throws Failure: VLW_NO_DECODER where nothing can be decoded at all.
    vlacwav3::IAC3StreamReader& Decoding();
    // A direct reader for whoever converts.
    RefPtr<vlacwav3::IAC3StreamReader> NewReader() const;

private:
    std::string WhyNoDecoder() const;

    const Module& m_module;
    RefPtr<vlacwav3::IAC3StreamReader> m_direct;
    RefPtr<vlacwav3::IAC3StreamReader> m_decoding;
};
