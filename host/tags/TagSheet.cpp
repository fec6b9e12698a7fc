#include "host/tags/TagSheet.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/base/Failure.h"
#include "host/terminal/Report.h"
#include "host/terminal/TerminalText.h"

namespace {

using Json = nlohmann::ordered_json;

bool IsNumber(std::string_view name) {
    for (const vlw::Keyword& keyword : vlw::keywords())
        if (keyword.name == name) return keyword.is_number;
    return false;
}

[[noreturn]] void Refuse(size_t index, const std::string& why) {
    throw Failure(fmt::format("Entry {} of the list is of no use: {}", index + 1, why), "bad-list");
}

// By its bytes, where it has them.
std::string FileOf(const Json& entry, size_t index) {
    if (!entry.is_object()) Refuse(index, "it is no object.");
    const auto file = entry.find("file");
    if (file == entry.end() || !file->is_string()) Refuse(index, "it has no \"file\".");
    const auto bytes = entry.find("fileBytes");
    if (bytes == entry.end()) return file->get<std::string>();
    const auto name = bytes->is_string() ? TerminalText::FromBase64(bytes->get<std::string>()) : std::nullopt;
    if (!name) Refuse(index, "its \"fileBytes\" is no base64.");
    return *name;
}

TagChanges ChangesOf(const Json& entry, size_t index) {
    const auto tags = entry.find("tags");
    if (tags == entry.end() || !tags->is_object()) Refuse(index, "it has no \"tags\".");
    std::vector<std::string> sets;
    std::vector<std::string> clears;
    for (const auto& [name, value] : tags->items()) {
        if (value.is_null())
            clears.push_back(name);
        else if (value.is_string())
            sets.push_back(name + '=' + value.get<std::string>());
        else if (value.is_number_integer())
            sets.push_back(name + '=' + value.dump());
        else
            Refuse(index, fmt::format("its \"{}\" is neither a text nor a whole number.", name));
    }
    try {
        return TagChanges(sets, clears);
    } catch (const UsageFailure& failure) {
        Refuse(index, failure.what());
    }
}

}  // namespace

Json TagSheet::TagsOf(const vlw::AnyTags& tags) {
    auto values = Json::object();
    for (const auto& [name, value] : tags) {
        const std::string text(value);
        values[std::string(name)] = IsNumber(name) ? Json(std::stol(text)) : Json(text);
    }
    return values;
}

Json TagSheet::EntryOf(const std::string& file, const vlw::AnyTags& tags) {
    Json entry = Report::JsonEntry(file);
    entry["tags"] = TagsOf(tags);
    return entry;
}

TagSheet::TagSheet(std::string_view json) {
    const Json list = Json::parse(json, nullptr, false);
    if (!list.is_array()) throw Failure("The list is no JSON array, as --export writes one.", "bad-list");
    for (size_t i = 0; i < list.size(); ++i) {
        if (list[i].is_object() && list[i].contains("error")) continue;
        m_entries.push_back({FileOf(list[i], i), ChangesOf(list[i], i)});
    }
}

std::vector<std::string> TagSheet::Files() const {
    std::vector<std::string> files;
    for (const Entry& entry : m_entries) files.push_back(entry.file);
    return files;
}

const TagChanges* TagSheet::Find(const std::string& file) const {
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(),
                                    [&](const Entry& known) { return known.file == file; });
    return entry == m_entries.end() ? nullptr : &entry->changes;
}
