// The module's entry. The build links this file last into the module, so that the attach comes after all
// static constructors and the detach before all static destructors. Thread notifications don't exist here.
#include "platform/loader/ModuleEntry.h"

#include "AudioCodec/shell/OwnPath.h"
#include "AudioCodec/shell/UnloadCleanUp.h"
#include "AudioCodec/shell/object/ModuleInstance.h"
#include "AudioCodec/wave/StockFormatTexts.h"

namespace {

BOOL ModuleEntry(HMODULE instance, DWORD reason, void* /*reserved*/) {
    // One that couldn't tell the layer all about itself, for want of memory, makes no objects: they would be
    // without texts.
    if (reason == DLL_PROCESS_ATTACH && instance && StockFormatTexts::AreKnown()) {
        SetModuleInstance(instance);
        NoteOwnPath(instance);
    }
    if (reason == DLL_PROCESS_DETACH) {
        // Cleared first: what the clean-up calls must find a module that is on its way out.
        SetModuleInstance(nullptr);
        CleanUpBeforeUnload(0);
    }
    return TRUE;
}

const ModuleEntryNotifier s_entry(&ModuleEntry);

}  // namespace
