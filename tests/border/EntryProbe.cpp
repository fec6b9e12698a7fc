// A module with the codec module's own entry, objects and clean-up, linked as that one is, that writes down
// what it finds at each turn of its life: into the file that VL_EVENT_LOG names.
#include "AudioCodec/shell/CPrivateCodecMain.h"
#include "AudioCodec/shell/object/ModuleInstance.h"
#include "platform/base/UniqueHandle.h"
#include "platform/com/RefPtr.h"
#include "platform/file/FileMapping.h"
#include "tests/support/ModuleLog.h"

#define PROBE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

void RecordWithState(const std::string& event) {
    const UniqueHandle mapping(OpenFileMappingA(FILE_MAP_ALL_ACCESS, FALSE, TableMappingName().c_str()));
    RecordEvent(event + (GetModuleInstance() ? " handle" : "") + (mapping ? " table" : ""));
}

struct Probe {
    Probe() { RecordWithState("built"); }
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;
    ~Probe() { RecordWithState("destroyed"); }
};

// Before all static objects of the module and after them.
__attribute__((init_priority(1000))) const Probe s_probe;

}  // namespace

PROBE_EXPORT HMODULE ProbeInstance() { return GetModuleInstance(); }
PROBE_EXPORT void ProbeUseObject() {
    const auto codec = RefPtr<CPrivateCodecMain>::Retain(new CPrivateCodecMain);
    RecordWithState("object");
}
PROBE_EXPORT void DllVlCleanUpBeforeUnload(void* reserved, uint8_t flag) {
    RecordWithState("clean-up" + std::string(reserved || flag ? " with arguments" : ""));
}
