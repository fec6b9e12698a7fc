// Runs command lines as a user would, in a folder of the test's own that goes with it.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

struct RunResult {
    int exitCode = -1;  // 128 + number for a signal, as a shell tells it
    std::string out;
    std::string err;
};

class ShellTest : public testing::Test {
protected:
    void SetUp() override {
        setenv("VELTO_REGISTRY", (m_folder / ".registry").c_str(), 1);  // never the user's own
    }

    // Runs the line by the shell inside the folder; redirections of the line win over the capture.
    RunResult Run(const std::string& line) const {
        const std::string out = (m_folder / ".out").string();
        const std::string err = (m_folder / ".err").string();
        const std::string whole =
            "cd '" + m_folder.string() + "' && { " + line + "\n} >'" + out + "' 2>'" + err + "' </dev/null";
        const int status = std::system(whole.c_str());  // NOLINT(bugprone-command-processor)
        RunResult result{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), Bytes(".out"),
                         Bytes(".err")};
        std::filesystem::remove(out);
        std::filesystem::remove(err);
        return result;
    }
    std::string Bytes(const std::string& name) const { return FileContents(m_folder / name); }
    // What lies in the folder, and in those below it.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder))
            names.push_back(entry.path().lexically_relative(m_folder).string());
        std::sort(names.begin(), names.end());
        return names;
    }

    void WriteBytes(const std::string& name, std::string_view bytes) const {
        std::ofstream(m_folder / name, std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    void WriteImage(const std::string& name, const WavImage& image) const { WriteBytes(name, image.Text()); }
    // A PCM file of a saw wave with `frames` frames; returns its audio bytes.
    std::string WriteWav(const std::string& name, uint16_t channels, uint32_t rate, uint16_t bits,
                         uint32_t frames) const {
        std::string audio;
        const uint32_t size = frames * channels * bits / 8;
        for (uint32_t i = 0; i < size; ++i) audio += static_cast<char>(i * 7 % 251);
        WriteImage(name, WavImage().Fmt(1, channels, rate, bits).Chunk("data", audio));
        return audio;
    }

    const TempFolder m_temp;
    const std::filesystem::path m_folder = m_temp.Path();
};
