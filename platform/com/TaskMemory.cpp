#include "platform/com/TaskMemory.h"

#include <cstdlib>

void* CoTaskMemAlloc(size_t size) { return std::malloc(size ? size : 1); }

void CoTaskMemFree(void* block) { std::free(block); }
