// Text on its way between UTF-16, UTF-8 and the ANSI code page, and what is looked for in paths.
#include <gtest/gtest.h>

#include "platform/base/CodePage1252.h"
#include "platform/base/LastError.h"
#include "platform/base/Utf.h"
#include "platform/file/Paths.h"

namespace {

TEST(Utf, TextOfEveryLengthOfSequenceComesBack) {
    const std::string bytes = "a\xC3\xA9\xE3\x83\xA2\xF0\x9F\x8E\xB5";
    EXPECT_EQ(Utf::FromUtf8(bytes), u"a\u00E9\u30E2\U0001F3B5");
    EXPECT_EQ(Utf::ToUtf8(Utf::FromUtf8(bytes)), bytes);
}

TEST(Utf, FileNamesThatAreNoUtf8SurviveTheWayInAndOut) {
    for (const std::string bytes : {"\xFF", "caf\xE9.wav", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80"})
        EXPECT_EQ(Utf::ToUtf8(Utf::FromUtf8(bytes)), bytes);
    EXPECT_EQ(Utf::ToUtf8(Utf::FromUtf8(std::string_view("\xE3\x83\xA2", 2))), "\xE3\x83");  // cut off
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

TEST(Paths, TheExtensionIsWhatFollowsTheLastDotOfTheLastPart) {
    const std::pair<std::u16string, std::u16string> rows[] = {{u"/a.b/song.tar.aif", u".aif"},
                                                              {u"/a.b/song", u""},
                                                              {u"song.", u"."},
                                                              {u".hidden", u".hidden"},
                                                              {u"song.a if", u""},
                                                              {u"a song.aif", u".aif"},
                                                              {u"", u""}};
    for (const auto& [path, extension] : rows)
        EXPECT_EQ(PathFindExtensionW(path.c_str()), path.c_str() + path.size() - extension.size());
    EXPECT_EQ(PathFindExtensionW(nullptr), nullptr);
}

TEST(Paths, ComparesAsciiLettersWithoutCase) {
    EXPECT_EQ(lstrcmpiW(u".AIF", u".aif"), 0);
    EXPECT_LT(lstrcmpiW(u".aif", u".aifc"), 0);
    EXPECT_GT(lstrcmpiW(u".b", u".A"), 0);
    EXPECT_NE(lstrcmpiW(u"[", u"{"), 0);  // next to the letters
    EXPECT_NE(lstrcmpiW(u"\u00C9", u"\u00E9"), 0);
}

}  // namespace
