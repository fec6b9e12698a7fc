// The registry's file: where it is, who may do what with it, and how it is opened.
#pragma once

#include <memory>

#include "platform/registry/RegistryStore.h"

// Opens the registry, for writing with its folder made where that is missing. ERROR_SUCCESS or the platform's
// code: ERROR_FILE_NOT_FOUND for reading where there is no file, ERROR_ACCESS_DENIED for writing to a file
// that has no write permission bit, whoever asks.
DWORD OpenRegistry(bool forWriting, std::unique_ptr<RegistryStore>& store);
