// The structure array that `dir` returns: order, fields, and what its elements share.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>

#include "io/filesystem/filemanip/dir_listing_result.h"
#include "tests/unit/filemanip/dir_listing/listing_outcome.h"

namespace korvex::filemanip::tests {
namespace {

using Entries = std::vector<FileNameWithStatLight>;
using testing::ElementsAre;

std::shared_ptr<const std::u16string> folderText(std::u16string text) {
    return std::make_shared<const std::u16string>(std::move(text));
}

FileNameWithStatLight entryIn(const std::shared_ptr<const std::u16string>& folder, std::u16string name) {
    FileNameWithStatLight entry;
    entry.name = std::move(name);
    entry.folder = folder;
    entry.size = std::uint64_t{0};
    entry.sizeKnown = true;
    return entry;
}

double bytesOf(const std::variant<std::uint64_t, double>& size) {
    FileNameWithStatLight entry = entryIn(folderText(u"/"), u"file");
    entry.size = size;
    return kxGetScalar(field(makeListingStructure({entry}), 0, "bytes"));
}

TEST(ListingStructureTest, HasSixFieldsInTheirOrderAndARowForEachEntry) {
    const auto folder = folderText(u"/folder");
    const Array structure = makeListingStructure({entryIn(folder, u"a"), entryIn(folder, u"b")});
    EXPECT_EQ(dimensions(structure), (std::vector<std::size_t>{2, 1}));
    EXPECT_THAT(fieldNamesOf(structure), ElementsAre("name", "folder", "date", "bytes", "isdir", "datenum"));
    expectEmptyStructure(makeListingStructure({}));
}

TEST(ListingStructureTest, FieldsTellWhatTheEntryTells) {
    FileNameWithStatLight entry = entryIn(folderText(u"/some/folder"), u"name");
    entry.size = std::uint64_t{12345};
    entry.isDirectory = true;
    const Array structure = makeListingStructure({entry});
    EXPECT_EQ(textOf(field(structure, 0, "name")), "name");
    EXPECT_EQ(textOf(field(structure, 0, "folder")), "/some/folder");
    EXPECT_EQ(kxGetScalar(field(structure, 0, "bytes")), 12345);
    EXPECT_EQ(kxGetClassID(field(structure, 0, "isdir")), kxLOGICAL_CLASS);
    EXPECT_EQ(kxGetScalar(field(structure, 0, "isdir")), 1);
    EXPECT_TRUE(kxIsEmpty(field(structure, 0, "date")));
    EXPECT_TRUE(kxIsEmpty(field(structure, 0, "datenum")));
}

TEST(ListingStructureTest, UnknownSizeIsAnEmptyDouble) {
    FileNameWithStatLight entry = entryIn(folderText(u"/"), u"name");
    entry.sizeKnown = false;
    const Array structure = makeListingStructure({entry});
    EXPECT_EQ(kxGetClassID(field(structure, 0, "bytes")), kxDOUBLE_CLASS);
    EXPECT_EQ(kxGetM(field(structure, 0, "bytes")), 0U);
    EXPECT_EQ(kxGetN(field(structure, 0, "bytes")), 0U);
}

TEST(ListingStructureTest, LargeSizesAreTheRightDoubles) {
    EXPECT_EQ(bytesOf((std::uint64_t{1} << 53) + 1), std::ldexp(1.0, 53));
    EXPECT_EQ(bytesOf(std::uint64_t{1} << 63), std::ldexp(1.0, 63));
    EXPECT_EQ(bytesOf((std::uint64_t{1} << 63) + (std::uint64_t{1} << 62)), 1.5 * std::ldexp(1.0, 63));
    EXPECT_EQ(bytesOf(~std::uint64_t{0}), std::ldexp(1.0, 64));
    EXPECT_EQ(bytesOf(1.5e300), 1.5e300);
}

TEST(ListingStructureTest, EntriesOfOneFolderShareOneArrayAndAllShareTwoLogicals) {
    const auto one = folderText(u"/one");
    const auto two = folderText(u"/two");
    Entries entries{entryIn(one, u"a"), entryIn(one, u"b"), entryIn(two, u"c"), entryIn(two, u"d")};
    entries[1].isDirectory = entries[3].isDirectory = true;
    const Array structure = makeListingStructure(entries);
    EXPECT_EQ(field(structure, 0, "folder"), field(structure, 1, "folder"));
    EXPECT_EQ(field(structure, 2, "folder"), field(structure, 3, "folder"));
    EXPECT_NE(field(structure, 0, "folder"), field(structure, 2, "folder"));
    EXPECT_EQ(field(structure, 0, "isdir"), field(structure, 2, "isdir"));
    EXPECT_EQ(field(structure, 1, "isdir"), field(structure, 3, "isdir"));
    EXPECT_EQ(kxGetReferenceCount(field(structure, 0, "isdir")), 2U);
    EXPECT_EQ(kxGetReferenceCount(field(structure, 0, "folder")), 2U);
    EXPECT_EQ(kxGetReferenceCount(field(structure, 0, "name")), 1U);
}

TEST(ListingStructureTest, RowsAreSortedByFolderAndThenName) {
    const auto one = folderText(u"/b");
    const auto two = folderText(u"/a");
    const Array structure = makeListingStructure(
        {entryIn(one, u"x"), entryIn(one, u"A"), entryIn(two, u"z"), entryIn(two, u"b"), entryIn(two, u"B")});
    EXPECT_THAT(column(structure, "folder"), ElementsAre("/a", "/a", "/a", "/b", "/b"));
    EXPECT_THAT(column(structure, "name"), ElementsAre("B", "b", "z", "A", "x"));
}

TEST(ListingStructureTest, FoldersSortByTheirTextNotByTheirDepth) {
    const Array structure =
        makeListingStructure({entryIn(folderText(u"/a"), u"1"), entryIn(folderText(u"/a/in"), u"2"),
                              entryIn(folderText(u"/a-b"), u"3"), entryIn(folderText(u"/"), u"4")});
    EXPECT_THAT(column(structure, "folder"), ElementsAre("/", "/a", "/a-b", "/a/in"));
}

TEST(ListingStructureTest, FolderDeliveredInSeveralRunsOrTextsIsOne) {
    const auto one = folderText(u"/a");
    const auto same = folderText(u"/a");
    const auto other = folderText(u"/b");
    const Array structure =
        makeListingStructure({entryIn(one, u"d"), entryIn(other, u"x"), entryIn(one, u"a"),
                              entryIn(same, u"c"), entryIn(same, u"b")});
    EXPECT_THAT(column(structure, "name"), ElementsAre("a", "b", "c", "d", "x"));
}

TEST(ListingStructureTest, OrderIsThatOfASortOfAllEntriesWhateverTheirDelivery) {
    std::mt19937 random(4711);
    for (int round = 0; round < 50; ++round) {
        std::vector<std::shared_ptr<const std::u16string>> folders;
        for (int i = 0; i < 6; ++i)
            folders.push_back(folderText(std::u16string(1, static_cast<char16_t>(u'a' + random() % 4))));
        Entries entries;
        for (int i = 0; i < 40; ++i) {
            entries.push_back(
                entryIn(folders[random() % folders.size()],
                        std::u16string(random() % 3 + 1, static_cast<char16_t>(u'A' + random() % 40))));
        }
        std::vector<std::pair<std::u16string, std::u16string>> expected;
        for (const auto& entry : entries)
            expected.emplace_back(*entry.folder, entry.name);
        std::ranges::sort(expected);
        std::vector<std::pair<std::u16string, std::u16string>> sorted;
        for (const std::size_t index : sortedIndex(entries))
            sorted.emplace_back(*entries[index].folder, entries[index].name);
        EXPECT_EQ(sorted, expected);
    }
}

TEST(ListingStructureTest, NamesSortByUnsignedUnits) {
    const auto folder = folderText(u"/");
    const Array structure = makeListingStructure(
        {entryIn(folder, u"\uFFFD"), entryIn(folder, u"\U0001F600"), entryIn(folder, u"a")});
    EXPECT_THAT(column(structure, "name"), ElementsAre("a", "\xF0\x9F\x98\x80", "\xEF\xBF\xBD"));
}

}  // namespace
}  // namespace korvex::filemanip::tests
