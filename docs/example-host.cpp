// Reads a file as 48000 Hz stereo through the module: example-host PATH/VlACWav3.so FILE.wav
#include <dlfcn.h>

#include <cstdio>
#include <filesystem>
#include <vector>

#include "AudioCodec/shell/ClassIds.h"
#include "AudioCodec/shell/Exports.h"
#include "AudioCodec/shell/IPrivateCodecMain3.h"
#include "AudioCodec/shell/object/ResultTexts.h"
#include "AudioCodec/wave/IAC3StreamReader.h"
#include "platform/com/RefPtr.h"

using namespace vlacwav3;

int main(int argc, char** argv) {
    if (argc != 3) return std::puts("usage: example-host PATH/VlACWav3.so FILE.wav"), 2;
    void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    void* symbol = library ? dlsym(library, "DllVlGetClassObject") : nullptr;
    if (!symbol) return std::puts(dlerror()), 1;
    const auto getClassObject = reinterpret_cast<decltype(&DllVlGetClassObject)>(symbol);

    void* object = nullptr;
    if (getClassObject(&CLSID_VlACWav3, &IID_IPrivateCodecMain3, &object) != RESULT_OK) return 1;
    const auto codec = RefPtr<IPrivateCodecMain3>::Adopt(static_cast<IPrivateCodecMain3*>(object));
    RefPtr<IAC3StreamReader> reader;
    if (codec->CreateStreamReader(reader.Put()) != RESULT_OK) return 1;
    const std::u16string path = std::filesystem::path(argv[2]).u16string();
    if (const Result result = reader->Open(path.c_str(), OPEN_READ_ONLY); result != RESULT_OK) {
        const ResultText* row = FindResultText(result);  // null for results of the platform
        return std::printf("can't be opened: %d %s\n", result, row ? row->text : ""), 1;
    }
    reader->SetOutputFormat(2, 48000, 2);  // channels, Hz, bytes in a sample

    int64_t promised = 0, total = 0;
    if (reader->GetLength(&promised) != RESULT_OK) return 1;
    std::vector<int16_t> block(size_t{16384} * 2);
    for (uint32_t frames = 1; frames != 0; total += frames)  // fewer than asked for is no end, 0 is
        if (reader->Read(block.data(), 16384, &frames, nullptr) != RESULT_OK) return 1;
    std::printf("%lld frames promised, %lld read\n", static_cast<long long>(promised),
                static_cast<long long>(total));
}
