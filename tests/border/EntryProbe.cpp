// A module with the codec module's own entry, linked as that one is, that reports what its static object
// finds when it is built and when it goes.
#include <unistd.h>

#include "AudioCodec/shell/ModuleInstance.h"

#define PROBE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

struct Probe {
    Probe() : instanceWhenBuilt(GetModuleInstance()) {}
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;
    ~Probe() {
        const char report = GetModuleInstance() ? 'h' : 'n';  // handle or none
        if (reportTo >= 0 && write(reportTo, &report, 1) != 1) reportTo = -1;
    }

    HMODULE instanceWhenBuilt;
    int reportTo = -1;
};

Probe s_probe;

}  // namespace

PROBE_EXPORT HMODULE ProbeInstanceWhenBuilt() { return s_probe.instanceWhenBuilt; }
PROBE_EXPORT HMODULE ProbeInstance() { return GetModuleInstance(); }
PROBE_EXPORT void ProbeReportTo(int file) { s_probe.reportTo = file; }
