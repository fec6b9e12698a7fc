// Chunks that tell places in the audio: cue points, their list of labels, a playlist and a sampler's loops.
// What they tell in frames is set to the file's rate; they keep their size and all else.
//
// Decisions: where nothing moves they are carried as they are, damaged ones too. Of a count that lies as many
// records as there are count; what follows them is carried as it is.
#pragma once

#include "capi/chunks/CarriedChunk.h"

void CopyCuePoints(const CarriedChunk& chunk, ChunkCopy& copy);
void CopyPlaylist(const CarriedChunk& chunk, ChunkCopy& copy);
void CopySampler(const CarriedChunk& chunk, ChunkCopy& copy);
// Of the whole list, with its type.
void CopyLabels(const CarriedChunk& chunk, ChunkCopy& copy);
