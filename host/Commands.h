// What the program can do, one function for each command, apart from how the command line spells it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "capi/vlwav.hpp"
#include "host/ExitCodes.h"
#include "host/FormatWish.h"

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
};

struct DecodeOptions {
    std::string file;
    std::optional<uint32_t> rate;      // Hz; the source's own where missing
    std::optional<uint32_t> channels;  // likewise
    std::string output = "-";          // a path, "-" is standard output
    bool overwrite = false;
    bool partial = false;  // of a file that ends early what is there is enough
};

struct FormatsOptions {
    std::string language;  // a tag or a platform language id; English where empty
    bool json = false;
};

struct ConvertOptions {
    std::vector<std::string> files;
    std::string output;  // a file, or a folder, which several files need
    FormatWish wish;
    bool overwrite = false;
    bool partial = false;  // of a file that ends early what is there is enough
    bool lossy = false;    // tags that the output can't keep may change or go
    // Files at once, and threads for long ones; as suits the machine where missing.
    std::optional<uint32_t> jobs;
    std::vector<std::string> sets;  // "NAME=VALUE"
};

struct TagOptions {
    std::vector<std::string> files;
    std::vector<std::string> sets;    // "NAME=VALUE"
    std::vector<std::string> clears;  // names
    bool lossy = false;               // tags that the file can't keep may change
    bool json = false;
};

struct RegistryOptions {
    bool system = false;  // the registry of all users, instead of the user's own
};

// All commands throw a UsageFailure for options that make no sense, before anything is touched, and an
// OutputFailure when standard output fails.

struct PictureOptions {
    std::string file;
    std::string format;  // "jpg", "bmp"; empty: as it is
    std::string output;  // a path, "-" is standard output
    bool overwrite = false;
};

// Tells each file's format and length on standard output; goes on after a file that fails.
ExitCode RunInfo(const vlw::Module& module, const InfoOptions& options);
// Enter the module into the registry, or take out the one that is there. Throw Failure where that
// can't be written.
ExitCode RunRegister(const vlw::Module& module, const RegistryOptions& options);
ExitCode RunUnregister(const vlw::Module& module, const RegistryOptions& options);
// Tells which module the other commands take.
ExitCode RunWhere(const vlw::Module& module);
// Writes the file's audio as raw signed 16-bit little-endian PCM.
ExitCode RunDecode(const vlw::Module& module, const DecodeOptions& options);
// Lists the formats that can be written.
ExitCode RunFormats(const vlw::Module& module, const FormatsOptions& options);
// Makes WAV files of stock formats, several at once; a line on standard output for each. Goes on after a
// file that fails.
ExitCode RunConvert(const vlw::Module& module, const ConvertOptions& options);
// Changes tags where changes are given, and shows them. Goes on after a file that fails.
ExitCode RunTag(const vlw::Module& module, const TagOptions& options);
// Takes an image file through a metadata object and writes the bytes that a host gets from it.
ExitCode RunPicture(const vlw::Module& module, const PictureOptions& options);
