// Signals that end the program: unfinished files go, standard error says why, and the signal then does what
// it does.
#pragma once

namespace Signals {

// Starts to watch for SIGINT, SIGTERM and SIGHUP, except those that the caller has the program ignore
// (nohup). Once, in the main thread, before any other thread is there. Throws std::system_error.
void Watch();

}  // namespace Signals
