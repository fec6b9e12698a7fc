// Between the sub-chunks of the "INFO" list and tags. Eight standard sub-chunks hold one narrow text each,
// "vltg" holds all other names; every other sub-chunk passes through untouched. Reports nothing.
#pragma once

#include "AudioCodec/metadata/TagList.h"
#include "AudioCodec/wave/riff/CWaveFile.h"

// Appends the tags that the chunks hold. The chunks stay as they are.
void ChunksToTags(TagList& tags, const CWaveFile::ChunkMap& chunks);

// Replaces all tag chunks by those that the list makes. A list without a tag leaves no chunk for it; a track
// has no place where "IARL" holds an archival location, which stays.
void TagsToChunks(TagList& tags, CWaveFile::ChunkMap& chunks);
