// Numbers, logicals, units and texts: reading and changing them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/array/arrays.h"

namespace korvex::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const kxArray* readOnly(const Array& array) { return array.get(); }

TEST(ArrayElements, ChangesAreSeenByReaders) {
    const Array numbers(kxCreateDoubleMatrix(2, 2));
    const Array logicals(kxCreateLogicalArray(Dimensions{1, 2}));
    const Array units(kxCreateCharArray(Dimensions{1, 2}));
    kxGetDoubles(numbers.get())[3] = 1.5;
    kxGetLogicals(logicals.get())[1] = true;
    kxGetChars(units.get())[0] = u'\u20AC';
    EXPECT_THAT(kxGetDoubles(readOnly(numbers)), ElementsAre(0, 0, 0, 1.5));
    EXPECT_THAT(kxGetLogicals(readOnly(logicals)), ElementsAre(false, true));
    EXPECT_THAT(kxGetChars(readOnly(units)), ElementsAre(u'\u20AC', u'\0'));
}

TEST(ArrayElements, OfAnEmptyArrayAreNone) {
    const Array numbers(kxCreateDoubleMatrix(0, 3));
    EXPECT_THAT(kxGetDoubles(numbers.get()), IsEmpty());
    EXPECT_THAT(kxGetDoubles(readOnly(numbers)), IsEmpty());
}

TEST(ArrayElements, OfANullArrayRaise) {
    kxArray* const null = nullptr;
    const kxArray* const constNull = nullptr;
    EXPECT_THROW(kxGetDoubles(null), matrix::UsageError);
    EXPECT_THROW(kxGetDoubles(constNull), matrix::UsageError);
    EXPECT_THROW(kxGetLogicals(null), matrix::UsageError);
    EXPECT_THROW(kxGetLogicals(constNull), matrix::UsageError);
    EXPECT_THROW(kxGetChars(null), matrix::UsageError);
    EXPECT_THROW(kxGetChars(constNull), matrix::UsageError);
    EXPECT_THROW(kxGetScalar(null), matrix::UsageError);
    EXPECT_THROW(kxGetStringElement(null, 0), matrix::UsageError);
    EXPECT_THROW(kxSetStringElement(null, 0, u"a"), matrix::UsageError);
}

TEST(ArrayElements, OfAnotherClassRaise) {
    const Array number = scalar(1);
    const Array text = matrix::create(u"a");
    EXPECT_THROW(kxGetDoubles(text.get()), matrix::UsageError);
    EXPECT_THROW(kxGetDoubles(readOnly(text)), matrix::UsageError);
    EXPECT_THROW(kxGetLogicals(number.get()), matrix::UsageError);
    EXPECT_THROW(kxGetLogicals(readOnly(number)), matrix::UsageError);
    EXPECT_THROW(kxGetChars(number.get()), matrix::UsageError);
    EXPECT_THROW(kxGetChars(readOnly(number)), matrix::UsageError);
    EXPECT_THROW(kxGetStringElement(text.get(), 0), matrix::UsageError);
    EXPECT_THROW(kxSetStringElement(text.get(), 0, u"a"), matrix::UsageError);
}

TEST(ArrayElements, AWrongClassIsNamedInTheError) {
    const Array number = scalar(1);
    try {
        kxGetChars(readOnly(number));
        FAIL() << "a double was read as text";
    } catch (const matrix::UsageError& error) {
        EXPECT_THAT(error.what(), HasSubstr("char, not double"));
    }
}

TEST(ArrayElements, OfAnArrayWithSeveralOwnersAreForReadersOnly) {
    const Array numbers = doubleRow({4});
    const Array logical(kxCreateLogicalScalar(true));
    const Array text = matrix::create(u"a");
    const std::array others{sharing(numbers), sharing(logical), sharing(text)};
    EXPECT_THROW(kxGetDoubles(numbers.get()), matrix::UsageError);
    EXPECT_THROW(kxGetLogicals(logical.get()), matrix::UsageError);
    EXPECT_THROW(kxGetChars(text.get()), matrix::UsageError);
    EXPECT_THAT(kxGetDoubles(readOnly(numbers)), ElementsAre(4));
    EXPECT_THAT(kxGetLogicals(readOnly(logical)), ElementsAre(true));
    EXPECT_THAT(kxGetChars(readOnly(text)), ElementsAre(u'a'));
}

TEST(ArrayElements, MayBeChangedAgainByTheLastOwner) {
    const Array numbers = doubleRow({4});
    sharing(numbers).reset();
    kxGetDoubles(numbers.get())[0] = 5;
    EXPECT_THAT(valuesOf(numbers.get()), ElementsAre(5));
}

TEST(ArrayScalar, IsTheFirstElementAsADouble) {
    EXPECT_EQ(kxGetScalar(doubleRow({2.5, 3}).get()), 2.5);
    EXPECT_EQ(kxGetScalar(Array(kxCreateLogicalScalar(true)).get()), 1.0);
    EXPECT_EQ(kxGetScalar(Array(kxCreateLogicalScalar(false)).get()), 0.0);
    EXPECT_EQ(kxGetScalar(matrix::create(u"Az").get()), 65.0);
}

TEST(ArrayScalar, IsNotInEmptyArraysAndOtherClasses) {
    EXPECT_THROW(kxGetScalar(Array(kxCreateDoubleMatrix(0, 1)).get()), matrix::UsageError);
    EXPECT_THROW(kxGetScalar(matrix::create(u"").get()), matrix::UsageError);
    EXPECT_THROW(kxGetScalar(emptyCell(1, 1).get()), matrix::UsageError);
    EXPECT_THROW(kxGetScalar(structure(1, 1, {"a"}).get()), matrix::UsageError);
    EXPECT_THROW(kxGetScalar(strings({u"1"}).get()), matrix::UsageError);
}

TEST(ArrayStrings, AreTextsOrMissing) {
    const Array texts(kxCreateStringArray(Dimensions{2, 2}));
    kxSetStringElement(texts.get(), 0, u"one");
    kxSetStringElement(texts.get(), 3, std::nullopt);
    EXPECT_EQ(kxGetStringElement(texts.get(), 0), u"one");
    EXPECT_EQ(kxGetStringElement(texts.get(), 1), u"");
    EXPECT_EQ(kxGetStringElement(texts.get(), 3), std::nullopt);
}

TEST(ArrayStrings, BeyondTheEndRaiseAndChangeNothing) {
    const Array texts = strings({u"a"});
    EXPECT_THROW(kxGetStringElement(texts.get(), 1), matrix::UsageError);
    EXPECT_THROW(kxSetStringElement(texts.get(), 1, u"b"), matrix::UsageError);
    EXPECT_EQ(kxGetStringElement(texts.get(), 0), u"a");
}

TEST(ArrayStrings, WithSeveralOwnersStay) {
    const Array texts = strings({u"a"});
    const Array second = sharing(texts);
    EXPECT_THROW(kxSetStringElement(texts.get(), 0, u"b"), matrix::UsageError);
    EXPECT_EQ(kxGetStringElement(texts.get(), 0), u"a");
}

}  // namespace
}  // namespace korvex::tests
