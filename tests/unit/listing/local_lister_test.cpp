// The lister on the local disk: what is found, in which order, with how many open folders.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <string>

#include "platform/message_identifiers.h"
#include "platform/storage_vfs.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/listing/lister_calls.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using CurrentFolderIsGone = foundation::core::except::Exception<KORVEX::services::cwdIsInvalid>;

class LocalListerTest : public testing::Test {
protected:
    Texts paths(std::u16string_view pattern) { return calls_.paths(pattern); }

    void makeTree() const {
        for (const char* file : {"b.txt", "A.txt", "sub/x.txt", "sub/deep/y.txt", "sub-1/z.txt", ".hidden"})
            scratch_.writeFile(file, "12345");
        scratch_.makeFolder("empty");
    }

    ScratchFolder scratch_;
    ListerCalls calls_{scratch_.text()};
};

TEST_F(LocalListerTest, StarListsEveryEntryInTheOrderOfNames) {
    makeTree();
    EXPECT_THAT(paths(u"*"), ElementsAre(".hidden", "A.txt", "b.txt", "empty", "sub", "sub-1"));
    EXPECT_TRUE(calls_.isFound);
}

TEST_F(LocalListerTest, PatternPicksNamesOfFilesAndFolders) {
    makeTree();
    EXPECT_THAT(paths(u"*.txt"), ElementsAre("A.txt", "b.txt"));
    EXPECT_THAT(paths(u"s?b*"), ElementsAre("sub", "sub-1"));
    EXPECT_THAT(paths(u"*b"), ElementsAre("sub"));
}

TEST_F(LocalListerTest, NothingThatMatchesIsNotFound) {
    makeTree();
    EXPECT_THAT(paths(u"nothing*"), IsEmpty());
    EXPECT_FALSE(calls_.isFound);
    EXPECT_THAT(paths(u"nothing"), IsEmpty());
    EXPECT_FALSE(calls_.isFound);
    EXPECT_THAT(paths(u"b.txt/*"), IsEmpty());
    EXPECT_THAT(paths(u"b.txt/x"), IsEmpty());
    EXPECT_FALSE(calls_.isFound);
}

TEST_F(LocalListerTest, NameOfAFolderListsItsContents) {
    makeTree();
    EXPECT_THAT(paths(u"sub"), ElementsAre("sub/deep", "sub/x.txt"));
    EXPECT_THAT(paths(u"sub/deep"), ElementsAre("sub/deep/y.txt"));
}

TEST_F(LocalListerTest, NameOfAFileIsTheOneEntry) {
    makeTree();
    EXPECT_THAT(paths(u"b.txt"), ElementsAre("b.txt"));
    EXPECT_THAT(paths(u"sub/x.txt"), ElementsAre("sub/x.txt"));
    EXPECT_EQ(std::get<std::uint64_t>(calls_.entries(u"sub/x.txt").front().size), 5U);
}

TEST_F(LocalListerTest, TwoStarsListTheWholeTreeDepthFirst) {
    makeTree();
    // By the names of the folders: what is in `sub` comes before `sub-1`.
    EXPECT_THAT(paths(u"**/*"), ElementsAre(".hidden", "A.txt", "b.txt", "empty", "sub", "sub-1", "sub/deep",
                                            "sub/x.txt", "sub/deep/y.txt", "sub-1/z.txt"));
    EXPECT_EQ(paths(u"**"), paths(u"**/*"));
}

TEST_F(LocalListerTest, TwoStarsIncludeTheFolderItself) {
    makeTree();
    EXPECT_THAT(paths(u"**/*.txt"),
                ElementsAre("A.txt", "b.txt", "sub/x.txt", "sub/deep/y.txt", "sub-1/z.txt"));
    EXPECT_THAT(paths(u"sub/**/*.txt"), ElementsAre("sub/x.txt", "sub/deep/y.txt"));
}

TEST_F(LocalListerTest, WildcardsInSeveralPartsAreMatchedPartByPart) {
    makeTree();
    EXPECT_THAT(paths(u"s*/*"), ElementsAre("sub/deep", "sub/x.txt", "sub-1/z.txt"));
    EXPECT_THAT(paths(u"s*/x*"), ElementsAre("sub/x.txt"));
    EXPECT_THAT(paths(u"*/*/*"), ElementsAre("sub/deep/y.txt"));
    EXPECT_THAT(paths(u"**/d*/*"), ElementsAre("sub/deep/y.txt"));
}

TEST_F(LocalListerTest, LastNameBehindWildcardsOpensFoldersAndListsFiles) {
    for (const char* file : {"p/same/in-p", "q/same", "r/other"})
        scratch_.writeFile(file);
    EXPECT_THAT(paths(u"*/same"), ElementsAre("p/same/in-p", "q/same"));
    EXPECT_THAT(paths(u"**/same"), ElementsAre("p/same/in-p", "q/same"));
}

TEST_F(LocalListerTest, EveryEntryIsListedOnceHoweverManyWaysLeadToIt) {
    for (const char* file : {"a/a/a/x", "a/x", "a/b/a/x"})
        scratch_.writeFile(file);
    EXPECT_THAT(paths(u"**/a/**/x"), ElementsAre("a/x", "a/a/a/x", "a/b/a/x"));
    EXPECT_THAT(paths(u"**/a"), ElementsAre("a/a", "a/b", "a/x", "a/a/a", "a/a/a/x", "a/b/a/x"));
}

TEST_F(LocalListerTest, TwoPartsOfTwoStarsInARowAreRefused) {
    EXPECT_THROW(paths(u"**/**/x"), foundation::core::except::Exception<KORVEX::dir::SuccessiveGlobs>);
}

