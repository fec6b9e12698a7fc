// How a graph reader gets its audio out of the last filter of its graph. The interface is the filter's.
#pragma once

#include "platform/media/streamreader/IStreamReaderControl.h"
