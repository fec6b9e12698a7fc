// Tags between a program's and the module's metadata object.
#pragma once

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "capi/Tags.h"

// Every tag that a file is read into, as text. Throws Failure, and std::bad_alloc.
Tags ReadTags(vlacwav3::IAC3Metadata& metadata);

// Puts the texts that a file keeps into an object that is empty yet. Pictures are left alone. Throws Failure,
// and std::bad_alloc.
void StoreTags(const Tags& tags, vlacwav3::IAC3Metadata& empty);

// The same for a file whose own object is `present`: what doesn't differ from `before`, its tags, is taken
// from there as it is, whatever it is; what has gone isn't set.
void StoreChangedTags(const Tags& tags, const Tags& before, vlacwav3::IAC3Metadata& present,
                      vlacwav3::IAC3Metadata& empty);
