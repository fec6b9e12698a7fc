// What the modules that tests load share: a class, the process's table by its name, and a file to write
// events into.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/base/Guid.h"

inline constexpr GUID kTableClass = MakeGuid("0A0B0C0D-0001-0002-0304-05060708090A");

// A line into the file that VL_EVENT_LOG names, if any.
inline void RecordEvent(const std::string& event) {
    const char* const log = std::getenv("VL_EVENT_LOG");
    const int file = log ? open(log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1;
    if (file < 0) return;
    const std::string line = event + "\n";
    if (write(file, line.data(), line.size()) < 0) std::abort();
    close(file);
}

// The name of `prefix` for this process.
inline std::string ProcessObjectName(const char* prefix) {
    char text[32];
    std::snprintf(text, sizeof(text), "%s%08X", prefix, static_cast<unsigned>(getpid()));
    return text;
}
inline std::string TableMappingName() { return ProcessObjectName("~VLMMO_"); }
