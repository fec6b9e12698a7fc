// Reads a WAV file that lies inside another file, through a stream of the program's own:
// own-stream ARCHIVE OFFSET SIZE
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <vlwav.hpp>

namespace {

// A part of a file as a file of its own. What it throws becomes a failure of the reader.
class Part {
public:
    Part(const char* path, std::int64_t start, std::int64_t size) : m_start(start), m_size(size) {
        m_file.exceptions(std::ios::badbit | std::ios::failbit);
        m_file.open(path, std::ios::binary);
    }

    // Bytes got; 0 at the end.
    std::int64_t read(void* buffer, std::size_t bytes) {
        const auto wanted =
            std::min(static_cast<std::int64_t>(bytes), std::max<std::int64_t>(m_size - m_place, 0));
        m_file.seekg(m_start + m_place);
        m_file.read(static_cast<char*>(buffer), wanted);
        m_place += wanted;
        return wanted;
    }
    // The new place. A class without this function gives its bytes in order only.
    std::int64_t seek(std::int64_t offset, int whence) {
        const std::int64_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? m_place : m_size;
        if (offset < -from) return -EINVAL;
        return m_place = from + offset;
    }

private:
    std::ifstream m_file;
    std::int64_t m_start, m_size, m_place = 0;
};

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 4) return std::cerr << "usage: own-stream ARCHIVE OFFSET SIZE\n", 2;
    vlw::Reader reader;
    reader.open(vlw::stream(std::make_shared<Part>(argv[1], std::stoll(argv[2]), std::stoll(argv[3]))));

    double sum = 0;
    std::size_t samples = 0;
    for (const auto block : reader.blocks<float>(4096)) {
        for (const float sample : block) sum += std::fabs(sample);
        samples += block.size();
    }
    std::cout << reader.tell() << " frames, mean level " << std::fixed << std::setprecision(4)
              << (samples == 0 ? 0 : sum / static_cast<double>(samples)) << '\n';
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
