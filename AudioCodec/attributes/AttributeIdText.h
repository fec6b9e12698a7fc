// The narrow text about an id, for traces: "0x34000004 (type:STRING)".
#pragma once

#include <cstdint>

// Returns the one buffer of the process, which the next call overwrites. Calls may come from any thread; what
// one reads while another calls is not fixed.
const char* AttributeIdText(uint32_t id);
