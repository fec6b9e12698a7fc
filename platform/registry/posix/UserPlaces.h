// What the system knows of the user's places.
#pragma once

#include <cstdint>
#include <string>

// The home folder of the user that the process runs as; empty where the system has none for him.
std::string HomeOfUser();

// Makes a folder with exactly these permission bits, whatever the process's mask takes away from new files.
// At no time has it more. Answers an errno; EEXIST where something is there already.
int MakeFolder(const std::string& path, uint32_t mode);
