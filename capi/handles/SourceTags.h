// The tags of a source. Of a WAV file the module reads them, out of a small file of plain PCM with the same
// list, so that every kind of audio, cut or not, gives its tags.
#pragma once

#include "capi/Tags.h"
#include "capi/audio/ModuleReaders.h"
#include "capi/input/Input.h"
#include "capi/input/SourceFacts.h"

// Throws Failure, and std::bad_alloc. VLW_DAMAGED for more than 64 MiB of them.
Tags ReadSourceTags(const ModuleReaders& readers, Input& input, const SourceFacts& facts, vlw_text text);

// The entries of the "INFO" list that counts, without one that the file's end cuts off; none where there is
// no list. Throws likewise.
std::vector<uint8_t> ReadListEntries(Input& input, const SourceFacts& facts);

// A small WAV file of silence that has a list of these entries.
std::vector<uint8_t> FileOfList(const std::vector<uint8_t>& entries);
