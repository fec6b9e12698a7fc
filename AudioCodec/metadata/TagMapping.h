// Between the sub-chunks of the "INFO" list and tags. A tag with a sub-chunk of its own is one narrow text
// there, "vltg" holds all others; every other sub-chunk passes through untouched. Reports nothing. What a
// narrow text is in its caller says; dates and tracks are digits in any case.
#pragma once

#include "AudioCodec/metadata/InfoText.h"
#include "AudioCodec/metadata/TagList.h"
#include "riff/InfoChunks.h"

// Appends the tags that the chunks hold. The chunks stay as they are. Throws std::bad_alloc.
void ChunksToTags(TagList& tags, const InfoChunks& chunks, InfoEncoding encoding = InfoEncoding::Ansi);

// Puts the tags that the chunks hold over those of the list, and leaves of them what attributes are made of:
// for each the last, so that neither a million tags nor a million files let the list grow. Throws
// std::bad_alloc, and the list then stays as it was.
void TakeTags(TagList& tags, const InfoChunks& chunks, InfoEncoding encoding);

// Replaces all tag chunks by those that the list makes. A list without a tag leaves no chunk for it; a
// track has no place where its chunk holds an archival location, which stays. Throws std::bad_alloc, and
// the chunks then stay as they were.
void TagsToChunks(const TagList& tags, InfoChunks& chunks, InfoEncoding encoding = InfoEncoding::Ansi);
