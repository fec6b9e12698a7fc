#include "platform/base/CodePage1252.h"

#include <gtest/gtest.h>

#include "platform/base/LastError.h"

namespace {

TEST(CodePage1252, EveryByteMapsAndMapsBack) {
    for (int byte = 0; byte < 256; ++byte) {
        const char narrow = static_cast<char>(byte);
        WCHAR wide = 0;
        char back = 'x';
        ASSERT_EQ(MultiByteToWideChar(CP_ACP, 0, &narrow, 1, &wide, 1), 1);
        ASSERT_EQ(WideCharToMultiByte(CP_ACP, 0, &wide, 1, &back, 1, nullptr, nullptr), 1);
        EXPECT_EQ(back, narrow) << byte << " by " << static_cast<int>(wide);
    }
}

TEST(CodePage1252, SizesAreAskedForAndKept) {
    WCHAR wide[4] = {};
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -1, nullptr, 0), 4);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -1, wide, 3), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "\x9F", -1, wide, 4), 2);
    EXPECT_EQ(wide[0], 0x0178);
    char narrow[4] = {};
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"\u0100", -1, narrow, 4, nullptr, nullptr), 2);
    EXPECT_STREQ(narrow, "?");
    EXPECT_EQ(WideCharToMultiByte(1200, 0, u"a", -1, narrow, 4, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

}  // namespace
