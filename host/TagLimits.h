// What a WAV file can't keep: told to the user before it is lost, and foreseen, so that what is found in the
// file afterwards can be compared. Changes nothing.
#pragma once

#include <string>

#include "host/RiffScan.h"
#include "host/Tags.h"

namespace TagLimits {

// What a reader will find when `tags` are stored in a file that holds `before` (an empty scan for a new
// file). Warns on standard error, in the name of `file`, about each tag that comes back in another form.
TagSet Foresee(const std::string& file, const TagSet& tags, const RiffScan& before);

// What an operation drops from a file that holds `before`, as text for the user; empty for nothing.
// Changing tags in place keeps other chunks and other texts of the "INFO" list, a new file has none of them.
std::string Dropped(const RiffScan& before, bool inPlace);

}  // namespace TagLimits
