// Plays lives of the converter, without a test framework, so that a processor that is only emulated can.
#include <cstdio>
#include <cstdlib>

#include "AudioCodec/wave/converter/KernelChoice.h"
#include "tests/wave/ConverterScript.h"

int main(int argc, char** argv) {
    const uint32_t lives = argc > 1 ? static_cast<uint32_t>(std::atoi(argv[1])) : 100;
    for (size_t k = 0; const ConverterKernel* kernel = KernelAt(k); ++k) {
        for (uint32_t seed = 0; kernel->isOffered() && seed < lives; ++seed) {
            const std::vector<uint8_t> script = RandomScript(seed);
            const std::string difference = ConverterScript(script.data(), script.size()).Play(*kernel);
            if (difference.empty()) continue;
            std::printf("%s, life %u: %s\n", kernel->name, seed, difference.c_str());
            return 1;
        }
        std::printf("%s: %u lives as defined\n", kernel->name, lives);
    }
    return 0;
}
