// What the channels of a file are called.
#pragma once

#include <string>
#include <vector>

#include "capi/vlwav.hpp"

// By the speakers that the file tells; else mono, left and right, or numbers from 1.
std::vector<std::string> ChannelNames(const vlw::Format& format);
