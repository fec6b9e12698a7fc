// Text on its way between UTF-16, UTF-8 and the ANSI code page.
#include <gtest/gtest.h>

#include "platform/base/CodePage1252.h"
#include "platform/base/Utf.h"

namespace {

TEST(Utf, FileNamesSurviveTheWayInAndOutAlsoThoseThatAreNoUtf8) {
    EXPECT_EQ(Utf::FromUtf8("a\xC3\xA9\xE3\x83\xA2\xF0\x9F\x8E\xB5"), u"a\u00E9\u30E2\U0001F3B5");
    for (const std::string bytes : {"a\xC3\xA9\xE3\x83\xA2\xF0\x9F\x8E\xB5", "\xFF", "caf\xE9.wav",
                                    "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE3\x83"})
        EXPECT_EQ(Utf::ToUtf8(Utf::FromUtf8(bytes)), bytes);
    EXPECT_EQ(Utf::ToUtf8(std::u16string{0xD800, u'b', 0xDFFF}),
              "\xEF\xBF\xBD\x62\xEF\xBF\xBD");  // as U+FFFD
}

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

}  // namespace
