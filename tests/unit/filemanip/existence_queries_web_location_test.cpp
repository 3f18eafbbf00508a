// How a web location is told, and how its text is made to parse.
#include "io/filesystem/filemanip/existence_queries_web_location.h"

#include <gtest/gtest.h>

#include "platform/storage_vfs.h"

namespace korvex::filemanip {
namespace {

using foundation::storage::vfs::InvalidIRIException;

TEST(WebLocationTest, IsToldByItsSchemeWhateverTheCase) {
    EXPECT_TRUE(isHttpLocation(u"http://x"));
    EXPECT_TRUE(isHttpLocation(u"HTTP://x"));
    EXPECT_TRUE(isHttpLocation(u"hTTps://x"));
    EXPECT_TRUE(isHttpLocation(u"http://"));
    EXPECT_TRUE(isHttpLocation(u"https://"));
}

TEST(WebLocationTest, OtherTextsAreNone) {
    for (const char16_t* text : {u"", u"http:/", u"http:/x", u"ftp://x", u"xhttp://y", u"https:/",
                                 u"https:/x", u"file:///http://", u"\u0130ttp://x"}) {
        EXPECT_FALSE(isHttpLocation(text));
    }
}

TEST(WebLocationTest, TextThatParsesStays) {
    EXPECT_EQ(normalizeHttpLocation(u"HTTP://Host/a"), u"HTTP://Host/a");
    EXPECT_EQ(normalizeHttpLocation(u"memory://box/"), u"memory://box/");
}

TEST(WebLocationTest, SlashIsAddedWhenThatMakesItParse) {
    EXPECT_EQ(normalizeHttpLocation(u"http://host"), u"http://host/");
    EXPECT_EQ(normalizeHttpLocation(u"memory://box"), u"memory://box/");
}

TEST(WebLocationTest, TextThatNeverParsesRaises) {
    EXPECT_THROW(normalizeHttpLocation(u"http://ho st/a"), InvalidIRIException);
    EXPECT_THROW(normalizeHttpLocation(u"http://ho st"), InvalidIRIException);
    EXPECT_THROW(normalizeHttpLocation(u"http://host?q=x"), InvalidIRIException);
    EXPECT_THROW(normalizeHttpLocation(u"http://host#part"), InvalidIRIException);
}

TEST(WebLocationTest, SlashOrStarAtTheEndIsNotTriedAgain) {
    for (const char16_t* text : {u"http:///", u"http://host*"}) {
        try {
            normalizeHttpLocation(text);
            FAIL() << "parsed";
        } catch (const InvalidIRIException& error) {
            EXPECT_EQ(error.getInvalidIRIString(), text);
        }
    }
}

TEST(WebLocationTest, SecondTryNamesTheTextThatItTried) {
    try {
        normalizeHttpLocation(u"http://ho st");
        FAIL() << "parsed";
    } catch (const InvalidIRIException& error) {
        EXPECT_EQ(error.getInvalidIRIString(), u"http://ho st/");
    }
}

}  // namespace
}  // namespace korvex::filemanip
