#include "host/tags/TagChanges.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <strings.h>

#include <algorithm>
#include <new>

#include "host/base/Failure.h"

namespace {

std::string KeptNames() {
    std::vector<std::string_view> names;
    for (const vlw::Keyword& keyword : vlw::keywords())
        if (keyword.is_kept) names.push_back(keyword.name);
    return fmt::format("{}", fmt::join(names, ", "));
}

// The command line isn't to blame for that.
void RequireMemory(const vlw::Result<>& set) {
    if (!set && set.error().code == vlw::Code::no_memory) throw std::bad_alloc();
}

void RequireKept(const std::string& given) {
    vlw::Tags trial;
    const auto known = trial.try_set(given, "1");
    RequireMemory(known);
    if (!known)
        throw UsageFailure(
            fmt::format("There is no tag named \"{}\"; the names are {}.", given, KeptNames()));
    const std::string_view name = (*trial.begin()).first;  // "performer" is another word
    for (const vlw::Keyword& keyword : vlw::keywords())
        if (keyword.name == name && !keyword.is_kept)
            throw UsageFailure(
                fmt::format("A WAV file can't keep the tag {}; it keeps {}.", name, KeptNames()));
}

// Spaces at the ends are never stored.
std::string Trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

TagChanges::TagChanges(const std::vector<std::string>& sets, const std::vector<std::string>& clears)
    : m_cleared(clears) {
    for (const std::string& name : clears) RequireKept(name);
    for (const std::string& given : sets) {
        const size_t separator = given.find('=');
        if (separator == std::string::npos)
            throw UsageFailure(fmt::format("\"{}\" is no NAME=VALUE.", given));
        const std::string name = given.substr(0, separator);
        RequireKept(name);
        const auto set = m_set.try_set(name, Trimmed(given.substr(separator + 1)));
        RequireMemory(set);
        if (!set) throw UsageFailure(set.error().text);
        if (!m_set.get(name)) m_emptied.push_back(name);
    }
}

std::string TagChanges::LeftIn(const vlw::AnyTags& tags, const TagChanges& later) const {
    for (const auto* const names : {&m_cleared, &m_emptied})
        for (const std::string& name : *names)
            if (tags.get(name) && !m_set.get(name) && !later.m_set.get(name)) return name;
    return {};
}

void TagChanges::ApplyTo(vlw::AnyTags& tags) const {
    for (const std::string& name : m_cleared) tags.remove(name);
    for (const std::string& name : m_emptied) tags.remove(name);
    for (const auto& [name, value] : m_set) tags.set(name, value);
}
