#include "AudioCodec/graph/InnerReader.h"

std::unique_ptr<InnerReader> CreateInnerReader() { return nullptr; }
