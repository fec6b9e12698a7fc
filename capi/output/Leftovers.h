// Temporary names that a killed process has left in a folder. Any thread.
//
// Decisions: whoever gives a file a temporary name holds the file locked for as long as it lives
// (Descriptor::Hold), so what can be locked is nobody's. A number of the process in the name would tell too
// little: a folder may be shared by processes that don't see one another. Folders are looked through once in
// a process, and only by who is about to leave such a name himself, since it takes as long as the folder has
// files.
#pragma once

#include <string>

namespace Leftovers {

// What can't be removed stays.
void RemoveFrom(const std::string& folder) noexcept;

}  // namespace Leftovers
