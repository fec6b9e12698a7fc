// Turns a result of the module into a Failure with a sentence; success passes.
#pragma once

#include "host/Failure.h"
#include "host/ResultSentence.h"

inline void Require(Result result) {
    if (result != RESULT_OK) throw Failure(SentenceOf(result), result);
}
