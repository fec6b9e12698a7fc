// What a mistyped word was meant to be.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The word among those that are known which takes the fewest letters to be inserted, left out, changed or
// exchanged with the next one to come from what was given; empty where none is near: more than a third of its
// letters.
std::string Nearest(std::string_view given, const std::vector<std::string>& known);
