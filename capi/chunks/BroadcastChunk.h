// "bext": the time of the first frame at the file's rate, and a line of its own in the coding history.
//
// Decisions: the line follows the history's text, which ends with a line's end then; zeros after the text go.
// A chunk that ends within the fixed fields has no history: its time is set right if it has one.
#pragma once

#include "capi/chunks/CarriedChunk.h"

uint64_t SizeOfBroadcast(const CarriedChunk& chunk, ChunkCopy& copy);
void CopyBroadcast(const CarriedChunk& chunk, ChunkCopy& copy);
