// Between the tags of a file, which are texts, and the typed attributes of a metadata object. No mirror: some
// tags come in and are never written back, and the rest of a list goes when it is rebuilt. Pictures take no
// part. Nothing is reported but a lack of memory: a text without it is not an absent one.
#pragma once

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/metadata/TagList.h"

// What becomes of a number that is 0 or was never set.
enum class ZeroNumbers {
    Drop,  // for a new file: no tag
    Keep,  // for a saved file: the tag "0"
};

// Sets the attributes for which the list has tags; of several tags for one attribute the last one wins.
// Throws std::bad_alloc.
void TagsToMetadata(const TagList& tags, IAC3Metadata& metadata);

// Appends the tags that MetadataToTags would make of the attributes that TagsToMetadata would set, without
// numbers that are 0. Throws std::bad_alloc.
void TagsAsWritten(TagList& written, const TagList& tags);

// Replaces the list by tags of the attributes that are written. Throws std::bad_alloc, and the list then
// stays as it was.
void MetadataToTags(TagList& tags, IAC3Metadata& metadata, ZeroNumbers zeros);
