// The scans of the containers, for SourceScan. `source` has the input's bytes after the first 12.
#pragma once

#include <string>

#include "capi/Failure.h"
#include "capi/input/Input.h"
#include "capi/input/SourceFacts.h"
#include "riff/ByteSource.h"

SourceFacts ScanWave(Input& input, ByteSource& source);
SourceFacts ScanAiff(Input& input, ByteSource& source);

// For all of them: the failure of a file that is of the kind but of no use.
inline Failure Damaged(const Input& input, const std::string& why) {
    const std::string name = input.Name().empty() ? "The source" : input.Name();
    return {VLW_DAMAGED, name + " is damaged: " + why, input.Name()};
}

// Puts the frames that are there and those that are promised, from the bytes of both and the frames that the
// head tells beside them (0: none).
void CountFrames(SourceFacts& facts, int64_t told);
