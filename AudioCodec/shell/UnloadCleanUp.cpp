#include "AudioCodec/shell/UnloadCleanUp.h"

#include "AudioCodec/shell/ProcessModuleTable.h"

namespace {
ProcessModuleTable s_table;
}  // namespace

void FollowProcess() { s_table.FollowProcess(); }

void CleanUpBeforeUnload(uint8_t flag) { s_table.CleanUpBeforeUnload(flag); }
