// `what` below the current folder: names, links, paths, what is no folder, and where a name is too long.
#include <memory>

#include "io/filesystem/filemanip/what_search_path.h"
#include "runtime/storage/storage_system.h"
#include "tests/unit/filemanip/what/what_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace path_management = Velquist::PathManagement;
using testing::ElementsAre;
using testing::IsEmpty;

class WhatInCurrentFolderTest : public WhatTest {};

TEST_F(WhatInCurrentFolderTest, FolderIsReportedByItsCanonicalPath) {
    makeFolders({"a/b"});
    for (const auto* name : {u"a/b", u"a/b/", u"./a/b", u"a//b", u"a/../a/b", u"a/b/."})
        EXPECT_THAT(foldersFor({name}), ElementsAre(here("a/b")))
            << testing::PrintToString(std::u16string(name));
    EXPECT_THAT(foldersFor({path("a/b")}), ElementsAre(here("a/b")));
}

TEST_F(WhatInCurrentFolderTest, DotsAreTheCurrentFolderAndTheOneAbove) {
    makeFolders({"a"});
    moveTo("a");
    EXPECT_THAT(foldersFor({u"."}), ElementsAre(here("a")));
    EXPECT_THAT(foldersFor({u".."}), ElementsAre(here()));
}

TEST_F(WhatInCurrentFolderTest, LinkIsReportedAsWhatItLeadsTo) {
    makeFiles({"real/x.k"});
    link("link", "real");
    EXPECT_THAT(foldersFor({u"link"}), ElementsAre(here("real")));
    EXPECT_THAT(foldersFor({u"link", u"-casesensitive"}), ElementsAre(here("real")));
    EXPECT_EQ(printedBy({u"link"}), block(here("real"), "x"));
}

TEST_F(WhatInCurrentFolderTest, WhatIsNoFolderIsNotFound) {
    makeFiles({"file"});
    link("broken", "nowhere");
    for (const auto* name : {u"file", u"broken", u"nothing", u"file/sub", u"~"}) {
        EXPECT_EQ(printedBy({name}), notFoundLine(runtime::text::toDisplayBytes(name)));
        EXPECT_THAT(foldersFor({name}), IsEmpty());
    }
}

TEST_F(WhatInCurrentFolderTest, NameOfBytesThatAreNoTextIsTaken) {
    makeFiles({"no\xFFtext/x.k"});
    const Array result = resultOf({u"no\xDCFFtext"});
    EXPECT_THAT(groupOf(result, 0, "k"), ElementsAre("x.k"));
}

TEST_F(WhatInCurrentFolderTest, WithoutArgumentsItIsTheCurrentFolder) {
    makeFiles({"x.k"});
    EXPECT_EQ(printedBy({}), block(here(), "x", true));
    EXPECT_THAT(foldersFor({}), ElementsAre(here()));
}

TEST_F(WhatInCurrentFolderTest, CurrentFolderThatIsGoneIsAnErrorWhereItIsAskedFor) {
    makeFiles({"gone/x", "a/x.k"});
    moveTo("gone");
    std::filesystem::remove_all(scratch_.path() / "gone");
    for (const int nlhs : {0, 1}) {
        EXPECT_EQ(whatOf(nlhs, {}).errorIdentifier, "KORVEX:services:cwdIsInvalid");
        EXPECT_EQ(whatOf(nlhs, {u""}).errorIdentifier, "KORVEX:services:cwdIsInvalid");
    }
    EXPECT_EQ(printedBy({u"x"}), notFoundLine("x"));
    EXPECT_THAT(foldersFor({path("a")}), ElementsAre(here("a")));
}

/// Looks just where the command looks below the current folder.
bool isReportedHere(const std::u16string& name) {
    const PrintedText printed;
    return whatInCurrentFolder(name, path_management::DefaultMatching, nullptr);
}

