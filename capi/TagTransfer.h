// Tags between a program's and the module's metadata object.
#pragma once

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "capi/Tags.h"

// Every tag that a file is read into, as text. Throws Failure, and std::bad_alloc.
Tags ReadTags(vlacwav3::IAC3Metadata& metadata);

// Sets in an object, which holds `before`, the texts of those tags that differ, of which a file keeps some;
// one that has gone becomes empty, a number 0. Pictures are left alone. Throws Failure, and std::bad_alloc.
void StoreTags(const Tags& tags, const Tags& before, vlacwav3::IAC3Metadata& metadata);
