// The end of arrays: deep nesting, and references that several threads take and give up.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "tests/unit/array/arrays.h"

namespace korvex::tests {
namespace {

constexpr int deep = 1'000'000;
constexpr int threadCount = 4;
constexpr int rounds = 5'000;

template <class Work>
void onEveryThread(Work work) {
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
}

Array wrappedInCells(Array innermost, int depth) {
    Array outer = std::move(innermost);
    for (int level = 0; level < depth; ++level) {
        Array cell = emptyCell(1, 1);
        kxSetCell(cell.get(), 0, outer.release());
        outer = std::move(cell);
    }
    return outer;
}

TEST(ArrayLifetime, AMillionNestedCellsEndWithoutADeepStack) {
    const Array innermost = scalar(1);
    Array outer = wrappedInCells(sharing(innermost), deep);
    outer.reset();
    EXPECT_EQ(kxGetReferenceCount(innermost.get()), 1u);
}

TEST(ArrayLifetime, NestedStructuresWithSeveralBranchesEndWithoutADeepStack) {
    const Array leaf = scalar(1);
    Array outer = sharing(leaf);
    for (int level = 0; level < deep / 10; ++level) {
        Array record = structure(1, 1, {"left", "leaf", "right"});
        kxSetField(record.get(), 0, "left", kxCreateCellMatrix(1, 1));
        kxSetField(record.get(), 0, "leaf", sharing(leaf).release());
        kxSetField(record.get(), 0, "right", outer.release());
        outer = std::move(record);
    }
    outer.reset();
    EXPECT_EQ(kxGetReferenceCount(leaf.get()), 1u);
}

TEST(ArrayLifetime, ReplacingADeepElementNeedsNoDeepStack) {
    const Array innermost = scalar(1);
    const Array cell = wrappedInCells(sharing(innermost), deep / 2);
    kxSetCell(cell.get(), 0, nullptr);
    EXPECT_EQ(kxGetReferenceCount(innermost.get()), 1u);
}

TEST(ArrayLifetime, WhatSomebodyElseHoldsOutlivesTheTree) {
    Array outer = wrappedInCells(matrix::create(u"kept"), 3);
    const Array middle(kxCreateReference(kxGetCell(outer.get(), 0)));
    outer.reset();
    EXPECT_EQ(kxGetReferenceCount(middle.get()), 1u);
    EXPECT_EQ(textOf(kxGetCell(kxGetCell(middle.get(), 0), 0)), u"kept");
}

TEST(ArrayLifetime, AnElementHeldTwiceByOneTreeEndsOnce) {
    const Array leaf = scalar(1);
    Array cell = emptyCell(1, 2);
    Array inner = wrappedInCells(sharing(leaf), 1);
    kxSetCell(cell.get(), 0, sharing(inner).release());
    kxSetCell(cell.get(), 1, inner.release());
    kxSetCell(cell.get(), 0, nullptr);
    EXPECT_EQ(kxGetReferenceCount(leaf.get()), 2u);
    cell.reset();
    EXPECT_EQ(kxGetReferenceCount(leaf.get()), 1u);
}

TEST(ArrayThreads, TakeAndGiveUpReferencesToOneArray) {
    const Array array = matrix::create(u"shared by all");
    const auto before = textOf(array.get());
    onEveryThread([&array] {
        for (int round = 0; round < rounds; ++round) {
            const Array own = sharing(array);
            EXPECT_EQ(kxGetN(own.get()), 13u);
        }
    });
    EXPECT_EQ(kxGetReferenceCount(array.get()), 1u);
    EXPECT_EQ(textOf(array.get()), before);
}

TEST(ArrayThreads, TheLastOneToLetGoDestroysTheTree) {
    const Array leaf = scalar(1);
    for (int round = 0; round < 200; ++round) {
        Array tree = wrappedInCells(sharing(leaf), 20);
        std::vector<std::thread> threads;
        for (int number = 0; number < threadCount; ++number) {
            threads.emplace_back([own = sharing(tree)]() mutable { own.reset(); });
        }
        tree.reset();
        for (std::thread& thread : threads)
            thread.join();
    }
    EXPECT_EQ(kxGetReferenceCount(leaf.get()), 1u);
}

TEST(ArrayThreads, BuildTheirOwnCellsAroundOneSharedElement) {
    const Array element = matrix::create(u"folder");
    onEveryThread([&element] {
        for (int round = 0; round < rounds / 50; ++round) {
            const Array cell = emptyCell(50, 1);
            for (std::size_t index = 0; index < 50; ++index) {
                kxSetCell(cell.get(), index, sharing(element).release());
            }
            const Array copy(kxDuplicateArray(cell.get()));
        }
    });
    EXPECT_EQ(kxGetReferenceCount(element.get()), 1u);
}

TEST(ArrayThreads, GrowTheBlocksOfTheirOwnArrays) {
    onEveryThread([] {
        for (int round = 0; round < rounds / 50; ++round) {
            const Array numbers = doubleRow({1});
            for (std::size_t count = 2; count < 40; ++count) {
                kxSetData(numbers.get(), kxReallocExCheck(kxGetData(numbers.get()), count * sizeof(double)));
                kxSetN(numbers.get(), count);
            }
            kxFree(kxReallocExCheck(kxReallocExCheck(nullptr, 8), 800));
            EXPECT_EQ(kxGetScalar(numbers.get()), 1);
        }
    });
}

}  // namespace
}  // namespace korvex::tests
