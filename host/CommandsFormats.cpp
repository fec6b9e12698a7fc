#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "host/Commands.h"
#include "host/LanguageOption.h"
#include "host/Output.h"
#include "host/Report.h"
#include "host/StockFormats.h"

namespace {

std::string Table(const StockFormats& formats) {
    std::string text = "index   rate  channels  bits  bytes/frame  bytes/s  text\n";
    for (const StockFormat& row : formats.Rows())
        text += fmt::format("{:>5}  {:>5}  {:>8}  {:>4}  {:>11}  {:>7}  {}\n", row.index, row.rate,
                            row.channels, row.bits, row.bytesPerFrame, row.bytesPerSecond, row.text);
    return text;
}

nlohmann::ordered_json Json(const StockFormats& formats) {
    auto array = nlohmann::ordered_json::array();
    for (const StockFormat& row : formats.Rows())
        array.push_back({{"index", row.index},
                         {"text", row.text},
                         {"channels", row.channels},
                         {"rate", row.rate},
                         {"bits", row.bits},
                         {"bytesPerFrame", row.bytesPerFrame},
                         {"bytesPerSecond", row.bytesPerSecond}});
    return array;
}

}  // namespace

ExitCode RunFormats(const Module& module, const FormatsOptions& options) {
    const uint32_t language = options.language.empty() ? 0 : ParseLanguage(options.language);
    const StockFormats formats(module, language);
    Output output = Output::Standard();
    output.Write(options.json ? Report::Json(Json(formats)) : Table(formats));
    output.Commit();
    return EXIT_DONE;
}
