// Signals that end the program: unfinished files go, standard error says why, and it ends with 1.
#pragma once

namespace Signals {

// Starts to watch for SIGINT, SIGTERM and SIGHUP, except those that the caller has the program ignore
// (nohup). Once, in the main thread, before any other thread is there. Throws std::system_error.
void Watch();

}  // namespace Signals
