// Makes the module known to the suite in the registry, and forgets it again:
//
//   HKEY_CLASSES_ROOT   TARNOCLSID\{class}                             "InProcServer": the module's path
//   HKEY_LOCAL_MACHINE  Software\Velto\TARNO\AudioCodec\Enum\class   the key itself is the entry
//
// Never reads what it wrote, and keeps no state. Any thread. "TARNOCLSID" and "Enum" stay when
// they are empty.
#pragma once

#include "platform/base/Guid.h"

namespace Registration {

// The key under HKEY_CLASSES_ROOT. True if the path was written, or the key deleted; an empty
// path touches nothing.
bool RegisterClassPath(const GUID& clsid, const char* path, bool inProcess);
bool UnregisterClassPath(const GUID& clsid);

// Both keys. Failures are not told.
void RegisterCodec(const GUID& clsid, const char* path);
void UnregisterCodec(const GUID& clsid);

}  // namespace Registration
