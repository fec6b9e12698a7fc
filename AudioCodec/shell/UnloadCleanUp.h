// What the module does before it goes: the entry calls this at detach, when the module's handle is already
// cleared and its static objects still stand.
//
// The module's table of the process is one of them: it attaches when the library is initialised, in front of
// the entry's attach, and lets go when the library ends, after the entry's detach.
#pragma once

#include <cstdint>

// Gives the process a table of its own where it is a child of the one that loaded the module.
void FollowProcess();
// Asks the modules of the process to clean up. `flag` is 0 at detach.
void CleanUpBeforeUnload(uint8_t flag);
