// Reads a file and tells what it is and how loud it is: read-file IN.wav
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <vlwav.hpp>

int main(int argc, char** argv) try {
    if (argc != 2) return std::cerr << "usage: read-file IN.wav\n", 2;
    vlw::Reader reader;
    reader.open(argv[1]);
    const vlw::Format format = reader.format();

    std::size_t total = 0;
    int peak = 0;
    auto blocks = reader.blocks(4096);
    for (const auto block : blocks) {
        for (const std::int16_t sample : block) peak = std::max(peak, std::abs(sample));
        total += block.frames();
    }

    std::cout << format.container << ", " << format.codec << ", " << format.rate << " Hz, " << format.channels
              << " channels, " << format.bits << " bits\n"
              << total << " frames, peak " << peak
              << (blocks.ending() == vlw::Ending::cut ? ", cut off\n" : "\n");
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
