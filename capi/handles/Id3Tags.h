// The tags and pictures of a source's "id3 " chunk. libvlid3.so reads them, which is loaded for it. Of a
// chunk beyond 64 MiB nothing is told.
#pragma once

#include "capi/Tags.h"
#include "capi/input/Input.h"
#include "capi/input/SourceFacts.h"

// Throws what reading throws, Failure with VLW_NO_DECODER without that library, and std::bad_alloc.
Tags ReadId3Tags(Input& input, const SourceFacts& facts);

// Puts the tags of `more` in where `tags` has none; a month or a day only where the year comes from there
// too. Pictures likewise.
void FillTags(Tags& tags, const Tags& more);
