// Tags of many files as JSON, on their way out and in: one entry a file, with its name and its tags.
//
// Decisions: a tag with the value null is taken away from the file, one that an entry doesn't have stays.
// Entries of files that failed when they were written are passed over.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "capi/vlwav.hpp"
#include "host/tags/TagChanges.h"

class TagSheet {
public:
    // Tags by their names; numbers are numbers.
    static nlohmann::ordered_json TagsOf(const vlw::AnyTags& tags);
    // The entry of a file.
    static nlohmann::ordered_json EntryOf(const std::string& file, const vlw::AnyTags& tags);

    // Of what EntryOf made, in an array. Throws Failure that names what is wrong, and where.
    explicit TagSheet(std::string_view json);

    // In their order.
    std::vector<std::string> Files() const;
    // What the entry of a file wants; null where it has none. Lent by this object.
    const TagChanges* Find(const std::string& file) const;

private:
    struct Entry {
        std::string file;
        TagChanges changes;
    };

    std::vector<Entry> m_entries;
};
