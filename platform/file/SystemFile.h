// The one place that says which system keeps the files.
#pragma once

#include "platform/file/posix/PosixFile.h"

using SystemFile = PosixFile;
