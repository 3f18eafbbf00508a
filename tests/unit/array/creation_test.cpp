// Making arrays: what they start with, and what cannot be made.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "tests/unit/array/arrays.h"

namespace korvex::tests {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using Creator = kxArray* (*)(std::span<const std::size_t>);

kxArray* createPlainStructArray(std::span<const std::size_t> dimensions) {
    static constexpr std::array<const char*, 2> fields{"a", "b"};
    return kxCreateStructArray(dimensions, fields);
}

struct ClassCase {
    const char* name;
    int number;
    Creator create;
};

class EveryClass : public ::testing::TestWithParam<ClassCase> {};

INSTANTIATE_TEST_SUITE_P(ArrayCreation, EveryClass,
                         ::testing::Values(ClassCase{"cell", 1, kxCreateCellArray},
                                           ClassCase{"struct", 2, createPlainStructArray},
                                           ClassCase{"logical", 3, kxCreateLogicalArray},
                                           ClassCase{"char", 4, kxCreateCharArray},
                                           ClassCase{"double", 6, kxCreateDoubleArray},
                                           ClassCase{"string", 19, kxCreateStringArray}),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(EveryClass, HasItsNumberAndItsName) {
    const Array array(GetParam().create(Dimensions{2, 3}));
    EXPECT_EQ(static_cast<int>(kxGetClassID(array.get())), GetParam().number);
    EXPECT_STREQ(kxGetClassName(array.get()), GetParam().name);
}

TEST_P(EveryClass, StartsWithOneReferenceAndTheShapeAskedFor) {
    const Array array(GetParam().create(Dimensions{2, 3, 4}));
    EXPECT_EQ(kxGetReferenceCount(array.get()), 1u);
    EXPECT_THAT(kxGetDimensions(array.get()), ElementsAre(2, 3, 4));
    EXPECT_EQ(kxGetNumberOfElements(array.get()), 24u);
}

TEST_P(EveryClass, DropsTrailingDimensionsOfOneBehindTheSecond) {
    EXPECT_THAT(dimensionsOf(Array(GetParam().create(Dimensions{2, 3, 1, 1}))), ElementsAre(2, 3));
    EXPECT_THAT(dimensionsOf(Array(GetParam().create(Dimensions{1, 1, 1}))), ElementsAre(1, 1));
    EXPECT_THAT(dimensionsOf(Array(GetParam().create(Dimensions{1, 1, 2, 1}))), ElementsAre(1, 1, 2));
}

TEST_P(EveryClass, MayBeEmptyInAnyDimension) {
    for (const Dimensions& dimensions :
         {Dimensions{0, 0}, Dimensions{0, 1}, Dimensions{5, 0}, Dimensions{2, 0, 3}}) {
        const Array array(GetParam().create(dimensions));
        EXPECT_EQ(dimensionsOf(array), dimensions);
        EXPECT_TRUE(kxIsEmpty(array.get()));
    }
}

TEST_P(EveryClass, NeedsTwoDimensions) {
    EXPECT_THROW(GetParam().create({}), matrix::UsageError);
    EXPECT_THROW(GetParam().create(Dimensions{4}), matrix::UsageError);
}

TEST_P(EveryClass, RefusesMoreElementsThanCanBeCounted) {
    EXPECT_THROW(GetParam().create(Dimensions{tooMany, 2}), matrix::UsageError);
    EXPECT_THROW(GetParam().create(Dimensions{tooMany / 2 + 1, 1, 2}), matrix::UsageError);
    EXPECT_THROW(GetParam().create(Dimensions{0, tooMany, 2}), matrix::UsageError);
}

TEST_P(EveryClass, RefusesMoreBytesThanABlockCanHave) {
    EXPECT_THROW(GetParam().create(Dimensions{tooMany, 1}), matrix::UsageError);
    EXPECT_THROW(GetParam().create(Dimensions{1, static_cast<std::size_t>(PTRDIFF_MAX) + 1}),
                 matrix::UsageError);
}

TEST_P(EveryClass, TakesAnyDimensionsWhereOneOfThemIsZero) {
    const Array array(GetParam().create(Dimensions{tooMany, tooMany, 0}));
    EXPECT_EQ(kxGetNumberOfElements(array.get()), 0u);
}

TEST(ArrayCreation, NumbersLogicalsAndUnitsStartAsZero) {
    const Array numbers(kxCreateDoubleArray(Dimensions{10, 100}));
    const Array logicals(kxCreateLogicalArray(Dimensions{3, 5}));
    const Array units(kxCreateCharArray(Dimensions{2, 2}));
    EXPECT_THAT(kxGetDoubles(numbers.get()), Each(0.0));
    EXPECT_THAT(kxGetLogicals(logicals.get()), Each(false));
    EXPECT_THAT(kxGetChars(units.get()), ElementsAre(u'\0', u'\0', u'\0', u'\0'));
}

TEST(ArrayCreation, CellsAndFieldsStartAsNull) {
    const Array cell = emptyCell(40, 2);
    const Array record = structure(40, 1, {"a", "b"});
    for (std::size_t index = 0; index < 80; ++index)
        EXPECT_EQ(kxGetCell(cell.get(), index), nullptr);
    for (std::size_t index = 0; index < 40; ++index) {
        EXPECT_EQ(kxGetFieldByNumber(record.get(), index, 1), nullptr);
    }
}

TEST(ArrayCreation, StringsStartAsTheEmptyTextAndNotAsMissing) {
    const Array texts(kxCreateStringArray(Dimensions{2, 1}));
    EXPECT_EQ(kxGetStringElement(texts.get(), 0), u"");
    EXPECT_EQ(kxGetStringElement(texts.get(), 1), u"");
}

TEST(ArrayCreation, MatricesHaveTheirRowsAndColumns) {
    EXPECT_THAT(dimensionsOf(Array(kxCreateDoubleMatrix(3, 2))), ElementsAre(3, 2));
    EXPECT_THAT(dimensionsOf(Array(kxCreateCellMatrix(0, 4))), ElementsAre(0, 4));
    EXPECT_THAT(dimensionsOf(structure(2, 5, {"x"})), ElementsAre(2, 5));
    EXPECT_THROW(kxCreateDoubleMatrix(tooMany, 2), matrix::UsageError);
    EXPECT_THROW(kxCreateCellMatrix(tooMany, 1), matrix::UsageError);
}

TEST(ArrayCreation, ScalarsHoldTheirValue) {
    EXPECT_THAT(valuesOf(scalar(2.5).get()), ElementsAre(2.5));
    const Array yes(kxCreateLogicalScalar(true));
    EXPECT_THAT(kxGetLogicals(yes.get()), ElementsAre(true));
    EXPECT_THAT(dimensionsOf(yes), ElementsAre(1, 1));
}

TEST(ArrayCreation, AStructureMayHaveNoFields) {
    const Array record(kxCreateStructMatrix(2, 3, 0, nullptr));
    EXPECT_EQ(kxGetNumberOfFields(record.get()), 0);
    EXPECT_EQ(kxGetNumberOfElements(record.get()), 6u);
}

TEST(ArrayCreation, AStructureNeedsProperFieldNames) {
    const std::array<const char*, 2> twice{"a", "a"};
    const std::array<const char*, 2> absent{"a", nullptr};
    EXPECT_THROW(kxCreateStructMatrix(1, 1, 2, twice.data()), matrix::UsageError);
    EXPECT_THROW(kxCreateStructArray(Dimensions{1, 1}, absent), matrix::UsageError);
    EXPECT_THROW(kxCreateStructMatrix(1, 1, 1, nullptr), matrix::UsageError);
    EXPECT_THROW(kxCreateStructMatrix(1, 1, -1, twice.data()), matrix::UsageError);
}

TEST(ArrayCreation, FieldNamesAreCopied) {
    std::string name = "colour";
    const Array record = structure(1, 1, {name.c_str()});
    name = "shape";
    EXPECT_STREQ(kxGetFieldNameByNumber(record.get(), 0), "colour");
}

TEST(ArrayCreation, ACharacterRowComesFromUtf8) {
    const Array text(kxCreateString("a\xC3\xA4\xF0\x9F\x98\x80"));
    EXPECT_EQ(textOf(text.get()), u"a\u00E4\U0001F600");
    EXPECT_THAT(dimensionsOf(text), ElementsAre(1, 4));
}

TEST(ArrayCreation, BytesThatAreNoUtf8BecomeUnpairedUnits) {
    const Array text(kxCreateString("a\xFFz"));
    EXPECT_EQ(textOf(text.get()), (std::u16string{u'a', char16_t{0xDCFF}, u'z'}));
}

TEST(ArrayCreation, NoTextGivesAnEmptyMatrix) {
    EXPECT_THAT(dimensionsOf(Array(kxCreateString(""))), ElementsAre(0, 0));
    EXPECT_THAT(dimensionsOf(Array(kxCreateString(nullptr))), ElementsAre(0, 0));
    EXPECT_THAT(dimensionsOf(matrix::create(u"")), ElementsAre(0, 0));
}

TEST(ArrayCreation, CreateKeepsEveryUnit) {
    const std::u16string text(500, u'x');
    EXPECT_EQ(textOf(matrix::create(text).get()), text);
    EXPECT_EQ(textOf(matrix::create(std::u16string_view(u"a\0b", 3)).get()), std::u16string(u"a\0b", 3));
}

TEST(ArrayCreation, AStringScalarIsATextOrMissing) {
    const Array text(kxCreateStringScalar(u"path"));
    const Array missing(kxCreateStringScalar(std::nullopt));
    EXPECT_EQ(kxGetStringElement(text.get(), 0), u"path");
    EXPECT_EQ(kxGetStringElement(missing.get(), 0), std::nullopt);
    EXPECT_THAT(dimensionsOf(missing), ElementsAre(1, 1));
}

TEST(ArrayCreation, HandingOverKeepsTheReference) {
    Array owner = scalar(7);
    kxArray* const expected = owner.get();
    const Array handed(matrix::to_korvex(std::move(owner)));
    EXPECT_EQ(handed.get(), expected);
    EXPECT_EQ(kxGetReferenceCount(handed.get()), 1u);
    EXPECT_EQ(matrix::to_korvex(nullptr), nullptr);
}

TEST(ArrayCreation, AMisuseNamesTheFunctionAndTheFault) {
    try {
        kxCreateCellArray(Dimensions{4});
        FAIL() << "one dimension was accepted";
    } catch (const matrix::UsageError& error) {
        EXPECT_THAT(error.what(), HasSubstr("kxCreateCellArray"));
        EXPECT_THAT(error.what(), HasSubstr("two or more dimensions"));
    }
}

}  // namespace
}  // namespace korvex::tests
