// Interface lookup as data: a class has one constant table of the interfaces it shows, and one function walks
// them all. Knows nothing of single classes.
#pragma once

#include <cstdint>

#include "AudioCodec/shell/object/IBase.h"

struct InterfaceTableEntry {
    const GUID* iid;  // null ends the table
    intptr_t offset;  // bytes from the object to that interface; 0 wherever the interfaces are one chain
};

// Returns the object's interface `iid` with one reference and 0. IID_IBase needs no row: it is answered by
// the first one. E_POINTER for a null receiver or identifier, E_NOINTERFACE for an interface without a row;
// the receiver, if there is one, is then null.
Result FindInterfaceEntry(IBase* object, const InterfaceTableEntry* table, const GUID* iid, void** receiver);
