// Makes the module known to the suite in the registry, and forgets it again:
//
//   HKEY_CLASSES_ROOT   TARNOCLSID\{class}                             "InProcServer": the module's path
//   HKEY_LOCAL_MACHINE  Software\Velto\TARNO\AudioCodec\Enum\class   the key itself is the entry
//
// Never reads what it wrote, and keeps no state. Any thread. "TARNOCLSID" and "Enum" stay when
// they are empty. Each operation is one transaction: all of it, or nothing. Whoever has one open around it
// says in whose registry, and hears what failed.
#pragma once

#include "platform/base/Guid.h"

namespace Registration {

// The key under HKEY_CLASSES_ROOT. True if the path was written, or the key deleted; an empty
// path touches nothing.
bool RegisterClassPath(const GUID& clsid, const char* path, bool inProcess);
bool UnregisterClassPath(const GUID& clsid);

// Both keys. Failures are not told. Unregistering takes them out of the user's registry: what one of the
// system has then shows through again.
void RegisterCodec(const GUID& clsid, const char* path);
void UnregisterCodec(const GUID& clsid);

}  // namespace Registration
