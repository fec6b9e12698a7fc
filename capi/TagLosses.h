// What a file doesn't keep of tags as it is, in words.
#pragma once

#include <string>

#include "capi/Tags.h"

// A clause for each tag that comes back in another form, and for each picture; empty where all is kept.
std::string TagLosses(const Tags& wanted, const Tags& kept);
