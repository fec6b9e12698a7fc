// What becomes of a source's chunk where a new WAV file is made of the source.
//
// Decisions: what people call unknown is carried as it is, as long as its id can be one: printable ASCII. Of
// AIFF only markers and the "ID3 " chunk can stand in a WAV file; its texts are tags. A chunk that the end of
// the source cuts off isn't carried.
#pragma once

#include <string>

#include "riff/Chunk.h"

enum class ChunkFate {
    Own,      // the file has one of its own: format and audio, or a text that is a tag
    Tags,     // a list "INFO", of which the file gets one made of the tags
    Old,      // goes: it tells of the old samples, or is room
    Carried,  // stands in the file too, with its numbers set right
    Lost      // has no place in a WAV file, or isn't whole
};

// `listType` is 0 for what is no list.
ChunkFate FateOf(const Chunk& chunk, uint32_t listType, bool isWave, bool isWhole);

// For people: an id in quotes, where bytes that aren't printable become "?".
std::string ChunkName(uint32_t id);
