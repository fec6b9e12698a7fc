// The one temporary file of the process, removed by name also when SIGINT, SIGTERM or SIGHUP ends it.
// For the main thread; holds the three signals off while name and file could disagree.
#pragma once

#include <string>

namespace TemporaryCleanup {

// Creates a new file; `path` ends in six X that it replaces. Gives a descriptor, or -1 with errno.
int Create(std::string& path);
// Gives the file its final name, replacing what is there. False with errno; the temporary is left then.
bool Rename(const std::string& path, const std::string& target);
// Removes the file.
void Remove(const std::string& path) noexcept;

}  // namespace TemporaryCleanup
