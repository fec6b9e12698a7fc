// What a registry refused, as a failure of the library.
#pragma once

#include "capi/Failure.h"
#include "platform/base/Types.h"

// The failure for a code of the layer, in the registry that `which` says (RegistryTransaction.h): a sentence
// that begins with `what` ("Registering"), and tells the registry's file and the reason. Throws
// std::bad_alloc for a lack of memory.
Failure RegistryFailure(LONG error, const std::string& what, DWORD which);
