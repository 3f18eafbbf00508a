// References, classes and shapes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/array/arrays.h"

namespace korvex::tests {
namespace {

using ::testing::ElementsAre;

TEST(ArrayReferences, AreCountedUpAndDown) {
    const Array array = scalar(1);
    {
        const Array second = sharing(array);
        EXPECT_EQ(second.get(), array.get());
        EXPECT_EQ(kxGetReferenceCount(array.get()), 2u);
    }
    EXPECT_EQ(kxGetReferenceCount(array.get()), 1u);
}

TEST(ArrayReferences, DestroyingNothingIsAllowed) { EXPECT_NO_THROW(kxDestroyArray(nullptr)); }

TEST(ArrayReferences, OfANullArrayRaise) {
    EXPECT_THROW(kxCreateReference(nullptr), matrix::UsageError);
    EXPECT_THROW(kxGetReferenceCount(nullptr), matrix::UsageError);
    EXPECT_THROW(kxDuplicateArray(nullptr), matrix::UsageError);
}

TEST(ArrayShape, OfANullArrayRaises) {
    EXPECT_THROW(kxGetClassID(nullptr), matrix::UsageError);
    EXPECT_THROW(kxGetClassName(nullptr), matrix::UsageError);
    EXPECT_THROW(kxGetDimensions(nullptr), matrix::UsageError);
    EXPECT_THROW(kxGetNumberOfElements(nullptr), matrix::UsageError);
    EXPECT_THROW(kxIsEmpty(nullptr), matrix::UsageError);
    EXPECT_THROW(kxGetM(nullptr), matrix::UsageError);
    EXPECT_THROW(kxGetN(nullptr), matrix::UsageError);
    EXPECT_THROW(kxSetM(nullptr, 1), matrix::UsageError);
    EXPECT_THROW(kxSetN(nullptr, 1), matrix::UsageError);
    EXPECT_THROW(kxSetDimensions(nullptr, Dimensions{1, 1}), matrix::UsageError);
}

TEST(ArrayShape, ColumnsAreTheProductOfAllDimensionsBehindTheFirst) {
    const Array array(kxCreateDoubleArray(Dimensions{2, 3, 4, 5}));
    EXPECT_EQ(kxGetM(array.get()), 2u);
    EXPECT_EQ(kxGetN(array.get()), 60u);
    EXPECT_FALSE(kxIsEmpty(array.get()));
}

TEST(ArrayShape, ReplacingTheColumnsAndRestoringThemKeepsEveryElement) {
    const Array array = doubleRow({1, 2, 3, 4, 5});
    const std::size_t columns = kxGetN(array.get());
    kxSetN(array.get(), 1);
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(1));
    kxSetN(array.get(), columns);
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(1, 2, 3, 4, 5));
}

TEST(ArrayShape, ElementsOutsideTheShapeKeepTheirReferences) {
    const Array element = scalar(3);
    const Array cell = emptyCell(1, 3);
    for (std::size_t index = 0; index < 3; ++index)
        kxSetCell(cell.get(), index, sharing(element).release());
    kxSetN(cell.get(), 1);
    EXPECT_THROW(kxGetCell(cell.get(), 2), matrix::UsageError);
    EXPECT_EQ(kxGetReferenceCount(element.get()), 4u);
    kxSetN(cell.get(), 3);
    EXPECT_EQ(kxGetCell(cell.get(), 2), element.get());
}

TEST(ArrayShape, ElementsOutsideTheShapeGoWithTheArray) {
    const Array element = scalar(3);
    Array cell = emptyCell(4, 1);
    kxSetCell(cell.get(), 3, sharing(element).release());
    kxSetM(cell.get(), 0);
    cell.reset();
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
}

TEST(ArrayShape, StringsOutsideTheShapeComeBack) {
    const Array texts = strings({u"a", std::nullopt, u"c"});
    kxSetN(texts.get(), 1);
    EXPECT_EQ(kxGetNumberOfElements(texts.get()), 1u);
    kxSetN(texts.get(), 3);
    EXPECT_EQ(kxGetStringElement(texts.get(), 1), std::nullopt);
    EXPECT_EQ(kxGetStringElement(texts.get(), 2), u"c");
}

TEST(ArrayShape, RowsChangeWithoutTheOtherDimensions) {
    const Array array(kxCreateDoubleArray(Dimensions{4, 3, 2}));
    kxSetM(array.get(), 2);
    EXPECT_THAT(dimensionsOf(array), ElementsAre(2, 3, 2));
    EXPECT_EQ(kxGetNumberOfElements(array.get()), 12u);
}

TEST(ArrayShape, ColumnsReplaceAllDimensionsBehindTheFirst) {
    const Array array(kxCreateDoubleArray(Dimensions{4, 3, 2}));
    kxSetN(array.get(), 6);
    EXPECT_THAT(dimensionsOf(array), ElementsAre(4, 6));
}

TEST(ArrayShape, BeyondTheBlockIsRefusedAndChangesNothing) {
    const Array array = doubleRow({1, 2, 3});
    const Array texts = strings({u"a"});
    EXPECT_THROW(kxSetN(array.get(), 4), matrix::UsageError);
    EXPECT_THROW(kxSetM(array.get(), 2), matrix::UsageError);
    EXPECT_THROW(kxSetM(array.get(), tooMany), matrix::UsageError);
    EXPECT_THROW(kxSetN(texts.get(), 2), matrix::UsageError);
    EXPECT_THAT(dimensionsOf(array), ElementsAre(1, 3));
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(1, 2, 3));
}

