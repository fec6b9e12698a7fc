// What a file that is made of a source won't have of it, by names for people.
#pragma once

#include <string>
#include <vector>

#include "capi/input/Input.h"
#include "capi/input/SourceFacts.h"

struct SourceRest {
    std::vector<std::string> lost;  // "\"COMT\"", "text \"ISFT\"", …: beside format, audio, tags and chunks
    std::vector<std::string> old;   // chunks that tell of the old samples, and room
};

// Of a source that is read in order only what stands in front of the audio is known. Throws what reading
// throws.
SourceRest FindSourceRest(Input& input, const SourceFacts& facts);
