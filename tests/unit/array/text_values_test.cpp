// Which values count as texts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/string_matrix.h"
#include "tests/unit/array/arrays.h"

namespace korvex::tests {
namespace {

namespace text = Velquist::String;
using ::testing::ElementsAre;

constexpr auto strict = text::characterVectorsOnly;
constexpr auto tolerant = text::anyCharacterArray;

struct Expectation {
    const char* name;
    Array (*make)();
    bool strictText, tolerantText;          // isNonMissingScalarText
    bool strictNonEmpty, tolerantNonEmpty;  // isNonEmptyScalarText
    bool scalarRow, scalarAny;              // isScalarText(rowsOnly, rejectMissing false)
    bool missing, isString, isVector;
};

Array noArray() { return nullptr; }
Array row() { return matrix::create(u"ab"); }
Array emptyText() { return matrix::create(u""); }
Array emptyRow() { return charArray({1, 0}); }
Array noRowsThreeColumns() { return charArray({0, 3}); }
Array column() { return charArray({3, 1}); }
Array emptyColumn() { return charArray({0, 1}); }
Array page() { return charArray({2, 2}); }
Array rowOfPages() { return charArray({1, 2, 2}); }
Array emptyPages() { return charArray({0, 0, 2}); }
Array string() { return strings({u"ab"}); }
Array emptyString() { return strings({u""}); }
Array missingString() { return strings({std::nullopt}); }
Array twoStrings() { return strings({u"a", u"b"}); }
Array noStrings() { return strings({}); }
Array number() { return scalar(65); }
Array logical() { return Array(kxCreateLogicalScalar(true)); }
Array cell() { return emptyCell(1, 1); }
Array record() { return structure(1, 1, {"a"}); }

constexpr bool yes = true;
constexpr bool no = false;

// clang-format off
const Expectation expectations[] = {
    //                                          text       not empty  scalar
    {"null",               noArray,             no,  no,   no,  no,   no,  no,   no,  no,  no},
    {"row",                row,                 yes, yes,  yes, yes,  yes, yes,  no,  no,  yes},
    {"emptyText",          emptyText,           yes, yes,  no,  no,   yes, yes,  no,  no,  yes},
    {"emptyRow",           emptyRow,            yes, yes,  no,  no,   yes, yes,  no,  no,  yes},
    {"noRowsThreeColumns", noRowsThreeColumns,  no,  yes,  no,  no,   no,  yes,  no,  no,  no},
    {"column",             column,              no,  yes,  no,  yes,  no,  yes,  no,  no,  no},
    {"emptyColumn",        emptyColumn,         no,  yes,  no,  no,   no,  yes,  no,  no,  no},
    {"page",               page,                no,  yes,  no,  yes,  no,  yes,  no,  no,  no},
    {"rowOfPages",         rowOfPages,          no,  yes,  no,  yes,  no,  yes,  no,  no,  no},
    {"emptyPages",         emptyPages,          no,  yes,  no,  no,   no,  yes,  no,  no,  no},
    {"string",             string,              yes, yes,  yes, yes,  yes, yes,  no,  yes, no},
    {"emptyString",        emptyString,         yes, yes,  no,  no,   yes, yes,  no,  yes, no},
    {"missingString",      missingString,       no,  no,   no,  no,   yes, yes,  yes, yes, no},
    {"twoStrings",         twoStrings,          no,  no,   no,  no,   no,  no,   no,  yes, no},
    {"noStrings",          noStrings,           no,  no,   no,  no,   no,  no,   no,  yes, no},
    {"number",             number,              no,  no,   no,  no,   no,  no,   no,  no,  no},
    {"logical",            logical,             no,  no,   no,  no,   no,  no,   no,  no,  no},
    {"cell",               cell,                no,  no,   no,  no,   no,  no,   no,  no,  no},
    {"record",             record,              no,  no,   no,  no,   no,  no,   no,  no,  no},
};
// clang-format on

class TextValues : public ::testing::TestWithParam<Expectation> {
protected:
    const Array value = GetParam().make();
};

INSTANTIATE_TEST_SUITE_P(Of, TextValues, ::testing::ValuesIn(expectations),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(TextValues, AreNonMissingScalarTextByTolerance) {
    EXPECT_EQ(text::isNonMissingScalarText(value.get(), strict), GetParam().strictText);
    EXPECT_EQ(text::isNonMissingScalarText(value.get(), tolerant), GetParam().tolerantText);
}

TEST_P(TextValues, AreNonEmptyScalarTextByTolerance) {
    EXPECT_EQ(text::isNonEmptyScalarText(value.get(), strict), GetParam().strictNonEmpty);
    EXPECT_EQ(text::isNonEmptyScalarText(value.get(), tolerant), GetParam().tolerantNonEmpty);
}

TEST_P(TextValues, AreScalarTextWithOrWithoutOtherShapes) {
    EXPECT_EQ(text::isScalarText(value.get(), true, false), GetParam().scalarRow);
    EXPECT_EQ(text::isScalarText(value.get(), false, false), GetParam().scalarAny);
}

TEST_P(TextValues, AreNoScalarTextWhenMissingIsTurnedAway) {
    EXPECT_EQ(text::isScalarText(value.get(), true, true), GetParam().strictText);
    EXPECT_EQ(text::isScalarText(value.get(), false, true), GetParam().tolerantText);
}

TEST_P(TextValues, TellTheirKind) {
    EXPECT_EQ(text::isMissingScalarString(value.get()), GetParam().missing);
    EXPECT_EQ(text::isString(value.get()), GetParam().isString);
    EXPECT_EQ(text::isCharacterVector(value.get()), GetParam().isVector);
}

TEST(TextShape, FollowsAChangeOfTheArray) {
    const Array units = charArray({1, 4});
    kxSetDimensions(units.get(), Dimensions{2, 2});
    EXPECT_FALSE(text::isNonMissingScalarText(units.get(), strict));
    const Array texts = twoStrings();
    kxSetN(texts.get(), 1);
    EXPECT_TRUE(text::isNonMissingScalarText(texts.get(), strict));
}

TEST(StringViews, ShowTheElements) {
    const Array texts = strings({u"a", std::nullopt});
    const text::StringView view = text::getString(texts.get());
    EXPECT_THAT(view.dimensions(), ElementsAre(1, 2));
    EXPECT_EQ(view.size(), 2u);
    EXPECT_EQ(view[0], u"a");
    EXPECT_EQ(view[1], std::nullopt);
    EXPECT_THROW(view[2], matrix::UsageError);
}

TEST(StringViews, OfOtherClassesRaise) {
    EXPECT_THROW(text::getString(nullptr), matrix::UsageError);
    EXPECT_THROW(text::getString(row().get()), matrix::UsageError);
    EXPECT_THROW(text::getString(cell().get()), matrix::UsageError);
}

// Tells which operator it was handed to, and the texts found.
struct NamingVisitor {
    template <text::TextDispatch::Access access>
    std::u16string operator()(const text::TextDispatch::Wrappers::StringWrapper<access>& found) const {
        return u"string:" + found[0].value_or(u"missing");
    }
    template <text::TextDispatch::Access access>
    std::u16string operator()(const text::TextDispatch::Wrappers::CharVectorWrapper<access>& found) const {
        return u"char:" + std::u16string(found.text());
    }
    template <text::TextDispatch::Access access>
    std::u16string operator()(const text::TextDispatch::Wrappers::StrictCellWrapper<access>& found) const {
        std::u16string all = u"cell:";
        for (std::size_t index = 0; index < found.size(); ++index)
            all += found[index].value_or(u"?");
        return all;
    }
};

TEST(TextDispatch, HandsEachKindToItsOperator) {
    EXPECT_EQ(text::TextDispatch::dispatch(string().get(), NamingVisitor()), u"string:ab");
    EXPECT_EQ(text::TextDispatch::dispatch(missingString().get(), NamingVisitor()), u"string:missing");
    EXPECT_EQ(text::TextDispatch::dispatch(row().get(), NamingVisitor()), u"char:ab");
    EXPECT_EQ(text::TextDispatch::dispatch(emptyText().get(), NamingVisitor()), u"char:");
}

TEST(TextDispatch, ShowsCellsWithWhatIsNoTextInThem) {
    const Array mixed = emptyCell(1, 4);
    kxSetCell(mixed.get(), 0, kxCreateString("x"));
    kxSetCell(mixed.get(), 1, kxCreateDoubleScalar(1));
    kxSetCell(mixed.get(), 3, column().release());
    EXPECT_EQ(text::TextDispatch::dispatch(mixed.get(), NamingVisitor()), u"cell:x???");
}

TEST(TextDispatch, RaisesForEverythingElse) {
    using text::TextDispatch::NotText;
    EXPECT_THROW(text::TextDispatch::dispatch(nullptr, NamingVisitor()), NotText);
    EXPECT_THROW(text::TextDispatch::dispatch(number().get(), NamingVisitor()), NotText);
    EXPECT_THROW(text::TextDispatch::dispatch(page().get(), NamingVisitor()), NotText);
    EXPECT_THROW(text::TextDispatch::dispatch(record().get(), NamingVisitor()), NotText);
}

}  // namespace
}  // namespace korvex::tests
