// What of ours stands on packages that needn't be installed: each such library is loaded when it is first
// needed, and where that fails, people are told what to install. Loads none for its work.
//
// Decisions: the packages have Debian 12's names, since the system's own words name a file that is in none by
// that name.
#pragma once

#include <string>

struct OptionalLibrary {
    const char* file;
    const char* packages;  // those that need all others
};
inline constexpr OptionalLibrary kDecoderLibrary = {"libvlmedia.so", "the package libavformat59"};
inline constexpr OptionalLibrary kId3Library = {"libvlid3.so", "the package libtag1v5"};
inline constexpr OptionalLibrary kImageLibrary = {"libvlimage.so",
                                                  "the packages libjpeg62-turbo, libpng16-16 and libgif7"};

// What the library at `path` lacks, as the end of a sentence with its full stop, for a `reason` of the
// system's loader. Throws std::bad_alloc where the reason is want of memory, for which the loader has no
// number.
std::string WhatIsMissing(const OptionalLibrary& library, const std::string& reason);

// The same after a trial to load it; empty where it can be loaded, so that something else must be wrong.
std::string TryOptionalLibrary(const OptionalLibrary& library, const std::string& path);
