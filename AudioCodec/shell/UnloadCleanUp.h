// What the module does before it goes: the entry calls this at detach, when the module's handle is already
// cleared and its static objects still stand.
#pragma once

#include <cstdint>

// `flag` is 0 at detach. Nothing is to be cleaned up yet: the module shares nothing with others of the
// process.
void CleanUpBeforeUnload(uint8_t flag);
