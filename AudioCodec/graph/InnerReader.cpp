#include "AudioCodec/wave/InnerReader.h"

#include "AudioCodec/graph/CACMWAVReader.h"

std::unique_ptr<InnerReader> CreateInnerReader() { return std::make_unique<CACMWAVReader>(); }