TEST_F(LocalListerTest, EmptyFolderIsFoundWhenEverythingOfItWasAsked) {
    scratch_.makeFolder("empty");
    EXPECT_THAT(paths(u"empty"), IsEmpty());
    EXPECT_TRUE(calls_.isFound);
    EXPECT_THAT(paths(u"empty/*"), IsEmpty());
    EXPECT_TRUE(calls_.isFound);
    EXPECT_THAT(paths(u"empty/*.txt"), IsEmpty());
    EXPECT_FALSE(calls_.isFound);
}

TEST_F(LocalListerTest, EmptyPatternIsTheFolderItself) {
    makeTree();
    EXPECT_EQ(paths(u""), paths(u"*"));
}

TEST_F(LocalListerTest, EntriesAreAddedToThoseThatAreThere) {
    makeTree();
    std::vector<FileNameWithStatLight> found = calls_.entries(u"A*");
    ioGetDirListRecursive(Velquist::PathManagement::GetIRIFromString(scratch_.text()), u"b*", found, u"",
                          false, nullptr, u"");
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].name, u"A.txt");
    EXPECT_EQ(found[1].name, u"b.txt");
}

TEST_F(LocalListerTest, EntriesOfOneFolderShareItsText) {
    makeTree();
    const auto found = calls_.entries(u"s*/*");
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(*found[0].folder, scratch_.text() + u"/sub");
    EXPECT_EQ(found[0].folder, found[1].folder);
    EXPECT_EQ(*found[2].folder, scratch_.text() + u"/sub-1");
}

TEST_F(LocalListerTest, RootOfTheDiskHasNoDoubledSeparator) {
    std::vector<FileNameWithStatLight> found;
    const auto root = Velquist::PathManagement::GetIRIFromString(u"/");
    EXPECT_TRUE(ioGetDirListRecursive(root, u"*", found, u"", false, nullptr, u""));
    EXPECT_EQ(*found.front().folder, u"/");
    found.clear();
    EXPECT_TRUE(ioGetDirListRecursive(root, u"de*/nul*", found, u"", false, nullptr, u""));
    EXPECT_EQ(*found.front().folder, u"/dev");
}

TEST_F(LocalListerTest, MissingFolderIsAnErrorOnlyWhenItIsTheCurrentOne) {
    std::vector<FileNameWithStatLight> found;
    const std::u16string gone = scratch_.text() + u"/gone";
    const auto folder = Velquist::PathManagement::GetIRIFromString(gone + u"/");
    for (const auto* pattern : {u"*", u"name", u"**/*"}) {
        EXPECT_FALSE(ioGetDirListRecursive(folder, pattern, found, u"", false, nullptr, u"/"));
        EXPECT_THROW(ioGetDirListRecursive(folder, pattern, found, u"", false, nullptr, gone),
                     CurrentFolderIsGone);
    }
}

TEST_F(LocalListerTest, SizesAndKindsAreThoseOfTheEntries) {
    makeTree();
    for (const FileNameWithStatLight& entry : calls_.entries(u"**/*")) {
        const fs::path path = fs::path(*entry.folder) / entry.name;
        EXPECT_EQ(entry.isDirectory, fs::is_directory(path)) << path;
        EXPECT_TRUE(entry.sizeKnown);
        EXPECT_EQ(std::get<std::uint64_t>(entry.size), entry.isDirectory ? 0 : fs::file_size(path));
        EXPECT_FALSE(entry.modified.is_special());
    }
}

TEST_F(LocalListerTest, FolderOfVeryManyEntriesIsListedWhole) {
    std::set<std::string> expected;
    for (int i = 0; i < 2000; ++i) {
        expected.insert("file" + std::to_string(i));
        scratch_.writeFile("flat/file" + std::to_string(i));
    }
    const Texts found = paths(u"flat/*");
    EXPECT_TRUE(std::ranges::is_sorted(found));
    ASSERT_EQ(found.size(), expected.size());
    EXPECT_TRUE(std::ranges::equal(found, expected, [](const std::string& path, const std::string& name) {
        return path == "flat/" + name;
    }));
}

TEST_F(LocalListerTest, RandomTreeIsListedAsTheStandardLibraryWalksIt) {
    std::mt19937 random(20240305);
    std::vector<fs::path> folders{scratch_.path()};
    for (int i = 0; i < 400; ++i) {
        const fs::path parent = folders[random() % folders.size()];
        const fs::path path =
            parent / (std::string(1, "abAB.- _"[random() % 8]) + std::to_string(random() % 50));
        if (fs::exists(path)) continue;
        if (random() % 3 == 0) {
            fs::create_directory(path);
            folders.push_back(path);
        } else {
            std::ofstream{path};
        }
    }
    std::multiset<std::string> expected;
    for (const auto& entry : fs::recursive_directory_iterator(scratch_.path()))
        expected.insert(fs::relative(entry.path(), scratch_.path()).string());
    const Texts found = paths(u"**/*");
    EXPECT_EQ(std::multiset<std::string>(found.begin(), found.end()), expected);
}

TEST_F(LocalListerTest, NamesSortByUnitsWithoutRegardToCaseOrLanguage) {
    for (const char* name :
         {"b", "B", "a", "ä", "Z", "file10", "file9", "file", "fil", "\xF0\x9F\x98\x80", "\xEF\xBF\xBD"})
        scratch_.writeFile(name);
    EXPECT_THAT(paths(u"*"), ElementsAre("B", "Z", "a", "b", "fil", "file", "file10", "file9", "ä",
                                         "\xF0\x9F\x98\x80", "\xEF\xBF\xBD"));
}

}  // namespace
}  // namespace korvex::tests
