// The tags of a source. Of a WAV file the module reads them, out of a small file of plain PCM with the same
// list, so that every kind of audio, cut or not, gives its tags.
#pragma once

#include "capi/Tags.h"
#include "capi/audio/ModuleReaders.h"
#include "capi/input/Input.h"
#include "capi/input/SourceFacts.h"

// Throws Failure, and std::bad_alloc. VLW_DAMAGED for more than 64 MiB of them.
Tags ReadSourceTags(const ModuleReaders& readers, Input& input, const SourceFacts& facts, vlw_text text);
