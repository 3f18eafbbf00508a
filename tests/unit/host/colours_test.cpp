// Where colours are wanted.
#include "host/kwsh/colours.h"

#include <gtest/gtest.h>

namespace korvex::host {
namespace {

TEST(Colours, AreForTerminalsByThemselves) {
    EXPECT_TRUE(isColoured(ColourChoice::automatic, {true, false, false}));
    EXPECT_FALSE(isColoured(ColourChoice::automatic, {false, false, false}));
    EXPECT_FALSE(isColoured(ColourChoice::automatic, {true, true, false}));
    EXPECT_FALSE(isColoured(ColourChoice::automatic, {true, false, true}));
}

TEST(Colours, AChoiceCountsMoreThanTheSurroundings) {
    EXPECT_TRUE(isColoured(ColourChoice::always, {false, true, true}));
    EXPECT_FALSE(isColoured(ColourChoice::never, {true, false, false}));
}

TEST(Colours, TextStaysAsItIsWithoutThem) {
    EXPECT_EQ(accented(Accent::error, u"Error:", false), u"Error:");
    EXPECT_EQ(accented(Accent::error, u"Error:", true), u"\x1B[1;31mError:\x1B[0m");
    EXPECT_EQ(accented(Accent::heading, u"", true), u"");
}

}  // namespace
}  // namespace korvex::host
