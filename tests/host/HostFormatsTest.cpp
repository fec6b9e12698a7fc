#include <nlohmann/json.hpp>

#include "tests/host/VlwavTest.h"

namespace {

class HostFormats : public VlwavTest {};

TEST_F(HostFormats, TellsRowsInTheLanguageThatIsAskedFor) {
    const struct {
        const char* language;
        const char* text;  // of row 23
    } rows[] = {{"", "44.100 kHz, 16 Bits, Stereo"},
                {"--language fr", "44.100 kHz, 16 bits, Stéréo"},
                {"--language PT-br", "44,100 kHz, 16 bits, Estéreo"},
                {"--language 1041", "44.100 kHz、16 ビット、ステレオ"},
                {"--language en-gb", "44.100 kHz, 16 Bits, Stereo"},
                {"--language 1042", "44.100 kHz, 16 Bits, Stereo"}};  // a language without texts
    for (const auto& [language, text] : rows) {
        const auto array = nlohmann::json::parse(Vlwav("formats --json " + std::string(language)).out);
        ASSERT_EQ(array.size(), 28u);
        const nlohmann::json wanted = {
            {"index", 23}, {"text", text},       {"channels", 2},           {"rate", 44100},
            {"bits", 16},  {"bytesPerFrame", 4}, {"bytesPerSecond", 176400}};
        EXPECT_EQ(array[23], wanted) << language;
        EXPECT_NE(Vlwav("formats " + std::string(language)).out.find(text), std::string::npos) << language;
    }
    for (const char* language : {"xx", "en-", "65536", "-1"}) {
        const RunResult run = Vlwav("formats --language " + std::string(language));
        EXPECT_EQ(run.exitCode, 2) << language;
        EXPECT_NE(run.err.find("pt-BR"), std::string::npos) << run.err;
    }
}

}  // namespace
