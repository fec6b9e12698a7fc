// The identifier under which a host asks the module for its codec main object.
#pragma once

#include "platform/base/Guid.h"

namespace vlacwav3 {

// Names the codec main object in DllVlGetClassObject.
inline constexpr GUID CLSID_VlACWav3 = MakeGuid("16B5817D-48BF-4498-8D32-5EC4F75B0A3A");

}  // namespace vlacwav3
