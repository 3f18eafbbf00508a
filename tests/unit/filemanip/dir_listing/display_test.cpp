// The printed form of a listing, compared to the blank.
#include "io/filesystem/filemanip/dir_listing_display.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "runtime/dispatcher/current_folder.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/dir_listing/listing_outcome.h"

namespace korvex::filemanip::tests {
namespace {

using Entries = std::vector<FileNameWithStatLight>;
using testing::SizeIs;

Entries entriesNamed(const std::vector<std::u16string>& names, const std::u16string& folder = u"/folder") {
    const auto text = std::make_shared<const std::u16string>(folder);
    Entries entries;
    for (const std::u16string& name : names) {
        FileNameWithStatLight entry;
        entry.name = name;
        entry.folder = text;
        entries.push_back(entry);
    }
    return entries;
}

/// So many names of that length, "aa..", "ab..", ..., in order.
Entries entriesOfLength(std::size_t count, std::size_t length) {
    std::vector<std::u16string> names;
    for (std::size_t i = 0; i < count; ++i) {
        std::u16string name(length, u'x');
        name[0] = static_cast<char16_t>(u'a' + i / 26);
        name[1] = static_cast<char16_t>(u'a' + i % 26);
        names.push_back(name);
    }
    return entriesNamed(names);
}

std::string columns(std::uint64_t window, const Entries& entries) {
    const WindowOfColumns width(window);
    const PrintedText printed;
    printEntryColumns(entries);
    return printed.text();
}

TEST(EntryColumnsTest, NamesRunDownTheColumns) {
    // Width 3 in a window of 10: three columns, 7 / 3 + 1 = 3 rows.
    EXPECT_EQ(columns(10, entriesNamed({u"a", u"b", u"c", u"d", u"e", u"f", u"g"})),
              "\n"
              "a  d  g  \n"
              "b  e  \n"
              "c  f  \n"
              "\n");
}

TEST(EntryColumnsTest, EveryNameIsFollowedByBlanksUpToTheWidth) {
    EXPECT_EQ(columns(80, entriesNamed({u"a", u"long name"})),
              "\n"
              "a          long name  \n"
              "\n");
}

TEST(EntryColumnsTest, FourNamesInFourColumnsPrintAsTwoOfTwo) {
    EXPECT_EQ(columns(13, entriesNamed({u"a", u"b", u"c", u"d"})),
              "\n"
              "a  c  \n"
              "b  d  \n"
              "\n");
}

TEST(EntryColumnsTest, EvenFillHasARowMoreThatMayStayEmpty) {
    EXPECT_EQ(columns(2, entriesNamed({u"a", u"b"})), "\na  \nb  \n\n\n");
    EXPECT_EQ(columns(80, entriesNamed({u"a"})), "\na  \n\n");
    EXPECT_EQ(columns(3, entriesNamed({u"a"})), "\na  \n\n\n");
}

TEST(EntryColumnsTest, TwelveNamesOfTenUnitsInAWindowOfEightyStandInFourColumnsOfThree) {
    const std::string printed = columns(80, entriesOfLength(12, 10));
    EXPECT_EQ(printed,
              "\n"
              "aaxxxxxxxx  adxxxxxxxx  agxxxxxxxx  ajxxxxxxxx  \n"
              "abxxxxxxxx  aexxxxxxxx  ahxxxxxxxx  akxxxxxxxx  \n"
              "acxxxxxxxx  afxxxxxxxx  aixxxxxxxx  alxxxxxxxx  \n"
              "\n");
}

TEST(EntryColumnsTest, WindowMustBeWiderThanTheColumnsByOne) {
    // Two columns of 3 need 7.
    EXPECT_EQ(columns(7, entriesNamed({u"a", u"b", u"c"})), "\na  c  \nb  \n\n");
    EXPECT_EQ(columns(6, entriesNamed({u"a", u"b", u"c"})), "\na  \nb  \nc  \n\n\n");
}

TEST(EntryColumnsTest, NarrowWindowHasOneColumn) {
    for (const std::uint64_t window : {0U, 1U, 2U, 3U, 4U, 12U}) {
        EXPECT_EQ(columns(window, entriesNamed({u"long name", u"b"})), "\nlong name  \nb          \n\n\n");
    }
}

TEST(EntryColumnsTest, LengthCountsUnitsNotCells) {
    EXPECT_EQ(columns(80, entriesNamed({u"\U0001F600", u"b"})), "\n\xF0\x9F\x98\x80  b   \n\n");
}

TEST(EntryColumnsTest, ListingIsOneWrite) {
    const PrintedText printed;
    printEntryColumns(entriesOfLength(300, 10));
    EXPECT_THAT(printed.pieces(), SizeIs(1));
}

/// The current folder is a scratch folder.
class ListingDisplayTest : public testing::Test {
protected:
    ListingDisplayTest() {
        runtime::dispatcher::setCurrentFolderPath(scratch_.text());
        here_ = runtime::dispatcher::currentFolderPath();
    }
    ~ListingDisplayTest() override { runtime::dispatcher::setCurrentFolderPath(u"/"); }

