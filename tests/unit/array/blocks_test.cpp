// Blocks in the hands of callers: which pointers are accepted, and who owns what afterwards.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/unit/array/arrays.h"

namespace korvex::tests {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

constexpr std::size_t slot = sizeof(kxArray*);

struct BlockDeleter {
    void operator()(void* block) const { kxFree(block); }
};
using FloatingBlock = std::unique_ptr<void, BlockDeleter>;

FloatingBlock floatingBlock(std::size_t bytes) { return FloatingBlock(kxReallocExCheck(nullptr, bytes)); }

std::span<const unsigned char> bytesOf(const void* block, std::size_t count) {
    return {static_cast<const unsigned char*>(block), count};
}

// Two places, an element in each.
Array cellHolding(const Array& element) {
    Array cell = emptyCell(2, 1);
    for (std::size_t index = 0; index < 2; ++index)
        kxSetCell(cell.get(), index, sharing(element).release());
    return cell;
}

TEST(ArrayBlock, IsTheMemoryOfTheElements) {
    const Array array = doubleRow({1, 2});
    static_cast<double*>(kxGetData(array.get()))[1] = 7;
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(1, 7));
    EXPECT_EQ(kxGetData(array.get()), kxGetData(array.get()));
}

TEST(ArrayBlock, IsNullForStringsAndForArraysWithoutElements) {
    EXPECT_EQ(kxGetData(strings({u"a"}).get()), nullptr);
    EXPECT_EQ(kxGetData(emptyCell(0, 1).get()), nullptr);
    EXPECT_EQ(kxGetData(structure(0, 1, {"a"}).get()), nullptr);
}

TEST(ArrayBlock, IsNotLentByNullAndSharedArrays) {
    const Array array = doubleRow({1});
    const Array second = sharing(array);
    EXPECT_THROW(kxGetData(nullptr), matrix::UsageError);
    EXPECT_THROW(kxGetData(array.get()), matrix::UsageError);
}

TEST(ArrayBlock, SlotsWrittenThroughItAreOwned) {
    const Array element = scalar(1);
    Array cell = emptyCell(1, 2);
    static_cast<kxArray**>(kxGetData(cell.get()))[1] = sharing(element).release();
    EXPECT_EQ(kxGetCell(cell.get(), 1), element.get());
    cell.reset();
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
}

