// Widths, lines and columns.
#include "host/kwsh/text_layout.h"

#include <gmock/gmock.h>

namespace korvex::host {
namespace {

using testing::ElementsAre;

TEST(TextWidth, CountsPlacesOnTheScreen) {
    EXPECT_EQ(widthOf(u"abc"), 3U);
    EXPECT_EQ(widthOf(u"gr\u00FC\u00DF"), 4U);
    EXPECT_EQ(widthOf(u"u\u0308"), 1U);
    EXPECT_EQ(widthOf(u"\u6F22\u5B57"), 4U);
    EXPECT_EQ(widthOf(u"\U0001F600"), 2U);
    EXPECT_EQ(widthOf(std::u16string{u'a', 0xDCFF}), 2U);
    EXPECT_EQ(widthOf(u""), 0U);
}

TEST(TextWidth, PartsThatFitCutNoCharacter) {
    EXPECT_EQ(beginThatFits(u"abcdef", 3), u"abc");
    EXPECT_EQ(endThatFits(u"abcdef", 3), u"def");
    EXPECT_EQ(beginThatFits(u"a\U0001F600b", 2), u"a");
    EXPECT_EQ(endThatFits(u"a\U0001F600b", 2), u"b");
    EXPECT_EQ(endThatFits(u"abc", 9), u"abc");
    EXPECT_EQ(endThatFits(u"abc", 0), u"");
}

TEST(WrappedText, BreaksAtBlanks) {
    EXPECT_THAT(wrapped(u"one two  three", 8), ElementsAre(u"one two", u"three"));
    EXPECT_THAT(wrapped(u"a-very-long-word b", 4), ElementsAre(u"a-very-long-word", u"b"));
    EXPECT_THAT(wrapped(u"  ", 4), ElementsAre(u""));
}

TEST(TextColumns, RunDown) {
    EXPECT_EQ(inColumns({u"a", u"b", u"c", u"d", u"e"}, 7), u"a  c  e\nb  d\n");
    EXPECT_EQ(inColumns({u"long name", u"b"}, 5), u"long name\nb\n");
    EXPECT_EQ(inColumns({}, 80), u"");
}

}  // namespace
}  // namespace korvex::host
