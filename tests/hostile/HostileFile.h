// Files as someone makes them who wants a reader to crash, to wait or to take all memory: small, or a million
// of something. One table for each kind; each row makes its file when it is asked.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

struct HostileFile {
    std::string name;
    std::string extension;  // with its dot
    std::function<std::string()> make;
    size_t kept = 0;    // bytes that reading it may keep on top: tags, pixels
    double slower = 1;  // times the time of others
};
using HostileFiles = std::vector<HostileFile>;

constexpr size_t kAll = 1'000'000;
// `many`: how many of what can be counted; below kAll heads aren't cut at every byte. One call of each in a
// program.
HostileFiles HostileWaves(size_t many);
HostileFiles HostileAiffs(size_t many);
HostileFiles HostilePictures(size_t many);
