// Endings of files' names, in any case of ASCII letters.
#pragma once

#include <filesystem>
#include <span>

// Whether the name ends in one of them, each with its dot.
bool HasEnding(const std::filesystem::path& path, std::span<const char* const> endings);
