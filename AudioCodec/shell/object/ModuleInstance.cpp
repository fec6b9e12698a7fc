#include "AudioCodec/shell/object/ModuleInstance.h"

#include <atomic>

namespace {
std::atomic<HMODULE> s_instance = nullptr;
}  // namespace

HMODULE GetModuleInstance() { return s_instance.load(); }

void SetModuleInstance(HMODULE instance) { s_instance.store(instance); }
