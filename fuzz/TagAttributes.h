// Tags of a metadata object by a script, and as they are when all that has no place in a file is left out.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/metadata/MetadataTransfer.h"
#include "fuzz/ScriptBytes.h"
#include "riff/TagTable.h"

// Up to seven attributes, each with any text or number.
inline void SetTagAttributes(ScriptBytes& script, IAC3Metadata& metadata) {
    for (uint32_t left = script.Next() % 8; left != 0; --left) {
        const TagRow& row = TagTable()[script.Next() % TagTable().size()];
        if (row.kind == TagKind::Text)
            metadata.SetString(row.id, script.Wide().c_str());
        else
            metadata.SetLong(row.id, script.NextNumber());
    }
}

using TagTexts = std::vector<std::pair<std::string, std::u16string>>;

// Those that are written, without numbers that are 0 and texts that are empty.
inline TagTexts WrittenTags(IAC3Metadata& metadata) {
    TagList tags;
    MetadataToTags(tags, metadata, ZeroNumbers::Drop);
    TagTexts texts;
    for (const auto& [name, value] : tags)
        if (!value.empty()) texts.emplace_back(name, value);
    return texts;
}
