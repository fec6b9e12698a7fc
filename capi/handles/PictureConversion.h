// Pictures decoded and encoded anew, by the module's metadata object.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "capi/Module.h"

// `kind`: "jpg" or "bmp". Throws Failure: VLW_BAD_ARGUMENT for another kind, VLW_BAD_VALUE for bytes that
// can't be decoded, VLW_SYSTEM where the temporary folder can't be written.
std::vector<uint8_t> ConvertPicture(const Module& module, const void* bytes, size_t size,
                                    const std::string& kind);
