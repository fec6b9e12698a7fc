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

// Tells each file's format and length on standard output; goes on behind a file that fails.
ExitCode RunInfo(const Module& module, const InfoOptions& options);
// Enter the module into the registry, or take out the one that is there. Throw Failure where that can't be
// written.
ExitCode RunRegister(const Module& module);
ExitCode RunUnregister(const Module& module);
// Tells which module the other commands take.
ExitCode RunWhere(const Module& module);
// Writes the file's audio as raw signed 16-bit little-endian PCM.
ExitCode RunDecode(const Module& module, const DecodeOptions& options);
