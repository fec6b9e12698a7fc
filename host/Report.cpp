#include "host/Report.h"

#include <fmt/format.h>

#include <cstdio>
#include <nlohmann/json.hpp>

namespace Report {
namespace {

using OrderedJson = nlohmann::ordered_json;

OrderedJson ToJson(const FileReport& report) {
    if (report.failed) return JsonFailure(report.file, Failure(report.reason, report.code));
    OrderedJson object = {{"file", report.file}};
    const SourceFormat& format = report.format;
    object["direct"] = format.direct;
    object["channels"] = format.channels;
    object["rate"] = format.rate;
    object["bits"] = format.direct ? OrderedJson(format.bits) : OrderedJson(nullptr);
    object["frames"] = report.frames;
    object["seconds"] = static_cast<double>(report.frames) / format.rate;
    return object;
}

std::string FormatText(const SourceFormat& format) {
    const std::string text =
        fmt::format("{} Hz, {} channel{}", format.rate, format.channels, format.channels == 1 ? "" : "s");
    return format.direct ? fmt::format("{}, {} bits", text, format.bits) : text + " when decoded";
}

}  // namespace

std::string Text(const FileReport& report) {
    return fmt::format("{}\n  format   {}\n  length   {} frames, {}\n  reading  {}\n", Printable(report.file),
                       FormatText(report.format), report.frames, Duration(report.frames, report.format.rate),
                       report.format.direct ? "directly" : "through a decoding graph");
}

std::string Json(const std::vector<FileReport>& reports) {
    OrderedJson array = OrderedJson::array();
    for (const FileReport& report : reports) array.push_back(ToJson(report));
    return Json(array);
}

std::string Json(const OrderedJson& value) {
    return value.dump(2, ' ', false, OrderedJson::error_handler_t::replace) + "\n";
}

OrderedJson JsonFailure(const std::string& file, const Failure& failure) {
    return {{"file", file}, {"error", {{"code", failure.Code()}, {"message", failure.what()}}}};
}

void Complain(const std::string& file, const std::string& reason) {
    const std::string line = file.empty() ? fmt::format("vlwav: {}\n", reason)
                                          : fmt::format("vlwav: {}: {}\n", Printable(file), reason);
    std::fputs(line.c_str(), stderr);
}

std::string Duration(int64_t frames, uint32_t rate) {
    constexpr int64_t kSecond = 1000;
    constexpr int64_t kMinute = 60 * kSecond;
    constexpr int64_t kHour = 60 * kMinute;
    // Whole seconds first: frames times 1000 may not fit.
    const int64_t time = frames / rate * kSecond + frames % rate * kSecond / rate;
    const std::string tail = fmt::format(":{:02}.{:03}", time % kMinute / kSecond, time % kSecond);
    if (time < kHour) return fmt::format("{}{}", time / kMinute, tail);
    return fmt::format("{}:{:02}{}", time / kHour, time % kHour / kMinute, tail);
}

std::string Printable(const std::string& name) {
    std::string text;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F)
            text += fmt::format("\\x{:02X}", byte);
        else
            text += c;
    }
    return text;
}

}  // namespace Report
