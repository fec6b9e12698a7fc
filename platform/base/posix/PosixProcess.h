// What the system knows of the process.
#pragma once

#include <cstdint>

uint32_t PosixProcessId();
