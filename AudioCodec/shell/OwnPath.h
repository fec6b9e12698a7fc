// The path of the module's file, noted at the attach: hosts call the exports from exit handlers too, after
// the detach, when nobody else knows it any more.
#pragma once

#include "platform/base/Types.h"

void NoteOwnPath(HMODULE instance);

// The system's bytes. Empty before the attach, and for a path of 1024 bytes and more.
const char* OwnPath();
