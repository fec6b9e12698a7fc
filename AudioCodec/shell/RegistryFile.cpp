// Writes the registry that a package brings along, at package time, so that nothing has to run where it is
// installed: vlacwav3_registry MODULE makes VELTO_SYSTEM_REGISTRY as MODULE's own registering would, were it
// there already.
#include <cstdio>

#include "AudioCodec/shell/ClassIds.h"
#include "AudioCodec/shell/Registration.h"
#include "platform/registry/RegistryTransaction.h"

int main(int argc, char** argv) {
    if (argc != 2) return std::fputs("usage: vlacwav3_registry MODULE\n", stderr), 2;
    RegistryTransaction transaction(VL_REGISTRY_SYSTEM);
    LONG error = transaction.Begun();
    if (error == 0) {
        Registration::RegisterCodec(vlacwav3::CLSID_VlACWav3, argv[1]);
        error = transaction.End(0);  // hears of what failed inside
    }
    if (error != 0)
        std::fprintf(stderr, "vlacwav3_registry: the registry can't be written: %d\n", int{error});
    return error != 0;
}
