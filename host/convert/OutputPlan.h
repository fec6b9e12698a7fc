// Which file each input becomes, decided before the first is touched.
//
// Decisions: outputs in a folder have the names of the inputs with ".wav". Inputs that would become one file
// are told apart by as many of their folders as it takes; where these are the same too, each of them is
// refused and the others go on.
#pragma once

#include <string>
#include <vector>

#include "host/convert/InputList.h"

struct ConvertJob {
    std::string input;
    std::string output;
    std::string refusal;      // why it isn't to be done; empty where it is
    const char* reason = "";  // the same for scripts
};

class OutputPlan {
public:
    // `several`: more than one file may come, so the output is a folder. Throws UsageFailure for an output
    // that is neither a folder nor a name of a WAV file nor "-", standard output, which takes one file; and
    // for standard input where the output is a folder.
    static std::vector<ConvertJob> Make(const std::vector<InputFile>& inputs, const std::string& output,
                                        bool several);
};
