// A registry's file: who may do what with it, and how it is opened.
#pragma once

#include <memory>
#include <string>

#include "platform/registry/RegistryStore.h"

enum class RegistryAccess { Read, Change /*one that is there*/, Create /*where none is*/ };

// Opens a registry; creates it, with the folders that are missing, for its user alone, or if `which` is
// VL_REGISTRY_SYSTEM for all to read. ERROR_SUCCESS or the platform's code: ERROR_FILE_NOT_FOUND or
// ERROR_PATH_NOT_FOUND where there is no file, ERROR_ACCESS_DENIED for writing to a file that has no write
// permission bit, whoever asks. The store keeps the database's library loaded.
DWORD OpenRegistry(const std::string& file, DWORD which, RegistryAccess access,
                   std::shared_ptr<RegistryStore>& store);
