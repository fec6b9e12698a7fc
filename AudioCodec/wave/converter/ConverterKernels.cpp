#include "AudioCodec/wave/converter/ConverterKernels.h"

void DotPortable(const double* history, const PlannedFrame* plan, size_t count, double* sums) {
    for (size_t i = 0; i < count; ++i) {
        const double* const past = history + plan[i].historyStart;
        const double* const taps = plan[i].taps;
        double sum = 0.0;
        for (size_t k = 0; k < kTapsPerRow; ++k) sum += past[k] * taps[k];
        sums[i] = sum;
    }
}
