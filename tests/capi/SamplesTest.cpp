#include "capi/audio/Samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <limits>

namespace {

TEST(Samples, EverySampleComesBackUnchanged) {
    for (int32_t sample = INT16_MIN; sample <= INT16_MAX; ++sample) {
        const float value = ToFloat(static_cast<int16_t>(sample));
        ASSERT_EQ(value * 32768.0F, static_cast<float>(sample));
        ASSERT_EQ(FromFloat(value), sample);
    }
}

// Against the library's rounding, half steps and their neighbours.
TEST(Samples, RoundsToTheNearestAndTiesToEven) {
    for (int32_t half = 2 * INT16_MIN; half < 2 * INT16_MAX; ++half) {
        const float middle = static_cast<float>(half) / 65536.0F;
        for (const float sample : {std::nextafter(middle, -2.0F), middle, std::nextafter(middle, 2.0F)})
            ASSERT_EQ(FromFloat(sample),
                      std::max<long>(INT16_MIN, std::lrint(static_cast<double>(sample) * 32768)))
                << sample;
    }
}

TEST(Samples, LimitsWhatIsBeyondSixteenBitsAndTakesNoNumberForSilence) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const float sample : {1.0F, 0.99999F, 2.0F, 3e38F, kInfinity}) EXPECT_EQ(FromFloat(sample), 32767);
    for (const float sample : {-1.0F, -1.00001F, -3e38F, -kInfinity}) EXPECT_EQ(FromFloat(sample), -32768);
    EXPECT_EQ(FromFloat(std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(FromFloat(-std::numeric_limits<float>::denorm_min()), 0);
}

TEST(Samples, TheRoundingModeOfTheThreadChangesNothing) {
    const volatile float kept = 0.7F / 32768;  // volatile: worked out at run time
    const volatile float tie = 2.5F / 32768;
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(mode);
        const int16_t rounded[] = {FromFloat(kept), FromFloat(-kept), FromFloat(tie)};
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(rounded[0], 1);
        EXPECT_EQ(rounded[1], -1);
        EXPECT_EQ(rounded[2], 2);
    }
}

}  // namespace
