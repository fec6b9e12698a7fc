// Plays lives of the converter, without a test framework, so that a processor that is only emulated can.
#include <cstdio>
#include <cstdlib>

#include "AudioCodec/wave/converter/KernelChoice.h"
#include "tests/wave/ConverterScript.h"

int main(int argc, char** argv) {
    const uint32_t lives = argc > 1 ? static_cast<uint32_t>(std::atoi(argv[1])) : 100;
    for (uint32_t seed = 0; seed < lives; ++seed) {
        std::mt19937 random(seed);
        std::vector<uint8_t> script(60);
        for (uint8_t& byte : script) byte = static_cast<uint8_t>(random());
        const std::string difference = ConverterScript(script.data(), script.size()).Play();
        if (difference.empty()) continue;
        std::printf("life %u: %s\n", seed, difference.c_str());
        return 1;
    }
    std::printf("%s: %u lives as defined\n", ChosenKernel().name, lives);
    return 0;
}
