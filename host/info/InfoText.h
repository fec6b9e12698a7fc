// The facts of a file as the program tells them. Names and texts come out printable.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "host/info/FileFacts.h"

namespace InfoText {

// Lines for people.
std::string Lines(const std::string& file, const FileFacts& facts, bool chunks);
// One line of at most 80 columns; a long name is shortened in the middle.
std::string Short(const std::string& file, const FileFacts& facts);
nlohmann::ordered_json Json(const std::string& file, const FileFacts& facts);

}  // namespace InfoText
