// What an operation of the module returned, as a failure of the library.
#pragma once

#include <string>

#include "AudioCodec/shell/object/ResultCodes.h"
#include "capi/Failure.h"
#include "capi/FileLabel.h"

// The failure for a result that isn't RESULT_OK: its code, and a sentence that begins with `what` ("Decoding
// a.wav") and ends with the system's reason, where the thread's last error tells one, else the module's own.
// Throws std::bad_alloc for a lack of memory.
Failure ModuleFailure(vlacwav3::Result result, const std::string& what, const std::string& path);

// Throws it where the result is a failure.
inline void RequireModule(vlacwav3::Result result, const char* doing, const FileLabel& file) {
    if (result != vlacwav3::RESULT_OK) throw ModuleFailure(result, doing + (' ' + file.name), file.path);
}
inline void RequireModule(vlacwav3::Result result, const char* doing, const std::string& path) {
    if (result != vlacwav3::RESULT_OK) RequireModule(result, doing, FileLabel::OfPath(path));
}
