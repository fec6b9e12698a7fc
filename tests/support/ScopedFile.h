// Files and folders of a test's own in the temporary folder, gone with their objects; and what other files
// hold.
#pragma once

#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

// All that a file holds; nothing if it can't be read.
template <class Bytes = std::string>
Bytes FileContents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
// Whether a library, by a part of its path, is in the memory of this process.
inline bool IsMapped(std::string_view library) {
    return FileContents("/proc/self/maps").find(library) != std::string::npos;
}

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
    std::vector<uint8_t> Bytes() const { return FileContents<std::vector<uint8_t>>(m_path); }
    std::filesystem::path Path() const { return m_path; }
    std::u16string Wide() const { return m_path.u16string(); }

private:
    std::filesystem::path m_path;
};

// With all that is in it.
class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "vlplatform-XXXXXX").string();
        m_path = mkdtemp(pattern.data());
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string Native(const std::string& name) const { return m_path + "/" + name; }
    std::u16string Wide(const std::string& name) const { return (Path() / name).u16string(); }
    std::filesystem::path Path() const { return m_path; }

private:
    std::string m_path;
};
