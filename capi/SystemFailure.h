// What the system refused, as a failure of the library.
#pragma once

#include <string>

#include "capi/Failure.h"
#include "capi/FileLabel.h"

// The failure for an errno: its code, the number, and a sentence that begins with `what` ("Reading a.wav")
// and ends with the system's own reason.
Failure SystemFailure(int error, const std::string& what, const std::string& path);

// The same apart: the library's code, and the system's reason in English, whatever the program's locale is.
vlw_code SystemCode(int error);
std::string SystemReason(int error);

// Throws it where there is an error.
inline void RequireSystem(int error, const char* doing, const FileLabel& file) {
    if (error != 0) throw SystemFailure(error, doing + (' ' + file.name), file.path);
}
inline void RequireSystem(int error, const char* doing, const std::string& path) {
    if (error != 0) RequireSystem(error, doing, FileLabel::OfPath(path));
}
