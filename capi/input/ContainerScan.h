// The scans of the containers, for SourceScan. `source` has the input's bytes after the first 12.
#pragma once

#include <string>

#include "capi/Failure.h"
#include "capi/input/Input.h"
#include "capi/input/SourceFacts.h"
#include "riff/ByteSource.h"
#include "riff/Chunk.h"

SourceFacts ScanWave(Input& input, ByteSource& source);
SourceFacts ScanAiff(Input& input, ByteSource& source);

// For all of them: the failure of a file that is of the kind but of no use.
inline Failure Damaged(const Input& input, const std::string& why) {
    return {VLW_DAMAGED, input.Label().First() + " is damaged: " + why, input.Label().path};
}

// Of a chunk with ID3 tags, of either container.
inline bool IsId3(uint32_t id) { return id == FourCC("id3 ") || id == FourCC("ID3 "); }

// Notes where the first of them lies, if it is whole.
void TakeId3(const Input& input, const Chunk& chunk, SourceFacts& facts);

// Notes the id of a chunk that is passed over for good.
void TakePassed(const Input& input, uint32_t id, SourceFacts& facts);

// Puts the frames that are there and those that are promised, from the bytes of both and the frames that the
// head tells beside them (0: none).
void CountFrames(SourceFacts& facts, int64_t told);
