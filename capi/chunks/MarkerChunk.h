// The markers of an AIFF file as cue points, and their names as a list of labels.
//
// Decisions: the bytes of a name stay what they are. A marker without a name gets no label. Of a count that
// lies as many markers as are whole.
#pragma once

#include "capi/chunks/CarriedChunk.h"

// 0 where there is no marker, or no name: then nothing is carried.
uint64_t SizeOfMarkerPoints(const CarriedChunk& chunk, ChunkCopy& copy);
void CopyMarkerPoints(const CarriedChunk& chunk, ChunkCopy& copy);
uint64_t SizeOfMarkerLabels(const CarriedChunk& chunk, ChunkCopy& copy);
void CopyMarkerLabels(const CarriedChunk& chunk, ChunkCopy& copy);
