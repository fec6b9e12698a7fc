#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "capi/vlwav_more.h"
#include "host/Commands.h"
#include "host/Failure.h"
#include "host/Output.h"
#include "host/Report.h"

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

}  // namespace

ExitCode RunFormats(const vlw::Module& module, const FormatsOptions& options) {
    if (!options.language.empty()) RequireLanguage(options.language);
    const Formats formats = module.formats(options.language);
    Output output = Output::Standard();
    output.Write(options.json ? Report::Json(Json(formats)) : Table(formats));
    output.Commit();
    return EXIT_DONE;
}