TEST(FloatingBlocks, StartZeroed) {
    const FloatingBlock small = floatingBlock(24);
    const FloatingBlock large = floatingBlock(10'000);
    EXPECT_THAT(bytesOf(small.get(), 24), Each(0));
    EXPECT_THAT(bytesOf(large.get(), 10'000), Each(0));
}

TEST(FloatingBlocks, OfNoBytesAreBlocksToo) {
    const FloatingBlock first = floatingBlock(0);
    const FloatingBlock second = floatingBlock(0);
    EXPECT_NE(first.get(), nullptr);
    EXPECT_NE(first.get(), second.get());
}

TEST(FloatingBlocks, KeepTheirBytesAndZeroNewOnes) {
    FloatingBlock block = floatingBlock(4);
    std::fill_n(static_cast<unsigned char*>(block.get()), 4, std::uint8_t{9});
    block.reset(kxReallocExCheck(block.release(), 9000));
    EXPECT_THAT(bytesOf(block.get(), 4), Each(9));
    EXPECT_THAT(bytesOf(block.get(), 9000).subspan(4), Each(0));
}

TEST(FloatingBlocks, AreZeroedAgainWhereTheyHadShrunk) {
    FloatingBlock block = floatingBlock(9000);
    std::fill_n(static_cast<unsigned char*>(block.get()), 9000, std::uint8_t{9});
    block.reset(kxReallocExCheck(block.release(), 8990));
    block.reset(kxReallocExCheck(block.release(), 9000));
    EXPECT_THAT(bytesOf(block.get(), 8990), Each(9));
    EXPECT_THAT(bytesOf(block.get(), 9000).subspan(8990), Each(0));
}

TEST(FloatingBlocks, AreFreedOnce) {
    void* const block = kxReallocExCheck(nullptr, 8);
    kxFree(block);
    EXPECT_THROW(kxFree(block), matrix::UsageError);
    EXPECT_NO_THROW(kxFree(nullptr));
}

TEST(FloatingBlocks, CannotBeLargerThanMemoryCanBe) {
    const FloatingBlock block = floatingBlock(8);
    EXPECT_THROW(kxReallocExCheck(nullptr, tooMany), matrix::UsageError);
    EXPECT_THROW(kxReallocExCheck(block.get(), tooMany), matrix::UsageError);
    EXPECT_THAT(bytesOf(block.get(), 8), Each(0));
}

TEST(ForeignPointers, AreRefusedEverywhere) {
    double foreign = 4;
    const Array array = doubleRow({1, 2});
    EXPECT_THROW(kxReallocExCheck(&foreign, 64), matrix::UsageError);
    EXPECT_THROW(kxFree(&foreign), matrix::UsageError);
    EXPECT_THROW(kxSetData(array.get(), &foreign), matrix::UsageError);
    EXPECT_THROW(kxSetData(array.get(), nullptr), matrix::UsageError);
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(1, 2));
    EXPECT_EQ(foreign, 4);
}

TEST(ForeignPointers, IncludeTheMiddleOfABlockAndOneThatWasNeverLent) {
    const Array array = doubleRow({1, 2});
    void* const neverLent = kxGetDoubles(array.get()).data();
    EXPECT_THROW(kxReallocExCheck(neverLent, 64), matrix::UsageError);
    auto* const lent = static_cast<double*>(kxGetData(array.get()));
    EXPECT_THROW(kxReallocExCheck(lent + 1, 64), matrix::UsageError);
}

TEST(ForeignPointers, IncludeTheBlockOfAnArrayThatIsGone) {
    Array array = doubleRow({1, 2});
    void* const block = kxGetData(array.get());
    array.reset();
    EXPECT_THROW(kxReallocExCheck(block, 64), matrix::UsageError);
}

TEST(LentBlocks, GrowInTheirArrayWithoutAChangeOfShape) {
    const Array array = doubleRow({1, 2});
    void* const grown = kxReallocExCheck(kxGetData(array.get()), 100'000);
    EXPECT_EQ(kxGetData(array.get()), grown);
    EXPECT_THAT(dimensionsOf(array), ElementsAre(1, 2));
    kxSetN(array.get(), 12'500);
    const std::vector<double> values = valuesOf(array.get());
    EXPECT_EQ(values[1], 2);
    EXPECT_THAT(std::span(values).subspan(2), Each(0.0));
}

TEST(LentBlocks, HoldAsManyElementsAsFitWholly) {
    const Array array = doubleRow({1});
    kxReallocExCheck(kxGetData(array.get()), 3 * sizeof(double) - 1);
    EXPECT_THROW(kxSetN(array.get(), 3), matrix::UsageError);
    kxSetN(array.get(), 2);
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(1, 0));
}

TEST(LentBlocks, CanBeResizedAgainAndAgain) {
    const Array array(kxCreateDoubleMatrix(1, 1000));
    void* block = kxGetData(array.get());
    for (const std::size_t count : {1001u, 5000u, 1000u, 70'000u}) {
        block = kxReallocExCheck(block, count * sizeof(double));
    }
    kxSetN(array.get(), 70'000);
    EXPECT_THAT(kxGetDoubles(array.get()), Each(0.0));
}

TEST(LentBlocks, NeverShrinkBelowTheShape) {
    const Array array = doubleRow({1, 2});
    void* const block = kxGetData(array.get());
    EXPECT_THROW(kxReallocExCheck(block, 2 * sizeof(double) - 1), matrix::UsageError);
    EXPECT_EQ(kxGetData(array.get()), block);
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(1, 2));
}

TEST(LentBlocks, GiveUpTheReferencesInSlotsThatFallAway) {
    const Array element = scalar(1);
    const Array cell = cellHolding(element);
    kxSetM(cell.get(), 1);
    kxReallocExCheck(kxGetData(cell.get()), slot);
    EXPECT_EQ(kxGetReferenceCount(element.get()), 2u);
    EXPECT_EQ(kxGetCell(cell.get(), 0), element.get());
    EXPECT_THROW(kxSetM(cell.get(), 2), matrix::UsageError);
}

TEST(LentBlocks, ThatShrankAndGrewHaveEmptySlots) {
    const Array element = scalar(1);
    const Array cell = emptyCell(100, 1);
    for (std::size_t index = 0; index < 100; ++index)
        kxSetCell(cell.get(), index, sharing(element).release());
    kxSetM(cell.get(), 10);
    void* const smaller = kxReallocExCheck(kxGetData(cell.get()), 20 * slot + 3);
    EXPECT_EQ(kxGetReferenceCount(element.get()), 21u);
    kxReallocExCheck(smaller, 100 * slot);
    kxSetM(cell.get(), 100);
    EXPECT_EQ(kxGetCell(cell.get(), 19), element.get());
    EXPECT_EQ(kxGetCell(cell.get(), 20), nullptr);
    EXPECT_EQ(kxGetCell(cell.get(), 99), nullptr);
}

TEST(LentBlocks, OfAnEmptyShapeMayShrinkToNothing) {
    const Array element = scalar(1);
    const Array cell = cellHolding(element);
    kxSetM(cell.get(), 0);
    void* const nothing = kxReallocExCheck(kxGetData(cell.get()), 0);
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
    EXPECT_EQ(kxGetData(cell.get()), nothing);
    kxReallocExCheck(nothing, slot);
    kxSetM(cell.get(), 1);
    EXPECT_EQ(kxGetCell(cell.get(), 0), nullptr);
}

TEST(LentBlocks, OfAnArrayThatGotASecondOwnerStay) {
    const Array array = doubleRow({1});
    void* const block = kxGetData(array.get());
    const Array second = sharing(array);
    EXPECT_THROW(kxReallocExCheck(block, 64), matrix::UsageError);
    EXPECT_THROW(kxSetData(array.get(), block), matrix::UsageError);
}

TEST(LentBlocks, CannotBeFreedOrGivenToAnotherArray) {
    const Array array = doubleRow({1});
    const Array other = doubleRow({2});
    void* const block = kxGetData(array.get());
    EXPECT_THROW(kxFree(block), matrix::UsageError);
    EXPECT_THROW(kxSetData(other.get(), block), matrix::UsageError);
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(1));
    EXPECT_THAT(valuesOf(other.get()), ElementsAre(2));
}

TEST(GivingABlock, TheOwnOneChangesNothing) {
    const Array array = doubleRow({1, 2});
    const Array none(kxCreateDoubleMatrix(0, 1));
    kxSetData(array.get(), kxGetData(array.get()));
    kxSetData(none.get(), kxGetData(none.get()));
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(1, 2));
}

TEST(GivingABlock, ReplacesTheElements) {
    const Array array = doubleRow({1, 2});
    FloatingBlock block = floatingBlock(3 * sizeof(double));
    std::ranges::copy(std::array{7.0, 8.0, 9.0}, static_cast<double*>(block.get()));
    kxSetData(array.get(), block.get());
    EXPECT_EQ(kxGetData(array.get()), block.get());
    static_cast<void>(block.release());  // the array has it now
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(7, 8));
    kxSetN(array.get(), 3);
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(7, 8, 9));
}

