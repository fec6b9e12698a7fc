#include "tests/host/VlwavTest.h"

namespace {

class HostFormats : public VlwavTest {};

TEST_F(HostFormats, TellsRowsInTheLanguageThatIsAskedFor) {
    const std::pair<const char*, const char*> rows[] = {{"", "44.100 kHz, 16 Bits, Stereo"},
                                                        {"--language PT-br", "44,100 kHz, 16 bits, Estéreo"}};
    for (const auto& [language, text] : rows) {
        const json array = Json("formats " + std::string(language));
        ASSERT_EQ(array.size(), 28u);
        const json wanted = {{"index", 23}, {"text", text},       {"channels", 2},           {"rate", 44100},
                             {"bits", 16},  {"bytesPerFrame", 4}, {"bytesPerSecond", 176400}};
        EXPECT_EQ(array[23], wanted) << language;
    }
    EXPECT_NE(Vlwav("formats --language 1041").out.find("44.100 kHz、16 ビット、ステレオ"),
              std::string::npos);
    for (const char* language : {"en-", "65536"}) {
        const RunResult run = Vlwav("formats --language " + std::string(language));
        EXPECT_EQ(run.exitCode, 2) << language;
        EXPECT_NE(run.err.find("pt-BR"), std::string::npos) << run.err;
    }
}

}  // namespace
