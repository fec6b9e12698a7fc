#include "AudioCodec/shell/CStr.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Mode = CStr::CopyMode;

TEST(CStr, ConvertsEachWayOnceAndKeepsWhatItHad) {
    static constexpr char16_t kLiteral[] = u"\u20AC5 \u00E9";
    CStr text(kLiteral);
    EXPECT_EQ(text.Wide(), kLiteral);  // wrapped, not copied
    const char* const narrow = text.Narrow();
    EXPECT_STREQ(narrow,
                 "\x80"
                 "5 \xE9");
    EXPECT_EQ(text.Narrow(), narrow);
    EXPECT_EQ(text.WideLength(), 4u);

    CStr back("\x80\x99", 2);
    EXPECT_EQ(std::u16string(back.Wide()), u"\u20AC\u2122");
    CStr lost(u"\u30E2x");
    EXPECT_STREQ(lost.Narrow(), "?x");
    CStr none;
    EXPECT_EQ(none.Wide(), nullptr);
    EXPECT_EQ(none.Narrow(), nullptr);
    EXPECT_EQ(none.WideLength(), 0u);
}

TEST(CStr, CopiesShareOrTakeOverByMode) {
    CStr source(u"both", 4);
    source.Narrow();
    const char16_t* const wide = source.Wide();
    CStr deep(source, Mode::Deep);
    EXPECT_NE(deep.Wide(), wide);
    EXPECT_STREQ(deep.Narrow(), "both");
    {
        CStr alias(source, Mode::Alias);
        EXPECT_EQ(alias.Wide(), wide);
    }
    CStr taken(source, Mode::DeepOrTake);
    EXPECT_EQ(taken.Wide(), wide);
    EXPECT_EQ(source.Wide(), wide);  // still borrowed from the new owner
    CStr literal(u"literal");
    CStr copied(literal, Mode::DeepOrTake);
    EXPECT_NE(copied.Wide(), literal.Wide());
    CStr narrow("n", 1);
    CStr moved(std::move(narrow));
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
