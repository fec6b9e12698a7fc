#include "host/Report.h"

#include <fmt/format.h>

#include <cstdio>
#include <new>
#include <nlohmann/json.hpp>

#include "host/Reason.h"

namespace Report {
namespace {

// Without memory for the line it says that alone.
template <class Reason>
void Tell(const std::string& file, const Reason& reason) noexcept {
    try {
        std::fputs(Complaint(file, reason).c_str(), stderr);
    } catch (const std::bad_alloc&) {
        std::fputs("vlwav: Cannot allocate memory.\n", stderr);
    }
}

}  // namespace

using OrderedJson = nlohmann::ordered_json;

std::string Json(const OrderedJson& value) {
    return value.dump(2, ' ', false, OrderedJson::error_handler_t::replace) + "\n";
}

OrderedJson JsonFailure(const std::string& file, const std::exception& failure) {
    return {{"file", file}, {"error", {{"code", NumberOf(failure)}, {"message", ReasonOf(failure, file)}}}};
}

std::string Complaint(const std::string& file, const std::string& reason) {
    return (file.empty() ? "vlwav: " : "vlwav: " + Printable(file) + ": ") + reason + '\n';
}

std::string Complaint(const std::string& file, const std::exception& failure) {
    return Complaint(file, Printable(ReasonOf(failure, file)));
}

void Complain(const std::string& file, const std::string& reason) { Tell(file, reason); }

void Complain(const std::string& file, const std::exception& failure) { Tell(file, failure); }

std::string Exists(const std::string& output) {
    return fmt::format("{} is there already; choose another name or use --overwrite.", Printable(output));
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
