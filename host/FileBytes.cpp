#include "host/FileBytes.h"

#include <filesystem>

namespace {

uint64_t SizeOf(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return 0;
    const uint64_t size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

}  // namespace

FileBytes::FileBytes(const std::string& path) : BlockSource(SizeOf(path)) {
    m_file.rdbuf()->pubsetbuf(nullptr, 0);  // blocks are read whole
    if (Size() != 0) m_file.open(path, std::ios::binary);
}

size_t FileBytes::ReadAt(uint64_t place, void* buffer, size_t count) {
    m_file.clear();
    m_file.seekg(static_cast<std::streamoff>(place));
    m_file.read(static_cast<char*>(buffer), static_cast<std::streamsize>(count));
    return static_cast<size_t>(m_file.gcount());
}
