// The frames of an ID3 tag that are made use of, as a tag of their own: what is handed to the library that
// understands them is bounded then, and holds nothing that it would unpack. Reads no further than these.
//
// Decisions: frames that are compressed or encrypted are left out, since a few bytes can unpack to any
// number. So are texts above 1 MiB, or 4 MiB in all, and everything after the 256th frame of use or the
// 65536th in all. A second frame of a kind is left out too, but for comments and pictures.
#pragma once

#include <vector>

#include "capi/input/InputSource.h"
#include "capi/input/SourceFacts.h"

// A whole tag, of the version that stands at the place; empty for what is none. Throws what reading throws,
// and std::bad_alloc.
std::vector<uint8_t> FramesOfUse(InputBlocks& blocks, const Extent& tag);
