// What the program can do, one function for each command, apart from how the command line spells it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/ExitCodes.h"
#include "host/Module.h"

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
};

struct DecodeOptions {
    std::string file;
    std::optional<uint32_t> rate;      // Hz; the source's own where missing
    std::optional<uint32_t> channels;  // likewise
    std::string output = "-";          // a path, "-" is standard output
};

struct PictureOptions {
    std::string file;
    std::string format;  // "jpg", "bmp"; empty: as it is
    std::string output;  // a path, "-" is standard output
};

// Tells each file's format and length on standard output; goes on behind a file that fails.
ExitCode RunInfo(const Module& module, const InfoOptions& options);
// Writes the file's audio as raw signed 16-bit little-endian PCM.
ExitCode RunDecode(const Module& module, const DecodeOptions& options);
// Takes an image file through a metadata object and writes the bytes that a host gets from it.
ExitCode RunPicture(const Module& module, const PictureOptions& options);
