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

inline PictureSet& SetOf(IAC3Metadata& metadata) {
    PictureSet* set = nullptr;
    metadata.GetPictureSet(&set);
    return *set;
}

inline TagList ListOf(const TagPairs& pairs) {
    TagList tags;
    for (const auto& [name, value] : pairs) {
        CStr nameText(name.data(), static_cast<uint32_t>(name.size()));
        CStr valueText(value.data(), static_cast<uint32_t>(value.size()));
        AddTag(tags, nameText, valueText);
    }
    return tags;
}

inline TagPairs PairsOf(TagList& tags) {
    TagPairs pairs;
    for (TagEntry& tag : tags) pairs.emplace_back(tag.name.Wide(), tag.value.Wide());
    return pairs;
}
