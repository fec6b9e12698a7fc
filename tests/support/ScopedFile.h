// A file of a test's own in the temporary folder, gone with the object.
#pragma once

#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

class ScopedFile {
public:
    explicit ScopedFile(const std::string& extension = ".wav") {
        static std::atomic<int> s_count{0};
        m_path = std::filesystem::temp_directory_path() /
                 ("vlwav_test_" + std::to_string(getpid()) + "_" + std::to_string(s_count++) + extension);
        std::filesystem::remove(m_path);
    }
    explicit ScopedFile(const std::vector<uint8_t>& bytes, const std::string& extension = ".wav")
        : ScopedFile(extension) {
        Write(bytes);
    }
    ~ScopedFile() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    ScopedFile(const ScopedFile&) = delete;
    ScopedFile& operator=(const ScopedFile&) = delete;

    void Write(const std::vector<uint8_t>& bytes) const {
        std::ofstream(m_path, std::ios::binary | std::ios::trunc)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    std::vector<uint8_t> Bytes() const {
        std::ifstream file(m_path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::filesystem::path Path() const { return m_path; }
    std::u16string Wide() const { return m_path.u16string(); }

private:
    std::filesystem::path m_path;
};
