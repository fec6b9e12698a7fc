#include "AudioCodec/shell/OwnPath.h"

#include "platform/loader/ModulePath.h"

namespace {
char s_path[1024];  // without a destructor
}  // namespace

void NoteOwnPath(HMODULE instance) {
    // Half a path would name another file.
    if (GetModuleFileNameA(instance, s_path, sizeof(s_path)) == sizeof(s_path)) *s_path = '\0';
}

const char* OwnPath() { return s_path; }
