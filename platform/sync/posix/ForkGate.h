// What a fork waits for: threads enter and leave, and the system is told, when this library is loaded, to
// close the gate before each fork and to open it on both sides after it. It forgets that when the library
// goes. Any thread; one that is inside enters again.
#pragma once

namespace ForkGate {

void Enter();
void Leave();

}  // namespace ForkGate
