#include "host/terminal/Report.h"

#include <fmt/format.h>

#include <cstdio>
#include <new>
#include <nlohmann/json.hpp>

#include "host/terminal/Reason.h"
#include "host/terminal/TerminalText.h"

namespace Report {
namespace {

bool failuresAlone = false;  // set before the first thread starts

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
    return TerminalText::PrintableJson(value.dump(2, ' ', false, OrderedJson::error_handler_t::replace)) +
           "\n";
}

OrderedJson JsonEntry(const std::string& file) {
    OrderedJson entry = {{"schema", kSchema}, {"file", file}};
    if (!TerminalText::IsUtf8(file)) entry["fileBytes"] = TerminalText::Base64(file);
    return entry;
}

OrderedJson JsonFailure(const std::string& file, const std::exception& failure) {
    OrderedJson entry = JsonEntry(file);
    entry["error"] = ReasonOf(failure, file);
    entry["reason"] = WordOf(failure);
    return entry;
}

std::string Complaint(const std::string& file, const std::string& reason) {
    const std::string name = file == "-" ? "standard input" : file;
    return TerminalText::Printable("vlwav: " + (name.empty() ? name : name + ": ") + reason) + '\n';
}

std::string Complaint(const std::string& file, const std::exception& failure) {
    return Complaint(file, ReasonOf(failure, file));
}

void OnlyFailures() { failuresAlone = true; }

bool TellsFailuresAlone() { return failuresAlone; }

void Complain(const std::string& file, const std::string& reason) { Tell(file, reason); }

void Note(const std::string& file, const std::string& text) {
    if (!failuresAlone) Tell(file, text);
}

void Complain(const std::string& file, const std::exception& failure) { Tell(file, failure); }

std::string NoteOf(const std::string& file, const std::string& sentence) {
    return "Note: " + AboutIt(sentence, file, "it");
}

std::string Exists(const std::string& output) {
    return fmt::format("{} is there already; choose another name or use --overwrite.", output);
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

}  // namespace Report
