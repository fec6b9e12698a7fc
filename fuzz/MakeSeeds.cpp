// Writes what each target begins with into FOLDER/TARGET: files by the makers of the tests, with a script in
// front of them where the target takes one.
#include <cstdio>

#include "fuzz/ScriptBytes.h"
#include "tests/wave/ConverterScript.h"
#include "tests/wave/SaveLayouts.h"
extern "C" {
#include "tests/capi/AudioFiles.h"
}

namespace {

namespace fs = std::filesystem;
const fs::path* g_folder;

void Write(const std::string& target, std::string_view bytes) {
    static int s_count = 0;
    const fs::path folder = *g_folder / target;
    fs::create_directories(folder);
    std::ofstream file(folder / std::to_string(s_count++), std::ios::binary);
    if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()))) std::abort();
}

// A script of zeros, which does little, and one that does anything.
void WriteBehindScripts(const std::string& target, std::string_view bytes, uint8_t first = 0) {
    static uint32_t s_seed = 0;
    std::mt19937 random(++s_seed);
    std::string any(kHead, '\0');
    for (char& byte : any) byte = static_cast<char>(random());
    any[0] = static_cast<char>(first);
    std::string none(kHead, '\0');
    none[0] = static_cast<char>(first);
    for (const std::string& head : {none, any}) Write(target, head + std::string(bytes));
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    const fs::path folder = arguments[1];
    g_folder = &folder;
    std::vector<std::string> waves;
    for (const save_test::Layout& layout : save_test::Layouts()) waves.push_back(layout.image.Text());
    const std::string texts = "artist=\xFF\xFE" + std::string("A\0\x13\x20\0\0", 6) + "bpm=\xFE\xFF" +
                              std::string("\0001\0\0", 4) + '\0';
    const WavImage entries =
        None().Chunk("INAM", "T\xF6ne").Chunk("ICRD", "1999-02-01").Chunk("IARL", "7").Chunk("vltg", texts);
    waves.push_back(WavImage().Fmt(1, 2, 44100, 8).Data(Noise(300)).Info(entries).Sized().Text());
    waves.push_back(WavImage().Fmt(1, 1, 8000, 16).Chunk("junk", std::string(20000, 'j')).Text());
    for (const std::string& wave : waves) {
        Write("wave_file", wave);
        for (const char* target : {"chunk_walk", "editor", "border", "aiff"})
            WriteBehindScripts(target, wave);
    }
    WriteBehindScripts("tags", entries.Text());
    WriteBehindScripts("tags", texts);
    for (int kind = 0; kind < SOUND_KINDS; ++kind) {
        sound made = make_sound(static_cast<sound_kind>(kind), 44100, 1,
                                kind == IMA_ADPCM || kind == MS_ADPCM ? 4 : 900);
        const std::string_view file(reinterpret_cast<const char*>(made.file), made.size);
        WriteBehindScripts("aiff", file);
        for (const int codec : {0, 7})
            WriteBehindScripts("graph", file.substr(made.audio, made.audio_bytes),
                               static_cast<uint8_t>(kind + codec));
        free_sound(&made);
    }
    for (uint32_t seed = 0; seed < 16; ++seed) {
        const std::vector<uint8_t> script = RandomScript(seed);
        const std::string_view bytes(reinterpret_cast<const char*>(script.data()), script.size());
        Write("converter", bytes);
        Write("store", std::string(16, '\0') + std::string(bytes));
        WriteBehindScripts("registry", bytes.substr(0, size_t{seed % 4} * 3), static_cast<uint8_t>(seed % 4));
    }
}
