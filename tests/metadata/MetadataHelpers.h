// Metadata objects and tag lists as these tests make and compare them.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "AudioCodec/metadata/CMetadata.h"
#include "AudioCodec/metadata/TagList.h"
#include "platform/com/RefPtr.h"

using TagPairs = std::vector<std::pair<std::u16string, std::u16string>>;

inline RefPtr<IAC3Metadata> NewMetadata() {
    RefPtr<IAC3Metadata> metadata;
    EXPECT_EQ(CreateMetadataObject(metadata.Put()), RESULT_OK);
    return metadata;
}

// The text of an attribute, or "(none)".
inline std::u16string Text(IAC3Metadata& metadata, uint32_t id) {
    char16_t* text = nullptr;
    if (metadata.GetString(id, &text) != RESULT_OK) return u"(none)";
    std::u16string copy(text);
    metadata.Free(text);
    return copy;
}

inline PictureSet& SetOf(IAC3Metadata& metadata) {
    PictureSet* set = nullptr;
    metadata.GetPictureSet(&set);
    return *set;
}

inline TagList ListOf(const TagPairs& pairs) {
    TagList tags;
    for (const auto& [name, value] : pairs) AddTag(tags, std::string(name.begin(), name.end()), value);
    return tags;
}

inline TagPairs PairsOf(const TagList& tags) {
    TagPairs pairs;
    for (const auto& [name, value] : tags)
        pairs.emplace_back(std::u16string(name.begin(), name.end()), value);
    return pairs;
}
