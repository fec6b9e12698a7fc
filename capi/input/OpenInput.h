// A source of any kind as an Input. All throw Failure, and std::bad_alloc.
#pragma once

#include <memory>

#include "capi/input/CallerStream.h"
#include "capi/input/Input.h"

// A regular file may be read by others meanwhile, and written by nobody who heeds the layer's share modes:
// VLW_IN_USE where someone has it open for writing. What is no regular file is read in order.
std::unique_ptr<Input> OpenPath(const char* path);
// The same beside someone who has it open.
std::unique_ptr<Input> OpenPathUnshared(const char* path);
// From where the descriptor stands. It stays the program's.
std::unique_ptr<Input> OpenDescriptor(int number);
// From where the stream stands, which can be read.
std::unique_ptr<Input> OpenStream(std::shared_ptr<const CallerStream> stream);