TEST(ArrayShape, WithoutElementsNeedsNoBlock) {
    const Array array(kxCreateDoubleMatrix(0, 1));
    kxSetN(array.get(), 1000);
    EXPECT_THAT(dimensionsOf(array), ElementsAre(0, 1000));
    EXPECT_THROW(kxSetM(array.get(), 1), matrix::UsageError);
}

TEST(ArrayShape, AnotherShapeWithAsManyElementsKeepsTheirOrder) {
    const Array array = doubleRow({1, 2, 3, 4, 5, 6});
    kxSetDimensions(array.get(), Dimensions{1, 2, 3, 1});
    EXPECT_THAT(dimensionsOf(array), ElementsAre(1, 2, 3));
    kxSetDimensions(array.get(), Dimensions{3, 2});
    EXPECT_THAT(dimensionsOf(array), ElementsAre(3, 2));
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST(ArrayShape, WithAnotherNumberOfElementsIsRefused) {
    const Array array = doubleRow({1, 2, 3, 4});
    EXPECT_THROW(kxSetDimensions(array.get(), Dimensions{1, 3}), matrix::UsageError);
    EXPECT_THROW(kxSetDimensions(array.get(), Dimensions{4}), matrix::UsageError);
    EXPECT_THROW(kxSetDimensions(array.get(), Dimensions{tooMany, 4}), matrix::UsageError);
    EXPECT_THAT(dimensionsOf(array), ElementsAre(1, 4));
}

TEST(ArrayShape, OfAnArrayWithSeveralOwnersStays) {
    const Array array = doubleRow({1, 2});
    const Array second = sharing(array);
    EXPECT_THROW(kxSetM(array.get(), 0), matrix::UsageError);
    EXPECT_THROW(kxSetN(array.get(), 1), matrix::UsageError);
    EXPECT_THROW(kxSetDimensions(array.get(), Dimensions{2, 1}), matrix::UsageError);
    EXPECT_THAT(dimensionsOf(array), ElementsAre(1, 2));
}

TEST(ArrayDuplicate, IsIndependentOfTheOriginal) {
    const Array original = doubleRow({1, 2});
    const Array copy(kxDuplicateArray(original.get()));
    kxGetDoubles(copy.get())[0] = 9;
    EXPECT_THAT(valuesOf(original.get()), ElementsAre(1, 2));
    EXPECT_THAT(valuesOf(copy.get()), ElementsAre(9, 2));
    EXPECT_EQ(kxGetReferenceCount(copy.get()), 1u);
}

TEST(ArrayDuplicate, OfASharedArrayMayBeChanged) {
    const Array original = matrix::create(u"abc");
    const Array second = sharing(original);
    const Array copy(kxDuplicateArray(original.get()));
    kxGetChars(copy.get())[1] = u'X';
    EXPECT_EQ(textOf(copy.get()), u"aXc");
}

TEST(ArrayDuplicate, SharesTheElementsOfCells) {
    const Array element = scalar(1);
    const Array cell = emptyCell(1, 2);
    kxSetCell(cell.get(), 0, sharing(element).release());
    const Array copy(kxDuplicateArray(cell.get()));
    EXPECT_EQ(kxGetCell(copy.get(), 0), element.get());
    EXPECT_EQ(kxGetCell(copy.get(), 1), nullptr);
    EXPECT_EQ(kxGetReferenceCount(element.get()), 3u);
}

TEST(ArrayDuplicate, KeepsFieldsAndDimensionsOfStructures) {
    const Array record(kxCreateStructArray(Dimensions{1, 2, 2}, std::array<const char*, 2>{"a", "b"}));
    kxSetField(record.get(), 3, "b", kxCreateDoubleScalar(8));
    const Array copy(kxDuplicateArray(record.get()));
    EXPECT_THAT(dimensionsOf(copy), ElementsAre(1, 2, 2));
    EXPECT_STREQ(kxGetFieldNameByNumber(copy.get(), 1), "b");
    EXPECT_EQ(kxGetScalar(kxGetField(copy.get(), 3, "b")), 8);
}

TEST(ArrayDuplicate, CopiesStringsAndLogicals) {
    const Array texts = strings({u"a", std::nullopt});
    const Array copy(kxDuplicateArray(texts.get()));
    kxSetStringElement(copy.get(), 0, u"z");
    EXPECT_EQ(kxGetStringElement(texts.get(), 0), u"a");
    EXPECT_EQ(kxGetStringElement(copy.get(), 1), std::nullopt);
    const Array yes(kxCreateLogicalScalar(true));
    EXPECT_THAT(kxGetLogicals(Array(kxDuplicateArray(yes.get())).get()), ElementsAre(true));
}

TEST(ArrayDuplicate, HoldsOnlyWhatTheShapeShows) {
    const Array array = doubleRow({1, 2, 3});
    kxSetN(array.get(), 2);
    const Array copy(kxDuplicateArray(array.get()));
    EXPECT_THAT(valuesOf(copy.get()), ElementsAre(1, 2));
    EXPECT_THROW(kxSetN(copy.get(), 3), matrix::UsageError);
}

TEST(ArrayDuplicate, OfAnEmptyArrayIsEmpty) {
    const Array copy(kxDuplicateArray(emptyCell(0, 7).get()));
    EXPECT_THAT(dimensionsOf(copy), ElementsAre(0, 7));
    EXPECT_EQ(kxGetClassID(copy.get()), kxCELL_CLASS);
}

}  // namespace
}  // namespace korvex::tests