    static std::string shown(ListingDisplay display, Entries entries, const std::u16string& text,
                             bool isEmpty = false) {
        const WindowOfColumns width(80);
        const PrintedText printed;
        display(entries, text, isEmpty);
        return printed.text();
    }

    korvex::tests::ScratchFolder scratch_;
    std::u16string here_;
};

TEST_F(ListingDisplayTest, PlainDisplayHasNoHeader) {
    EXPECT_EQ(shown(displayPlain, entriesNamed({u"a"}), u""), "\na  \n\n");
    EXPECT_EQ(shown(displayPlain, entriesNamed({u"a"}, here_), u"text"), "\na  \n\n");
}

TEST_F(ListingDisplayTest, HeaderNamesTheFolder) {
    EXPECT_EQ(shown(displayWithHeaders, entriesNamed({u"a"}, u"/some/folder"), u""),
              "Files found in /some/folder:\n\na  \n\n");
    EXPECT_EQ(shown(displayWithHeaders, entriesNamed({u"a"}, u"/some/folder"), u"text"),
              "Files found in /some/folder:\n\na  \n\n");
}

TEST_F(ListingDisplayTest, HeaderOfTheCurrentFolderDependsOnTheText) {
    EXPECT_EQ(shown(displayWithHeaders, entriesNamed({u"a"}, here_), u""),
              "Files found in the current folder:\n\na  \n\n");
    EXPECT_EQ(shown(displayWithHeaders, entriesNamed({u"a"}, here_), u"text"),
              "Files found in " + runtime::text::toDisplayBytes(here_) + ":\n\na  \n\n");
}

TEST_F(ListingDisplayTest, HeaderIsThatOfTheEntryInFrontBeforeTheSort) {
    Entries entries = entriesNamed({u"z"}, u"/first");
    entries.push_back(entriesNamed({u"a"}, u"/second").front());
    EXPECT_EQ(shown(displayWithHeaders, entries, u""), "Files found in /first:\n\na  z  \n\n");
}

TEST_F(ListingDisplayTest, NothingIsPrintedForNoEntries) {
    EXPECT_EQ(shown(displayPlain, {}, u"text"), "");
    EXPECT_EQ(shown(displayWithHeaders, {}, u"text"), "");
}

TEST_F(ListingDisplayTest, EmptyFolderIsReported) {
    EXPECT_EQ(shown(displayPlain, {}, u"/empty", true), "\nThere are no files in this folder.\n\n");
    EXPECT_EQ(shown(displayWithHeaders, {}, u"/empty", true),
              "Files found in /empty:\n\nThere are no files in this folder.\n\n");
    EXPECT_EQ(shown(displayWithHeaders, {}, here_, true), "Files found in " +
                                                              runtime::text::toDisplayBytes(here_) +
                                                              ":\n\nThere are no files in this folder.\n\n");
}

TEST_F(ListingDisplayTest, NamesSortByUnitsCapitalsFirst) {
    EXPECT_EQ(shown(displayPlain, entriesNamed({u"b", u"a", u"B", u"ab", u"ä", u"_"}), u""),
              "\nB   _   a   ab  b   ä   \n\n");
}

TEST_F(ListingDisplayTest, EntriesAreSortedInPlace) {
    Entries entries = entriesNamed({u"b", u"a"});
    const PrintedText printed;
    displayPlain(entries, u"", false);
    EXPECT_EQ(entries[0].name, u"a");
    EXPECT_EQ(entries[1].name, u"b");
}

}  // namespace
}  // namespace korvex::filemanip::tests
