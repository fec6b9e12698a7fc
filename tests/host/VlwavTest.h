// Drives the real program with the real module beside it.
#pragma once

#include <nlohmann/json.hpp>

#include "tests/host/Shell.h"

class VlwavTest : public ShellTest {
protected:
    using json = nlohmann::json;

    RunResult Vlwav(const std::string& arguments) const { return Run("'" VLWAV_PATH "' " + arguments); }
    json Json(const std::string& arguments) const { return json::parse(Vlwav(arguments + " --json").out); }
    // How a run ended, and what it told of it on standard error.
    static void ExpectEnd(const RunResult& run, int exitCode, std::string_view told) {
        EXPECT_EQ(run.exitCode, exitCode) << run.err;
        EXPECT_NE(run.err.find(told), std::string::npos) << told << ": " << run.err;
    }
    // One entry of a file's "vltg" chunk; the value is ASCII.
    static std::string TagEntry(const std::string& name, const std::string& value) {
        std::string bytes = name + "=\xFF\xFE";
        for (const char c : value + '\0') bytes += {c, '\0'};
        return bytes;
    }
};
