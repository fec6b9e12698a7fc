// The share mode of an open file, as locks on four marker bytes far past any data. They hold between
// handles, threads and processes, and end with the file, also when its process is killed.
//
//   for each of reading and writing:   | someone has the access | someone denies it |
//
// Who has an access meets who denies it, at the neighbouring byte. The locks are shared, so that files opened
// for reading alone can take them; whether another holds a byte is asked, not tried.
#pragma once

#include "platform/file/SystemFile.h"

struct ShareMode {
    bool read, write;          // what this opener does
    bool denyRead, denyWrite;  // what no one else may do meanwhile
};

// Takes the markers of `mode` for as long as `file` is open. 0, EAGAIN when another open file contradicts, or
// an errno. Where the file system knows no such locks, there are no share modes, and the answer is 0, without
// `isHeld`.
int TakeShareMode(const SystemFile& file, const ShareMode& mode, bool& isHeld);
