// Channels and sample rate as the header of a WAV or AIFF file names them. The module tells no format of what
// it decodes through a graph, so the host looks for itself, to ask for the audio as it is. Judges nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct AudioShape {
    uint32_t channels;
    uint32_t rate;  // frames per second
};

// Nothing for a file of another kind, without such a header, or with a 0 in it.
std::optional<AudioShape> ScanShape(const std::string& path);
