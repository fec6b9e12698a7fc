#include "host/convert/BatchSummary.h"

#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "host/terminal/Report.h"

std::string BatchSummary::Line() const {
    constexpr uint32_t kThousand = 1000;  // of a second
    std::string text = fmt::format("{} file{} {}", converted, converted == 1 ? "" : "s",
                                   dryRun ? "would be converted" : "converted");
    if (skipped != 0) text += fmt::format(", {} up to date", skipped);
    if (!failures.empty()) text += fmt::format(", {} failed", failures.size());
    if (converted == 0) return text + '.';
    text += "; " + Report::Duration(std::llround(seconds * kThousand), kThousand) + " of audio";
    return dryRun ? text + '.'
                  : text + fmt::format(" in {:.1f} s, {:.0f} times real time.", elapsed, RealTime());
}

std::string BatchSummary::Json() const {
    auto failed = nlohmann::ordered_json::array();
    for (const FailedFile& failure : failures) {
        nlohmann::ordered_json entry = Report::JsonEntry(failure.file);
        entry.erase("schema");
        entry["reason"] = failure.reason;
        entry["error"] = failure.error;
        failed.push_back(std::move(entry));
    }
    return Report::Json({{"schema", Report::kSchema},
                         {"converted", converted},
                         {"skipped", skipped},
                         {"failed", failures.size()},
                         {"seconds", seconds},
                         {"realtime", RealTime()},
                         {"failures", failed}});
}
