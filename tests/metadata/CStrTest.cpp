#include "AudioCodec/shell/object/CStr.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Mode = CStr::CopyMode;

TEST(CStr, ConvertsEachWayOnceAndKeepsWhatItHad) {
    static constexpr char16_t kLiteral[] = u"\u20AC \u00E9 \u30E2";
    CStr text(kLiteral);
    EXPECT_EQ(text.Wide(), kLiteral);  // wrapped, not copied
    const char* const narrow = text.Narrow();
    EXPECT_STREQ(narrow, "\x80 \xE9 ?");
    EXPECT_EQ(text.Narrow(), narrow);
    EXPECT_EQ(text.WideLength(), 5u);
    EXPECT_EQ(std::u16string(CStr("\x80\x99", 2).Wide()), u"\u20AC\u2122");
    CStr none;
    EXPECT_TRUE(!none.Wide() && !none.Narrow() && none.WideLength() == 0);
}

TEST(CStr, CopiesShareOrTakeOverByMode) {
    CStr source(u"both", 4);
    source.Narrow();
    const char16_t* const wide = source.Wide();
    CStr deep(source, Mode::Deep);
    EXPECT_NE(deep.Wide(), wide);
    EXPECT_STREQ(deep.Narrow(), "both");
    EXPECT_EQ(CStr(source, Mode::Alias).Wide(), wide);
    CStr taken(source, Mode::DeepOrTake);
    EXPECT_EQ(taken.Wide(), wide);
    EXPECT_EQ(source.Wide(), wide);  // still borrowed from the new owner
    CStr literal(u"literal");
    EXPECT_NE(CStr(literal, Mode::DeepOrTake).Wide(), literal.Wide());
    CStr moved;
    {
        CStr narrow("n", 1);
        moved = CStr(std::move(narrow));
    }
    EXPECT_STREQ(moved.Narrow(), "n");
}

TEST(CStr, ComparesExactlyInTheFormThatBothHave) {
    CStr wide(u"abc");
    CStr narrow("abc", 3);
    CStr upper("ABC", 3);
    CStr high("\xE9", 1);
    CStr none;
    CStr empty(u"");
    EXPECT_EQ(wide.Compare(narrow), 0);
    EXPECT_EQ(narrow.Compare(upper), 1);
    EXPECT_EQ(upper.Compare(high), -1);  // bytes are unsigned
    EXPECT_EQ(none.Compare(empty), -1);
    EXPECT_EQ(empty.Compare(none), 1);
    EXPECT_EQ(none.Compare(none), 0);
    EXPECT_EQ(empty.Compare(wide), -1);
}

}  // namespace
