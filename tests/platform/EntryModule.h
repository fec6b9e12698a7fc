// Between the two files of the module that LoaderTest loads.
#pragma once

#include <string>

void Record(const std::string& event);
