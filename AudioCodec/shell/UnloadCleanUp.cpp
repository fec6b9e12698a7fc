#include "AudioCodec/shell/UnloadCleanUp.h"

void CleanUpBeforeUnload(uint8_t /*flag*/) {}
