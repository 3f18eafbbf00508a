// `rmdir` where a link or a wildcard is named, and where links are found in a tree.
#include "tests/unit/filemanip/dir_manip/removal_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DirManipLinkRemovalTest : public DirManipRemovalTest {};

// ---- links

TEST_F(DirManipLinkRemovalTest, NamedLinkToAFolderIsNotRemoved) {
    scratch_.makeFolder("target");
    makeLink("target", "link");
    EXPECT_EQ(rmdir({u"link"}), noFolder(u"link"));
    EXPECT_EQ(rmdir({u"link", u"s"}), noFolder(u"link"));
    EXPECT_TRUE(isThere("link"));
    EXPECT_TRUE(isThere("target"));
}

TEST_F(DirManipLinkRemovalTest, SeparatorBehindALinkStillNamesTheLink) {
    scratch_.writeFile("target/file");
    makeLink("target", "link");
    EXPECT_EQ(rmdir({u"link/"}), noFolder(u"link"));
    EXPECT_EQ(rmdir({u"link/", u"s"}), noFolder(u"link"));
    EXPECT_TRUE(isThere("target/file"));
}

TEST_F(DirManipLinkRemovalTest, OneSeparatorBehindALinkGoesWhateverTheFormOfThePath) {
    scratch_.writeFile("target/file");
    makeLink("target", "link");
    const std::u16string location = locationOf(u"link").toString();
    EXPECT_EQ(rmdir({location + u"/"}), noFolder(location));
    EXPECT_EQ(rmdir({location + u"/", u"s"}), noFolder(location));
    EXPECT_EQ(rmdir({u"link//"}), noFolder(u"link/"));
    EXPECT_EQ(rmdir({u"link//", u"s"}), noFolder(u"link/"));
    EXPECT_TRUE(isThere("target/file"));
}

TEST_F(DirManipLinkRemovalTest, SeparatorBehindAFolderStaysInTheMessage) {
    scratch_.writeFile("a/file");
    EXPECT_EQ(rmdir({u"a/"}), notRemoved(u"a/"));
}

TEST_F(DirManipLinkRemovalTest, NamedLinkIsResolvedOnRequestAndTheTargetGoes) {
    scratch_.makeFolder("target");
    makeLink("target", "link");
    EXPECT_EQ(rmdirResolving(u"link", false), success());
    EXPECT_FALSE(isThere("target"));
    EXPECT_TRUE(isThere("link"));
}

TEST_F(DirManipLinkRemovalTest, ResolvedLinkGoesWithTheContentsOfItsTarget) {
    scratch_.writeFile("target/file");
    makeLink("target", "first");
    makeLink("first", "second");
    EXPECT_EQ(rmdirResolving(u"second", false), noFolder(u"second"));
    EXPECT_EQ(rmdirResolving(u"second", true), success());
    EXPECT_FALSE(isThere("target"));
    EXPECT_TRUE(isThere("first"));
    EXPECT_TRUE(isThere("second"));
}

TEST_F(DirManipLinkRemovalTest, LinkToAFileAndOneThatLeadsNowhereAreNoFolders) {
    scratch_.writeFile("file");
    makeLink("file", "filelink");
    makeLink("nowhere", "broken");
    makeLink("loop", "loop");
    for (const std::u16string name : {u"filelink", u"broken", u"loop"}) {
        EXPECT_EQ(rmdir({name}), noFolder(name));
        EXPECT_EQ(rmdir({name, u"s"}), noFolder(name));
        EXPECT_EQ(rmdirResolving(name, true), noFolder(name));
    }
    EXPECT_TRUE(isThere("filelink") && isThere("broken") && isThere("loop") && isThere("file"));
}

TEST_F(DirManipLinkRemovalTest, LinksInATreeGoAndWhatTheyLeadToStays) {
    scratch_.writeFile("target/file");
    scratch_.writeFile("file");
    scratch_.makeFolder("a");
    makeLink("../target", "a/folderlink");
    makeLink("../file", "a/filelink");
    makeLink("nowhere", "a/broken");
    makeLink("loop", "a/loop");
    EXPECT_EQ(rmdir({u"a", u"s"}), success());
    EXPECT_FALSE(isThere("a"));
    EXPECT_TRUE(isThere("target/file") && isThere("file"));
}

TEST_F(DirManipLinkRemovalTest, LinkInATreeLeavesThePathOfItsTargetAlone) {
    dispatcher::addToSearchPath({scratch_.makeFolder("target").u16string()});
    scratch_.makeFolder("a");
    makeLink("../target", "a/link");
    EXPECT_EQ(rmdir({u"a", u"s"}), success());
    EXPECT_THAT(dispatcher::searchPath(), ElementsAre(locationOf(u"target")));
}

TEST_F(DirManipLinkRemovalTest, LinksInATreeAreResolvedOnRequestAndTheirTargetsGo) {
    scratch_.writeFile("target/file");
    scratch_.writeFile("file");
    scratch_.makeFolder("a");
    makeLink("../target", "a/folderlink");
    makeLink("../file", "a/filelink");
    EXPECT_EQ(rmdirResolving(u"a", true), success());
    EXPECT_FALSE(isThere("a") || isThere("target") || isThere("file"));
}

TEST_F(DirManipLinkRemovalTest, LinkInATreeThatLeadsNowhereGoesWithTheWholeWhereLinksAreResolved) {
    scratch_.makeFolder("a");
    makeLink("nowhere", "a/broken");
    EXPECT_EQ(rmdirResolving(u"a", true), success());
    EXPECT_FALSE(isThere("a"));
    EXPECT_FALSE(isThere("nowhere"));
}

