// The temporary files of the process: each is gone by the end, also when SIGINT, SIGTERM or SIGHUP ends it.
// A thread waits for the signals; it removes every temporary, says why on standard error and ends the process
// with 1. All operations may come from any thread; none of them can be interrupted half way.
#pragma once

#include <string>

namespace TemporaryCleanup {

// Starts to watch for the signals, except those that the caller has the program ignore (nohup). Once, in
// the main thread, before any other thread is there. Throws std::system_error.
void WatchSignals();
// A path in the user's folder for temporaries, which ends in six X.
std::string NewPath();
// Throws the Failure that tells of that folder.
[[noreturn]] void FailWriting();
// Creates a new file; `path` ends in six X that it replaces. Returns a descriptor, or -1 with errno.
int Create(std::string& path);
// Gives the file its final name. Without `replace` a file that has this name already is left as it is, and
// errno is EEXIST. False with errno; the temporary is left then.
bool Rename(const std::string& path, const std::string& target, bool replace);
// Removes the file.
void Remove(const std::string& path) noexcept;

}  // namespace TemporaryCleanup
