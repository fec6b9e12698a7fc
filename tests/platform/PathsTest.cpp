#include "platform/file/Paths.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Paths, TheExtensionIsWhatFollowsTheLastDotOfTheLastPart) {
    struct Case {
        std::u16string path, extension;
    };
    for (const Case& c : {Case{u"/a.b/song.tar.aif", u".aif"},
                          {u"/a.b/song", u""},
                          {u"song.", u"."},
                          {u".hidden", u".hidden"},
                          {u"song.a if", u""},
                          {u"a song.aif", u".aif"},
                          {u"", u""}}) {
        const WCHAR* found = PathFindExtensionW(c.path.c_str());
        EXPECT_EQ(found, c.extension);
        EXPECT_EQ(found, c.path.c_str() + c.path.size() - c.extension.size());
    }
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