TEST_F(WhatInCurrentFolderTest, PathOf1024UnitsIsSilentlyNotLookedFor) {
    // Dots make a name as long as it is wanted.
    const auto roundabout = [&](std::size_t units) {
        std::u16string name = units % 2 == 0 ? u"ab" : u"a";
        while (name.size() < units)
            name = u"./" + name;
        return name;
    };
    makeFolders({"a", "ab"});
    const std::size_t inFront = here().size() + 1;
    EXPECT_TRUE(isReportedHere(roundabout(1023 - inFront)));
    EXPECT_FALSE(isReportedHere(roundabout(1024 - inFront)));
    EXPECT_FALSE(isReportedHere(roundabout(1025 - inFront)));
}

TEST_F(WhatInCurrentFolderTest, CurrentFolderOfAnyLengthKeepsItsNames) {
    std::string deep = "deep";
    while (deep.size() < 1100)
        deep += "/" + std::string(100, 'd');
    makeFiles({deep + "/sub/x.k"});
    moveTo(deep);
    makeFolders({"a"});
    EXPECT_FALSE(isReportedHere(u"sub"));
    EXPECT_FALSE(isReportedHere(path("a"))) << "counted with the current folder, though it is absolute";
    EXPECT_THAT(foldersFor({}), ElementsAre(here(deep)));
    // As a path of its own it has a second chance, and there only the length of the name counts.
    EXPECT_THAT(foldersFor({u"sub"}), ElementsAre(here(deep + "/sub")));
    EXPECT_THAT(foldersFor({path("a")}), ElementsAre(here("a")));
    moveTo("a");
    EXPECT_TRUE(isReportedHere(path("a")));
}

TEST_F(WhatInCurrentFolderTest, EmptyTextIsAsLongAsTheCurrentFolder) {
    const auto deepFolder = [&](std::size_t units) {
        std::string name = "deep";
        while (here(name).size() + 101 < units)
            name += "/" + std::string(99, 'd');
        return name + "/" + std::string(units - here(name).size() - 1, 'd');
    };
    for (const std::size_t units : {511U, 512U, 1023U}) {
        const std::string deep = deepFolder(units);
        makeFolders({deep});
        moveTo(deep);
        ASSERT_EQ(here(deep).size(), units);
        EXPECT_EQ(isReportedHere(path(deep)), units == 511) << "twice its length";
        EXPECT_THAT(foldersFor({u""}), ElementsAre(here(deep)));
    }
    const std::string tooDeep = deepFolder(1024);
    makeFolders({tooDeep});
    moveTo(tooDeep);
    const ListingOutcome outcome = whatOf(1, {u""});
    EXPECT_EQ(outcome.errorIdentifier, "KORVEX:dir:pathnameTooLong");
    EXPECT_THAT(outcome.errorArguments, ElementsAre(path(tooDeep)));
    EXPECT_THAT(foldersFor({}), ElementsAre(here(tooDeep)));
    putOnPath({tooDeep});
    EXPECT_THAT(foldersFor({u""}), ElementsAre(here(tooDeep))) << "the search path has it";
}

TEST_F(WhatInCurrentFolderTest, EmptyNameIsTheCurrentFolder) { EXPECT_TRUE(isReportedHere(u"")); }

TEST_F(WhatInCurrentFolderTest, WithoutACurrentFolderNothingIsBelowIt) {
    makeFolders({"gone", "a"});
    moveTo("gone");
    std::filesystem::remove(scratch_.path() / "gone");
    EXPECT_FALSE(isReportedHere(u"a"));
    EXPECT_FALSE(isReportedHere(path("a")));
}

TEST_F(WhatInCurrentFolderTest, WhateverFailsInLookingForTheNameMeansThatItIsNotHere) {
    makeFolders({"a"});
    // Nobody serves disks: that is no failure of a folder.
    const runtime::storage::ScopedStorageSystem scope(
        std::make_shared<foundation::storage::vfs::StorageSystem>());
    EXPECT_THROW(whatOf(0, {}), foundation::storage::vfs::UnsupportedIRISchemeException);
    EXPECT_FALSE(isReportedHere(u"a"));
}

}  // namespace
}  // namespace korvex::filemanip::tests
