// What the system knows of the user's places.
#pragma once

#include <cstdint>
#include <string>

// A variable of the environment, null where it isn't set. In a program that runs with rights its caller lacks
// (set-user-id) none is: the registry says which code is loaded.
const char* EnvironmentOf(const char* name);

// The home folder of the user that the process runs as; empty where the system has none for him.
std::string HomeOfUser();

// Makes a folder with exactly these permission bits, whatever the process's mask takes away from new files.
// At no time has it more. Answers an errno; EEXIST where something is there already.
int MakeFolder(const std::string& path, uint32_t mode);
