// The scans of the containers, for SourceScan. The input's first 12 bytes have been looked at.
#pragma once

#include <string>

#include "capi/Failure.h"
#include "capi/input/InputSource.h"
#include "capi/input/SourceFacts.h"
#include "riff/WaveTypes.h"

SourceFacts ScanWave(Input& input);
SourceFacts ScanAiff(Input& input);

// For all of them: the failure of a file that is of the kind but of no use.
inline Failure Damaged(const Input& input, const std::string& why) {
    const std::string name = input.Name().empty() ? "The source" : input.Name();
    return {VLW_DAMAGED, name + " is damaged: " + why, input.Name()};
}

// Calls `walk(source)` for the bytes after the first 12.
template <class Walk>
void WalkChunks(Input& input, Walk&& walk) {
    if (input.IsSeekable()) {
        InputBlocks blocks(input);
        blocks.MoveTo(kFileHeaderSize);
        walk(blocks);
    } else {
        InputInOrder bytes(input);
        bytes.Skip(kFileHeaderSize);
        walk(bytes);
    }
}

// Puts the frames that are there and those that are promised, from the bytes of both and the frames that the
// head tells beside them (0: none).
void CountFrames(SourceFacts& facts, int64_t told);
