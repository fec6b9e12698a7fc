// What a file doesn't keep of tags as it is, in words.
#pragma once

#include <string>
#include <vector>

#include "capi/Tags.h"

// A clause for each tag that comes back in another form, and for each picture; none where all is kept.
std::vector<std::string> TagLosses(const Tags& wanted, const Tags& kept);

// The clauses as the end of a sentence.
std::string JoinClauses(const std::vector<std::string>& clauses);
