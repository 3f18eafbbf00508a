// Structure arrays that grow element by element, the way commands build their results.
#include <gtest/gtest.h>

#include "tests/unit/array/arrays.h"

namespace korvex::tests {
namespace {

const std::vector<const char*> thirteenFields{"f0", "f1", "f2", "f3",  "f4",  "f5", "f6",
                                              "f7", "f8", "f9", "f10", "f11", "f12"};

// Adds one element and hands out its index.
std::size_t growByOne(kxArray* array) {
    const std::size_t rows = kxGetM(array);
    const auto fields = static_cast<std::size_t>(kxGetNumberOfFields(array));
    kxSetData(array, kxReallocExCheck(kxGetData(array), (rows + 1) * fields * sizeof(kxArray*)));
    kxSetM(array, rows + 1);
    return rows;
}

double valueFor(std::size_t index, int field) { return static_cast<double>(index) * 100 + field; }

void appendElements(kxArray* array, std::size_t count) {
    for (std::size_t step = 0; step < count; ++step) {
        const std::size_t index = growByOne(array);
        for (int field = 0; field < kxGetNumberOfFields(array); ++field) {
            kxSetFieldByNumber(array, index, field, kxCreateDoubleScalar(valueFor(index, field)));
        }
    }
}

void expectEveryElement(const kxArray* array) {
    for (std::size_t index = 0; index < kxGetNumberOfElements(array); ++index) {
        for (int field = 0; field < kxGetNumberOfFields(array); ++field) {
            ASSERT_EQ(kxGetScalar(kxGetFieldByNumber(array, index, field)), valueFor(index, field));
        }
    }
}

TEST(GrowingAStructure, FromNoElementsToHundredsKeepsThemAll) {
    const Array array = structure(0, 1, thirteenFields);
    appendElements(array.get(), 700);
    EXPECT_EQ(dimensionsOf(array), (Dimensions{700, 1}));
    expectEveryElement(array.get());
}

TEST(GrowingAStructure, FromOneElementKeepsIt) {
    const Array array = structure(1, 1, thirteenFields);
    for (int field = 0; field < 13; ++field) {
        kxSetFieldByNumber(array.get(), 0, field, kxCreateDoubleScalar(valueFor(0, field)));
    }
    appendElements(array.get(), 30);
    EXPECT_EQ(kxGetM(array.get()), 31u);
    expectEveryElement(array.get());
}

TEST(GrowingAStructure, StartsNewElementsWithNullFields) {
    const Array array = structure(0, 1, thirteenFields);
    for (std::size_t count = 0; count < 60; ++count) {
        const std::size_t index = growByOne(array.get());
        EXPECT_EQ(kxGetFieldByNumber(array.get(), index, 0), nullptr);
        EXPECT_EQ(kxGetFieldByNumber(array.get(), index, 12), nullptr);
    }
}

TEST(GrowingAStructure, KeepsTheReferencesOfItsFieldsBalanced) {
    const Array shared = scalar(1);
    Array array = structure(0, 1, {"a", "b"});
    for (std::size_t count = 0; count < 300; ++count) {
        kxSetFieldByNumber(array.get(), growByOne(array.get()), 1, sharing(shared).release());
    }
    EXPECT_EQ(kxGetReferenceCount(shared.get()), 301u);
    array.reset();
    EXPECT_EQ(kxGetReferenceCount(shared.get()), 1u);
}

TEST(GrowingAStructure, StepsThroughItsColumnsAndRestoresThem) {
    const Array array = structure(0, 1, thirteenFields);
    appendElements(array.get(), 200);
    kxSetDimensions(array.get(), Dimensions{1, 200});
    const std::size_t columns = kxGetN(array.get());
    kxSetN(array.get(), 1);
    EXPECT_EQ(kxGetNumberOfElements(array.get()), 1u);
    kxSetN(array.get(), columns);
    EXPECT_EQ(dimensionsOf(array), (Dimensions{1, 200}));
    expectEveryElement(array.get());
}

TEST(GrowingAStructure, MayReserveManyElementsAtOnce) {
    const Array array = structure(0, 1, {"a"});
    kxSetData(array.get(), kxReallocExCheck(kxGetData(array.get()), 50 * sizeof(kxArray*)));
    for (std::size_t rows = 1; rows <= 50; ++rows) {
        kxSetM(array.get(), rows);
        kxSetFieldByNumber(array.get(), rows - 1, 0, kxCreateDoubleScalar(valueFor(rows - 1, 0)));
    }
    EXPECT_THROW(kxSetM(array.get(), 51), matrix::UsageError);
    expectEveryElement(array.get());
}

TEST(GrowingAStructure, WithoutFieldsNeedsNoBlock) {
    const Array array = structure(0, 1, {});
    for (int count = 0; count < 5; ++count)
        growByOne(array.get());
    EXPECT_EQ(kxGetNumberOfElements(array.get()), 5u);
}

}  // namespace
}  // namespace korvex::tests
