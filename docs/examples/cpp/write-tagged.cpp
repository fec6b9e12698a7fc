// Writes a second of a 441 Hz tone with a title, an artist and a year: write-tagged OUT.wav TITLE ARTIST YEAR
#include <algorithm>
#include <iostream>
#include <vector>
#include <vlwav.hpp>

namespace {

constexpr int kRate = 44100, kPeriod = 100, kLoud = 8000;

// A triangle wave, from the frame's number.
std::int16_t Sample(int frame) {
    const int place = frame % kPeriod;
    return static_cast<std::int16_t>(kLoud * std::min(place, kPeriod - place) / (kPeriod / 2));
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 5) return std::cerr << "usage: write-tagged OUT.wav TITLE ARTIST YEAR\n", 2;
    vlw::Tags tags;
    tags.set("title", argv[2]);
    tags.set("artist", argv[3]);
    tags.set("year", argv[4]);

    std::vector<std::int16_t> tone(kRate);
    for (int i = 0; i < kRate; ++i) tone[static_cast<std::size_t>(i)] = Sample(i);

    vlw::Writer writer;
    writer.input(kRate, 1);
    writer.output(0, 0, 16);  // 8 or 16 bits; 0: as the input
    writer.tags(tags);
    writer.create(argv[1]);  // vlw::Flags::overwrite would replace a file
    writer.write(tone.data(), tone.size());
    writer.finish();  // only now there is a file of that name
    std::cout << argv[1] << ": " << writer.tell() << " frames\n";
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
