// Copies of the layer in one process. Each module uses the one that lies beside it, but a name means one
// object to all of them: the copy that was loaded first makes the named objects for the others, which keep it
// loaded. Copies know each other by the version under which they show their functions. Any thread.
#pragma once

namespace FirstCopy {

// That function as the first copy has it; null if this copy is the first. Asked while the layer is loaded:
// later the loader's lock, which this takes, may be held by a thread that waits for the one that asks.
void* Find(const char* function);

// False where there is a copy that couldn't be held for want of memory: this one passes for the first then,
// and nobody may use it.
bool IsKnown();

}  // namespace FirstCopy
