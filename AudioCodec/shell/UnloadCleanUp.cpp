#include "AudioCodec/shell/UnloadCleanUp.h"

#include "AudioCodec/shell/ProcessModuleTable.h"

namespace {
ProcessModuleTable s_table;
}  // namespace

void CleanUpBeforeUnload(uint8_t flag) { s_table.CleanUpBeforeUnload(flag); }
