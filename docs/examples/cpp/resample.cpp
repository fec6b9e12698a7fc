// Writes a file's audio as raw 16-bit samples of another rate and channel count:
// resample IN.wav RATE CHANNELS OUT.raw
#include <fstream>
#include <iostream>
#include <vlwav.hpp>

int main(int argc, char** argv) try {
    if (argc != 5) return std::cerr << "usage: resample IN.wav RATE CHANNELS OUT.raw\n", 2;
    vlw::Reader reader;
    reader.output(static_cast<std::uint32_t>(std::stoul(argv[2])),
                  static_cast<std::uint32_t>(std::stoul(argv[3])));
    reader.open(argv[1]);
    std::ofstream out;
    out.exceptions(std::ios::badbit | std::ios::failbit);
    out.open(argv[4], std::ios::binary);

    const auto expected =
        reader.frames();  // known before the first frame is read, unless the source has no length
    for (const auto block : reader.blocks(4096))
        out.write(reinterpret_cast<const char*>(block.data()),
                  static_cast<std::streamsize>(block.size() * sizeof(std::int16_t)));
    out.close();
    std::cout << expected.value_or(-1) << " frames expected, " << reader.tell() << " written\n";
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
