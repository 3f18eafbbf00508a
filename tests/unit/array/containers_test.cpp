// Cells and structures: the references they own, and what may not be put into them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/array/arrays.h"

namespace korvex::tests {
namespace {

using ::testing::HasSubstr;

TEST(ArrayCells, OwnTheReferenceTheyAreGiven) {
    const Array element = scalar(1);
    Array cell = emptyCell(1, 2);
    kxSetCell(cell.get(), 1, sharing(element).release());
    EXPECT_EQ(kxGetCell(cell.get(), 1), element.get());
    EXPECT_EQ(kxGetReferenceCount(element.get()), 2u);
    cell.reset();
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
}

TEST(ArrayCells, GiveTheirOldElementUp) {
    const Array element = scalar(1);
    const Array cell = emptyCell(1, 1);
    kxSetCell(cell.get(), 0, sharing(element).release());
    kxSetCell(cell.get(), 0, kxCreateDoubleScalar(2));
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
    kxSetCell(cell.get(), 0, nullptr);
    EXPECT_EQ(kxGetCell(cell.get(), 0), nullptr);
}

TEST(ArrayCells, MayBeGivenTheElementTheyHave) {
    const Array cell = emptyCell(1, 1);
    kxSetCell(cell.get(), 0, kxCreateDoubleScalar(2));
    kxSetCell(cell.get(), 0, kxCreateReference(kxGetCell(cell.get(), 0)));
    EXPECT_EQ(kxGetReferenceCount(kxGetCell(cell.get(), 0)), 1u);
    EXPECT_EQ(kxGetScalar(kxGetCell(cell.get(), 0)), 2);
}

TEST(ArrayCells, HoldOneElementInSeveralPlaces) {
    const Array element = scalar(1);
    Array cell = emptyCell(100, 1);
    for (std::size_t index = 0; index < 100; ++index)
        kxSetCell(cell.get(), index, sharing(element).release());
    EXPECT_EQ(kxGetReferenceCount(element.get()), 101u);
    cell.reset();
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
}

TEST(ArrayCells, SettingACellBeyondTheEndRaisesAndGivesTheReferenceUp) {
    const Array element = scalar(1);
    const Array cell = emptyCell(1, 2);
    EXPECT_THROW(kxSetCell(cell.get(), 2, sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetCell(cell.get(), tooMany, sharing(element).release()), matrix::UsageError);
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
    EXPECT_EQ(kxGetCell(cell.get(), 1), nullptr);
}

TEST(ArrayCells, MisusedContainersGiveTheReferenceUp) {
    const Array element = scalar(1);
    const Array number = scalar(2);
    const Array cell = emptyCell(1, 1);
    const Array second = sharing(cell);
    EXPECT_THROW(kxSetCell(nullptr, 0, sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetCell(number.get(), 0, sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetCell(cell.get(), 0, sharing(element).release()), matrix::UsageError);
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
    EXPECT_EQ(kxGetCell(cell.get(), 0), nullptr);
}

TEST(ArrayCells, AMisuseWithTheLastReferenceDestroysTheElement) {
    const Array element = scalar(1);
    Array inner = emptyCell(1, 1);
    kxSetCell(inner.get(), 0, sharing(element).release());
    EXPECT_THROW(kxSetCell(nullptr, 0, inner.release()), matrix::UsageError);
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
}

TEST(ArrayCells, CannotGoIntoThemselves) {
    const Array cell = emptyCell(1, 1);
    EXPECT_THROW(kxSetCell(cell.get(), 0, cell.get()), matrix::UsageError);
    EXPECT_EQ(kxGetReferenceCount(cell.get()), 1u);
    EXPECT_THROW(kxSetCell(cell.get(), 0, sharing(cell).release()), matrix::UsageError);
    EXPECT_EQ(kxGetReferenceCount(cell.get()), 1u);
    EXPECT_EQ(kxGetCell(cell.get(), 0), nullptr);
}

TEST(ArrayCells, ReadingAWrongPlaceRaises) {
    EXPECT_THROW(kxGetCell(nullptr, 0), matrix::UsageError);
    EXPECT_THROW(kxGetCell(scalar(1).get(), 0), matrix::UsageError);
    EXPECT_THROW(kxGetCell(structure(1, 1, {"a"}).get(), 0), matrix::UsageError);
    EXPECT_THROW(kxGetCell(emptyCell(2, 2).get(), 4), matrix::UsageError);
    EXPECT_THROW(kxGetCell(emptyCell(0, 1).get(), 0), matrix::UsageError);
}

TEST(ArrayFields, HaveNamesAndNumbers) {
    const Array record = structure(1, 1, {"name", "date", "bytes"});
    EXPECT_EQ(kxGetNumberOfFields(record.get()), 3);
    EXPECT_STREQ(kxGetFieldNameByNumber(record.get(), 1), "date");
    EXPECT_EQ(kxGetFieldNumber(record.get(), "bytes"), 2);
    EXPECT_EQ(kxGetFieldNumber(record.get(), "Bytes"), -1);
    EXPECT_EQ(kxGetFieldNumber(record.get(), ""), -1);
}

TEST(ArrayFields, AreSetByNameAndByNumber) {
    const Array record = structure(2, 1, {"a", "b"});
    kxSetField(record.get(), 1, "a", kxCreateDoubleScalar(1));
    kxSetFieldByNumber(record.get(), 0, 1, kxCreateDoubleScalar(2));
    EXPECT_EQ(kxGetScalar(kxGetFieldByNumber(record.get(), 1, 0)), 1);
    EXPECT_EQ(kxGetScalar(kxGetField(record.get(), 0, "b")), 2);
    EXPECT_EQ(kxGetField(record.get(), 0, "a"), nullptr);
    EXPECT_EQ(kxGetField(record.get(), 1, "b"), nullptr);
}

TEST(ArrayFields, GiveTheirOldValueUp) {
    const Array element = scalar(1);
    const Array record = structure(1, 1, {"a"});
    kxSetField(record.get(), 0, "a", sharing(element).release());
    kxSetFieldByNumber(record.get(), 0, 0, nullptr);
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
    EXPECT_EQ(kxGetField(record.get(), 0, "a"), nullptr);
}

TEST(ArrayFields, LieSideBySideInTheBlock) {
    const Array record = structure(2, 1, {"a", "b"});
    const Array element = scalar(1);
    kxSetField(record.get(), 1, "a", sharing(element).release());
    const auto* slots = static_cast<kxArray* const*>(kxGetData(record.get()));
    EXPECT_EQ(slots[2], element.get());
}

TEST(ArrayFields, AFieldThatIsNotThereReadsAsNull) {
    const Array record = structure(1, 1, {"a"});
    EXPECT_EQ(kxGetField(record.get(), 0, "b"), nullptr);
}

TEST(ArrayFields, ReadingAWrongPlaceRaises) {
    const Array record = structure(1, 2, {"a"});
    EXPECT_THROW(kxGetField(record.get(), 2, "a"), matrix::UsageError);
    EXPECT_THROW(kxGetField(record.get(), 0, nullptr), matrix::UsageError);
    EXPECT_THROW(kxGetFieldByNumber(record.get(), 2, 0), matrix::UsageError);
    EXPECT_THROW(kxGetFieldByNumber(record.get(), 0, 1), matrix::UsageError);
    EXPECT_THROW(kxGetFieldByNumber(record.get(), 0, -1), matrix::UsageError);
    EXPECT_THROW(kxGetFieldNameByNumber(record.get(), 1), matrix::UsageError);
    EXPECT_THROW(kxGetFieldNameByNumber(record.get(), -1), matrix::UsageError);
    EXPECT_THROW(kxGetFieldNumber(record.get(), nullptr), matrix::UsageError);
}

TEST(ArrayFields, OfNullAndOtherClassesRaise) {
    const Array cell = emptyCell(1, 1);
    for (const kxArray* array :
         {static_cast<const kxArray*>(nullptr), static_cast<const kxArray*>(cell.get())}) {
        EXPECT_THROW(kxGetNumberOfFields(array), matrix::UsageError);
        EXPECT_THROW(kxGetFieldNameByNumber(array, 0), matrix::UsageError);
        EXPECT_THROW(kxGetFieldNumber(array, "a"), matrix::UsageError);
        EXPECT_THROW(kxGetFieldByNumber(array, 0, 0), matrix::UsageError);
        EXPECT_THROW(kxGetField(array, 0, "a"), matrix::UsageError);
    }
}

TEST(ArrayFields, MisusedStructuresGiveTheReferenceUp) {
    const Array element = scalar(1);
    const Array cell = emptyCell(1, 1);
    const Array record = structure(1, 1, {"a"});
    EXPECT_THROW(kxSetField(nullptr, 0, "a", sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetField(cell.get(), 0, "a", sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetField(record.get(), 0, "b", sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetField(record.get(), 0, nullptr, sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetField(record.get(), 1, "a", sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetFieldByNumber(nullptr, 0, 0, sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetFieldByNumber(cell.get(), 0, 0, sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetFieldByNumber(record.get(), 0, 1, sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetFieldByNumber(record.get(), 0, -1, sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetFieldByNumber(record.get(), 1, 0, sharing(element).release()), matrix::UsageError);
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
    EXPECT_EQ(kxGetField(record.get(), 0, "a"), nullptr);
}

TEST(ArrayFields, OfAStructureWithSeveralOwnersStay) {
    const Array element = scalar(1);
    const Array record = structure(1, 1, {"a"});
    const Array second = sharing(record);
    EXPECT_THROW(kxSetField(record.get(), 0, "a", sharing(element).release()), matrix::UsageError);
    EXPECT_THROW(kxSetFieldByNumber(record.get(), 0, 0, sharing(element).release()), matrix::UsageError);
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
    EXPECT_EQ(kxGetField(record.get(), 0, "a"), nullptr);
}

TEST(ArrayFields, CannotHoldTheirOwnStructure) {
    const Array record = structure(1, 1, {"a"});
    EXPECT_THROW(kxSetField(record.get(), 0, "a", record.get()), matrix::UsageError);
    EXPECT_THROW(kxSetFieldByNumber(record.get(), 0, 0, sharing(record).release()), matrix::UsageError);
    EXPECT_EQ(kxGetReferenceCount(record.get()), 1u);
}

TEST(ArrayFields, AnUnknownNameIsNamedInTheError) {
    const Array record = structure(1, 1, {"a"});
    try {
        kxSetField(record.get(), 0, "colour", nullptr);
        FAIL() << "a field that is not there was set";
    } catch (const matrix::UsageError& error) {
        EXPECT_THAT(error.what(), HasSubstr("\"colour\""));
    }
}

}  // namespace
}  // namespace korvex::tests
