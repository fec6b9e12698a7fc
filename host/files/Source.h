// What a command reads: a file, a FIFO or device by its name, or standard input, which is "-".
//
// Decisions: what comes in order is kept in a file without a name only where all of it is asked for. Its head
// is looked at before: what is no audio may have no end.
#pragma once

#include <string>

#include "capi/vlwav.hpp"

namespace Source {

// Throws what opening throws.
void Open(vlw::Reader& reader, const std::string& name);
// The same, and any place of it can be read. Waits for the end of what comes in order.
void OpenWhole(vlw::Reader& reader, const std::string& name);

}  // namespace Source