TEST(GivingABlock, GivesTheOldElementsUpAndOwnsTheNewOnes) {
    const Array old = scalar(1);
    const Array fresh = scalar(2);
    Array cell = cellHolding(old);
    void* const block = kxReallocExCheck(nullptr, 2 * slot);
    static_cast<kxArray**>(block)[1] = sharing(fresh).release();
    kxSetData(cell.get(), block);
    EXPECT_EQ(kxGetReferenceCount(old.get()), 1u);
    EXPECT_EQ(kxGetCell(cell.get(), 1), fresh.get());
    cell.reset();
    EXPECT_EQ(kxGetReferenceCount(fresh.get()), 1u);
}

TEST(GivingABlock, MakesItTheArraysOwn) {
    const Array array = doubleRow({1});
    void* const block = kxReallocExCheck(nullptr, 64);
    kxSetData(array.get(), block);
    EXPECT_THROW(kxFree(block), matrix::UsageError);
    void* const grown = kxReallocExCheck(block, 128);
    EXPECT_EQ(grown, kxGetData(array.get()));
}

TEST(GivingABlock, TakesTheOldOneOutOfCirculation) {
    const Array array = doubleRow({1});
    void* const old = kxGetData(array.get());
    kxSetData(array.get(), kxReallocExCheck(nullptr, 64));
    EXPECT_THROW(kxReallocExCheck(old, 64), matrix::UsageError);
}

TEST(GivingABlock, ThatIsTooSmallIsRefusedAndStaysTheCallers) {
    const Array array = doubleRow({1, 2});
    const FloatingBlock block = floatingBlock(2 * sizeof(double) - 1);
    EXPECT_THROW(kxSetData(array.get(), block.get()), matrix::UsageError);
    EXPECT_THAT(valuesOf(array.get()), ElementsAre(1, 2));
}

TEST(GivingABlock, ToNullStringsAndSharedArraysIsRefused) {
    const Array shared = doubleRow({1});
    const Array second = sharing(shared);
    const FloatingBlock block = floatingBlock(64);
    EXPECT_THROW(kxSetData(nullptr, block.get()), matrix::UsageError);
    EXPECT_THROW(kxSetData(strings({u"a"}).get(), block.get()), matrix::UsageError);
    EXPECT_THROW(kxSetData(strings({u"a"}).get(), nullptr), matrix::UsageError);
    EXPECT_THROW(kxSetData(shared.get(), block.get()), matrix::UsageError);
}

}  // namespace
}  // namespace korvex::tests
