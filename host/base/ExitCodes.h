// What the program tells its caller at the end.
#pragma once

enum ExitCode : int {
    EXIT_DONE = 0,    // everything asked for was done and delivered
    EXIT_FAILED = 1,  // a file, the module or an output failed; the reason is on standard error
    EXIT_USAGE = 2,   // the command line asks for something that can't be
};
