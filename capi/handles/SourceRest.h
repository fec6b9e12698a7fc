// What a source holds beside audio and tags, by names for people: what a file that is made of it won't have.
#pragma once

#include <string>

#include "capi/input/Input.h"
#include "capi/input/SourceFacts.h"

// "\"bext\", list \"adtl\", text \"ISFT\"", or nothing. Of a source that is read in order nothing is known.
// Throws what reading throws.
std::string NameRest(Input& input, const SourceFacts& facts);
