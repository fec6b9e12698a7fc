// Drives the real program with the real module beside it.
#pragma once

#include <nlohmann/json.hpp>

#include "tests/host/Shell.h"

class VlwavTest : public ShellTest {
protected:
    using json = nlohmann::json;

    RunResult Vlwav(const std::string& arguments) const { return Run("'" VLWAV_PATH "' " + arguments); }
    json Json(const std::string& arguments) const { return json::parse(Vlwav(arguments + " --json").out); }
    // One entry of a file's "vltg" chunk; the value is ASCII.
    static std::string TagEntry(const std::string& name, const std::string& value) {
        std::string bytes = name + "=\xFF\xFE";
        for (const char c : value + '\0') bytes += {c, '\0'};
        return bytes;
    }
};
