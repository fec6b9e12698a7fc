#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "capi/vlwav_more.h"
#include "host/base/Failure.h"
#include "host/base/Language.h"
#include "host/commands/Commands.h"
#include "host/files/Output.h"
#include "host/terminal/Report.h"

namespace {

using Formats = std::vector<vlw::StockFormat>;

void RequireLanguage(const std::string& text) {
    if (vlw_is_language(text.c_str()) != 0) return;
    std::string known;
    for (size_t i = 0; const char* const tag = vlw_language(i); ++i)
        known += (i == 0 ? "" : ", ") + std::string(tag);
    throw UsageFailure(fmt::format("\"{}\" is no language of the texts; they are {}.", text, known));
}

uint32_t BytesPerSecond(const vlw::Format& format) { return format.rate * format.block_bytes; }

std::string Table(const Formats& formats) {
    std::string text = "index   rate  channels  bits  bytes/frame  bytes/s  text\n";
    for (size_t index = 0; index < formats.size(); ++index) {
        const vlw::Format& row = formats[index].format;
        text += fmt::format("{:>5}  {:>5}  {:>8}  {:>4}  {:>11}  {:>7}  {}\n", index, row.rate, row.channels,
                            row.bits, row.block_bytes, BytesPerSecond(row), formats[index].text);
    }
    return text;
}

nlohmann::ordered_json Json(const Formats& formats) {
    auto array = nlohmann::ordered_json::array();
    for (const vlw::StockFormat& stock : formats) {
        const vlw::Format& row = stock.format;
        array.push_back({{"index", array.size()},
                         {"text", stock.text},
                         {"channels", row.channels},
                         {"rate", row.rate},
                         {"bits", row.bits},
                         {"bytesPerFrame", row.block_bytes},
                         {"bytesPerSecond", BytesPerSecond(row)}});
    }
    return array;
}

class FormatsCommand final : public Command {
public:
    FormatsCommand()
        : Command({"formats",
                   "List the formats that can be written",
                   {"Each line has the index that \"vlwav convert --format\" takes, the rate in frames per "
                    "second, and the "
                    "text that a program shows for the format, in the user's language where there is one for "
                    "it."},
                   {{"The formats", "vlwav formats"},
                    {"Their texts in Japanese", "vlwav formats --language ja"},
                    {"The indexes of all stereo formats",
                     "vlwav formats --json | jq '.[] | select(.channels == 2).index'"}}}) {
        Take({"--language", "LANGUAGE",
              "Of the texts: a tag like fr or pt-BR, or a number; the user's if not given", &m_language,
              Words::Languages});
        Take({"--json", "", "One JSON array instead of a table", &m_json});
    }

    ExitCode Run(Context& context) override {
        if (!m_language.empty()) RequireLanguage(m_language);
        const Formats formats = context.Module().formats(m_language.empty() ? UserLanguage() : m_language);
        Output output = Output::Standard();
        output.Write(m_json ? Report::Json(Json(formats)) : Table(formats));
        output.Commit();
        return EXIT_DONE;
    }

private:
    std::string m_language;  // a tag or a platform language id
    bool m_json = false;
};

}  // namespace

std::unique_ptr<Command> MakeFormatsCommand() { return std::make_unique<FormatsCommand>(); }
