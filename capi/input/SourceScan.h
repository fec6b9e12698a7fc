// Looks at the head of a file, and where it can be moved in at all of its chunks.
#pragma once

#include "capi/input/Input.h"
#include "capi/input/SourceFacts.h"

// Throws Failure: VLW_NOT_AUDIO for a file of another kind, VLW_DAMAGED for one of these kinds without a
// usable head or without audio, VLW_UNSUPPORTED for more than 255 channels, and what reading it throws.
SourceFacts ScanSource(Input& input);
