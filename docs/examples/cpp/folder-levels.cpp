// Tells the peak of each WAV file of a folder, several files at once: folder-levels FOLDER [THREADS]
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <iostream>
#include <vector>
#include <vlwav.hpp>

namespace {

// A file, and what a thread found out about it.
struct Entry {
    std::filesystem::path path;
    std::size_t frames = 0;
    int peak = 0;
    vlw::Failure failure;  // with Code::ok for none
};

// A failed file is told with the others and stops none of them: here the form without exceptions fits.
void Measure(vlw::Reader& reader, Entry& file) {
    if (auto opened = reader.try_open(file.path); !opened) {  // closes the file before it
        file.failure = opened.error();
        return;
    }
    for (const auto block : reader.try_blocks(4096)) {
        if (!block) {
            file.failure = block.error();
            return;
        }
        for (const std::int16_t sample : *block) file.peak = std::max(file.peak, std::abs(sample));
        file.frames += block->frames();
    }
}

std::vector<Entry> List(const std::filesystem::path& folder) {
    std::vector<Entry> files;
    for (const auto& file : std::filesystem::directory_iterator(folder))
        if (file.path().extension() == ".wav") files.push_back({file.path(), 0, 0, {}});
    std::sort(files.begin(), files.end(), [](const Entry& a, const Entry& b) { return a.path < b.path; });
    return files;
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc < 2) return std::cerr << "usage: folder-levels FOLDER [THREADS]\n", 2;
    vlw::Module module;  // loaded once, for all threads
    module.load();
    std::vector<Entry> files = List(argv[1]);

    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        vlw::Reader reader(module);  // one for each thread, for all files that it takes
        for (std::size_t mine = next++; mine < files.size(); mine = next++) Measure(reader, files[mine]);
    };
    std::vector<std::future<void>> threads;
    const unsigned long count = argc > 2 ? std::stoul(argv[2]) : 4;
    while (threads.size() < std::max(count, 1UL)) threads.push_back(std::async(std::launch::async, work));
    for (auto& thread : threads) thread.get();  // throws what its thread threw

    bool failed = false;
    for (const Entry& file : files) {
        if (file.failure.code == vlw::Code::ok)
            std::cout << file.path.filename().string() << ": " << file.frames << " frames, peak " << file.peak
                      << '\n';
        else
            std::cerr << file.failure.text << '\n', failed = true;
    }
    return failed ? 1 : 0;
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
