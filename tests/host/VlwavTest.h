// Drives the real program with the real module beside it.
#pragma once

#include "tests/host/Shell.h"

class VlwavTest : public ShellTest {
protected:
    RunResult Vlwav(const std::string& arguments) const { return Run("'" VLWAV_PATH "' " + arguments); }
};
