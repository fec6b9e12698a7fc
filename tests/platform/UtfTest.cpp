#include "platform/base/Utf.h"

#include <gtest/gtest.h>

namespace {

TEST(Utf, TextOfEveryLengthOfSequenceComesBack) {
    const std::string bytes = "a\xC3\xA9\xE3\x83\xA2\xF0\x9F\x8E\xB5";
    EXPECT_EQ(Utf::FromUtf8(bytes), u"a\u00E9\u30E2\U0001F3B5");
    EXPECT_EQ(Utf::ToUtf8(Utf::FromUtf8(bytes)), bytes);
}

TEST(Utf, FileNamesThatAreNoUtf8SurviveTheWayInAndOut) {
    for (const std::string bytes :
         {"\xFF", "caf\xE9.wav", "\xC0\xAF", "\xED\xA0\x80", "\xE3\x83", "\xF4\x90\x80\x80"})
        EXPECT_EQ(Utf::ToUtf8(Utf::FromUtf8(bytes)), bytes);
}

TEST(Utf, LoneSurrogatesBecomeTheReplacementCharacter) {
    EXPECT_EQ(Utf::ToUtf8(std::u16string{u'a', 0xD800, u'b', 0xDFFF}),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD");
}

}  // namespace
