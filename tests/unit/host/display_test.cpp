// How values look; the sessions show most of it, here is what no statement can make.
#include "host/kwsh/display.h"

#include <gtest/gtest.h>

#include <array>

#include "host/kwsh/values.h"

namespace korvex::host {
namespace {

Value fileEntry(std::size_t rows) {
    constexpr std::array names = {"name", "bytes", "isdir"};
    Value entries(kxCreateStructMatrix(rows, 1, 3, names.data()));
    for (std::size_t row = 0; row < rows; ++row) {
        kxSetField(entries.get(), row, "name", makeText(u"a.txt").release());
        kxSetField(entries.get(), row, "bytes", makeDouble(12).release());
        kxSetField(entries.get(), row, "isdir", makeLogical(false).release());
    }
    return entries;
}

TEST(Display, AStructureIsShownFieldByField) {
    EXPECT_EQ(displayText("s", fileEntry(1).get(), 80),
              u"s =\n    name: 'a.txt'\n    bytes: 12\n    isdir: 0\n");
}

TEST(Display, SeveralStructuresAreShownAsSizeAndFieldNames) {
    EXPECT_EQ(displayText("s", fileEntry(3).get(), 80),
              u"s =\n    3x1 struct with fields:\n        name\n        bytes\n        isdir\n");
    EXPECT_EQ(displayText("s", fileEntry(0).get(), 80),
              u"s =\n    0x1 struct with fields:\n        name\n        bytes\n        isdir\n");
}

TEST(Display, AFieldThatWasNeverSetIsAnEmptyDouble) {
    constexpr std::array names = {"name"};
    const Value structure(kxCreateStructMatrix(1, 1, 1, names.data()));
    EXPECT_EQ(displayText("s", structure.get(), 80), u"s =\n    name: 0x0 double\n");
}

TEST(Display, ShortFormsFitOnOneLine) {
    EXPECT_EQ(shortForm(makeText(u"it's").get()), u"'it''s'");
    EXPECT_EQ(shortForm(makeText(u"").get()), u"''");
    EXPECT_EQ(shortForm(makeString(u"a\"b").get()), u"\"a\"\"b\"");
    EXPECT_EQ(shortForm(makeString(std::nullopt).get()), u"<missing>");
    EXPECT_EQ(shortForm(makeArray(kxCHAR_CLASS, {1, 0}).get()), u"1x0 char");
    EXPECT_EQ(shortForm(makeArray(kxDOUBLE_CLASS, {1, 8}).get()), u"[0 0 0 0 0 0 0 0]");
    EXPECT_EQ(shortForm(makeArray(kxDOUBLE_CLASS, {1, 9}).get()), u"1x9 double");
    EXPECT_EQ(shortForm(makeArray(kxCELL_CLASS, {2, 2}).get()), u"2x2 cell");
    EXPECT_EQ(shortForm(fileEntry(2).get()), u"2x1 struct");
}

TEST(Display, ControlCharactersNeverReachTheTerminal) {
    using namespace std::string_view_literals;
    EXPECT_EQ(displayText("x", makeText(u"a\u001b[2Jb\0\u007f\u009b"sv).get(), 80),
              u"x =\n    a\u241b[2Jb\u2400\u2421\ufffd\n");
}

TEST(Display, ColumnsLineUpByCharactersNotByUnits) {
    Value strings = makeArray(kxSTRING_CLASS, {2, 2});
    kxSetStringElement(strings.get(), 0, u"\U0001D400");
    kxSetStringElement(strings.get(), 1, u"ab");
    kxSetStringElement(strings.get(), 2, u"x");
    kxSetStringElement(strings.get(), 3, u"y");
    EXPECT_EQ(displayText("x", strings.get(), 80),
              u"x =\n    \"\U0001D400\"     \"x\"\n    \"ab\"    \"y\"\n");
}

TEST(Display, AColumnWiderThanTheWindowIsShownAlone) {
    Value strings = makeArray(kxSTRING_CLASS, {1, 2});
    kxSetStringElement(strings.get(), 0, std::u16string(30, u'a'));
    kxSetStringElement(strings.get(), 1, u"b");
    EXPECT_EQ(displayText("x", strings.get(), 10),
              u"x =\n  (column 1)\n    \"" + std::u16string(30, u'a') + u"\"\n  (column 2)\n    \"b\"\n");
}

TEST(NumberText, ReadsBackAndShowsWholeNumbersPlainly) {
    EXPECT_EQ(numberText(0.1), "0.1");
    EXPECT_EQ(numberText(1e5), "100000");
    EXPECT_EQ(numberText(999999999999999.0), "999999999999999");
    EXPECT_EQ(numberText(1e15), "1e+15");
    EXPECT_EQ(numberText(738000.123456789), "738000.123456789");
    EXPECT_EQ(numberText(-0.0), "-0");
    EXPECT_EQ(numberText(5e-324), "5e-324");
}

}  // namespace
}  // namespace korvex::host
