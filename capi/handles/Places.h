// Where a conversion reads and writes: a file at a path, or a descriptor of the program's, which stays its
// own.
#pragma once

#include <optional>
#include <string>

#include "capi/handles/WaveObjects.h"
#include "capi/input/Input.h"
#include "capi/posix/Descriptor.h"
#include "capi/vlwav_more.h"

namespace Places {

inline vlw_place Of(const char* path) { return {sizeof(vlw_place), path, -1}; }

// How a target is told of.
FileLabel LabelOf(const vlw_place& target);
// Whether both are one file under whatever names. A pipe, or a terminal, that is given for both by its
// descriptors is two ways.
bool AreOneFile(const vlw_place& source, const vlw_place& target);
// Throws Failure.
std::unique_ptr<Input> OpenSource(const vlw_place& source);
// What takes bytes in order alone; nothing for a file, a folder, and what isn't there. Throws Failure where
// it can't be opened. Waits for the reader of a FIFO.
std::optional<Descriptor> OpenLive(const vlw_place& target);

}  // namespace Places
