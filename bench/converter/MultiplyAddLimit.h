// What the converter's integer kernels can't be faster than.
#pragma once

#include <string>

// 32-bit lanes of multiply-add of pairs a second that this processor does at the most with the instructions
// of a kernel, measured; 0 for a kernel without such, or one that isn't offered.
double MultiplyAddLimit(const std::string& kernel);