TEST_F(DirManipLinkRemovalTest, ResolvedLinkTakesItsTargetOffThePath) {
    dispatcher::addToSearchPath({scratch_.makeFolder("target").u16string()});
    makeLink("target", "link");
    EXPECT_EQ(rmdirResolving(u"link", false), success());
    EXPECT_THAT(dispatcher::searchPath(), IsEmpty());
    EXPECT_THAT(warnings_, ElementsAre("KORVEX:RMDIR:RemovedFromPath"));
    EXPECT_EQ(runtime::interpreter::lastWarning().text,
              textOf(KORVEX::RMDIR::RemovedFromPath(pathOf(u"target"))));
}

// ---- wildcards

TEST_F(DirManipLinkRemovalTest, EveryFolderThatMatchesGoes) {
    scratch_.makeFolder("a1");
    scratch_.makeFolder("a2");
    scratch_.makeFolder("b");
    EXPECT_EQ(rmdir({u"a?"}), success());
    EXPECT_FALSE(isThere("a1") || isThere("a2"));
    EXPECT_TRUE(isThere("b"));
}

TEST_F(DirManipLinkRemovalTest, FileThatMatchesStaysAndIsNamed) {
    scratch_.makeFolder("a1");
    scratch_.writeFile("a2");
    scratch_.writeFile("a3");
    EXPECT_EQ(rmdir({u"a*"}), someNotRemoved(isNoFolder(u"a2") + u"\n" + isNoFolder(u"a3")));
    EXPECT_FALSE(isThere("a1"));
    EXPECT_TRUE(isThere("a2") && isThere("a3"));
    EXPECT_THAT(events_, testing::Not(testing::Contains(EnvironmentEvent{Kind::searchPathRefreshed, {}})));
}

TEST_F(DirManipLinkRemovalTest, LocationThatMatchesIsNamedDecoded) {
    box_->putFolder(boxLocation(u"a1"));
    box_->putFile(boxLocation(u"a 2"), "");
    EXPECT_EQ(rmdir({u"memory://box/a*"}),
              someNotRemoved(textOf(KORVEX::FileManip::NotADirectory(u"memory://box/a 2"))));
}

TEST_F(DirManipLinkRemovalTest, MatchesOfWhichNoneCouldGoAreSilent) {
    scratch_.writeFile("a1");
    scratch_.writeFile("a2/file");
    EXPECT_EQ(rmdir({u"a*"}), success());
    EXPECT_TRUE(isThere("a1") && isThere("a2/file"));
    EXPECT_THAT(events_, IsEmpty());
}

TEST_F(DirManipLinkRemovalTest, WildcardThatMatchesNothingIsNoFolder) {
    EXPECT_EQ(rmdir({u"x*"}), noFolder(pathOf(u"x*")));
    EXPECT_EQ(rmdir({u"memory://box/x*"}),
              failure(KORVEX::virtualfilesystem::resourceNotFound(u"memory://box/x*")));
}

TEST_F(DirManipLinkRemovalTest, WildcardInAFolderThatIsNotThereIsNoFolder) {
    const std::u16string name = u"nothing/x*";
    EXPECT_EQ(rmdir({name}), failure(KORVEX::FileManip::NotADirectory(name), "KORVEX:RMDIR:NotADirectory"));
    EXPECT_EQ(rmdir({u"memory://box/nothing/x*"}),
              failure(KORVEX::virtualfilesystem::resourceNotFound(u"memory://box/nothing/x*")));
}

TEST_F(DirManipLinkRemovalTest, FolderWhoseNameIsAWildcardIsMeantByItself) {
    scratch_.makeFolder("a*");
    scratch_.makeFolder("ab");
    EXPECT_EQ(rmdir({u"a*"}), success());
    EXPECT_FALSE(isThere("a*"));
    EXPECT_TRUE(isThere("ab"));
}

TEST_F(DirManipLinkRemovalTest, MatchingLinkIsPassedOver) {
    scratch_.makeFolder("a1");
    scratch_.makeFolder("target");
    makeLink("target", "a2");
    EXPECT_EQ(rmdir({u"a*"}), success());
    EXPECT_TRUE(isThere("a2") && isThere("target"));
}

TEST_F(DirManipLinkRemovalTest, MatchingLinkToAFolderThatIsNotWritableIsNamedBeforeItIsPassedOver) {
    scratch_.makeFolder("a1");
    scratch_.makeFolder("target");
    protect("target");
    makeLink("target", "a2");
    EXPECT_EQ(rmdir({u"a*"}), someNotRemoved(textOf(KORVEX::FileManip::ReadOnly(pathOf(u"a2")))));
    EXPECT_FALSE(isThere("a1"));
    EXPECT_TRUE(isThere("a2") && isThere("target"));
}

TEST_F(DirManipLinkRemovalTest, MatchingLinkIsResolvedOnRequestAndTheTargetGoes) {
    scratch_.makeFolder("target");
    makeLink("target", "a1");
    EXPECT_EQ(rmdirResolving(u"a*", false), success());
    EXPECT_FALSE(isThere("target"));
    EXPECT_TRUE(isThere("a1"));
}

TEST_F(DirManipLinkRemovalTest, ListOfFailuresStopsGrowingAndTheRestIsStillDone) {
    for (int file = 0; file < 200; ++file)
        scratch_.writeFile("a" + std::to_string(1000 + file));
    scratch_.makeFolder("az");
    const CommandResult result = rmdir({u"a*"});
    EXPECT_EQ(result.identifier, "KORVEX:RMDIR:SomeDirectoriesNotRemoved");
    EXPECT_GE(result.text.size(), 4096U);
    EXPECT_LT(result.text.size(), 4096U + 500U);
    EXPECT_FALSE(isThere("az"));
}

}  // namespace
}  // namespace korvex::filemanip::tests
