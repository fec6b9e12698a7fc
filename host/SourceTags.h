// The tags of a source, also where the audio has to be decoded: no reader of the module tells of those, so
// the file's "INFO" list is brought to it in a small file of plain PCM.
#pragma once

#include <optional>
#include <string>

#include "host/Module.h"
#include "host/Source.h"
#include "host/Tags.h"

// `path` is the source's own. None where the file is of a kind whose tags the module doesn't
// know. Throws Failure.
std::optional<TagSet> ReadTags(const Module& module, const Source& source, const std::string& path);
