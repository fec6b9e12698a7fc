#include "platform/loader/ModuleEntry.h"
#include "tests/support/ModuleLog.h"

namespace {

HMODULE s_instance = nullptr;

BOOL Entry(HMODULE instance, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) s_instance = instance;
    RecordEvent((reason == DLL_PROCESS_ATTACH ? "attached" : "detached") +
                std::string(instance == s_instance ? "" : " with another handle"));
    return TRUE;
}

const ModuleEntryNotifier s_entry(&Entry);

}  // namespace

extern "C" __attribute__((visibility("default"))) HMODULE InstanceOfEntryModule() { return s_instance; }
