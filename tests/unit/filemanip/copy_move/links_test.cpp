// Symbolic links as the source of a transfer, on a disk, since only a disk has them.
#include "platform/message_identifiers.h"
#include "tests/unit/filemanip/copy_move/links_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(LinksTest, CopyWithoutAnOptionTakesWhatTheLinkLeadsTo) {
    EXPECT_EQ(failureOf(copyCommand, Texts{u"toFile", u"new"}), noFailure());
    EXPECT_EQ(whatIs("new"), "F");
    EXPECT_EQ(copy(u"toFile", u"new2", u"osdefault"), noFailure());
    EXPECT_EQ(whatIs("new2"), "F");
    EXPECT_EQ(failureOf(copyCommand, Texts{u"toFolder", u"newFolder"}), noFailure());
    EXPECT_EQ(whatIs("newFolder/inner"), "I");
}

TEST_F(LinksTest, CopyThatResolvesTakesWhatTheLinkLeadsToUnderItsOwnName) {
    EXPECT_EQ(copy(u"toFile", u"new", u"resolve"), noFailure());
    EXPECT_EQ(whatIs("new"), "F");
    EXPECT_EQ(copy(u"toFile", u"d", u"resolve"), noFailure());
    EXPECT_EQ(whatIs("d/file"), "F");
    EXPECT_EQ(whatIs("d/toFile"), "nothing");
}

TEST_F(LinksTest, CopyWithoutAnOptionKeepsTheNameOfTheLink) {
    EXPECT_EQ(failureOf(copyCommand, Texts{u"toFile", u"d"}), noFailure());
    EXPECT_EQ(whatIs("d/toFile"), "F");
}

TEST_F(LinksTest, ResolvedLinkIntoTheFolderOfItsFileIsTheSamePlace) {
    EXPECT_EQ(copy(u"toFile", u"file", u"resolve"),
              failure("KORVEX:COPYFILE:SourceAndDestinationSame", "KORVEX:FILE:SourceAndDestinationSame"));
    link("d", "toD");
    scratch_.writeFile("d/x", "X");
    EXPECT_EQ(copy(u"d/x", u"toD", u"resolve"),
              failure("KORVEX:COPYFILE:SourceAndDestinationSame", "KORVEX:FILE:SourceAndDestinationSame"));
    EXPECT_EQ(whatIs("d/x"), "X");
}

TEST_F(LinksTest, CopyThatPreservesMakesALinkOfThatName) {
    EXPECT_EQ(copy(u"toFile", u"new", u"preserve"), noFailure());
    EXPECT_EQ(whatIs("new"), "link to file");
    EXPECT_EQ(copy(u"toFolder", u"newFolder", u"preserve"), noFailure());
    EXPECT_EQ(whatIs("newFolder"), "link to folder");
    EXPECT_EQ(copy(u"broken", u"newBroken", u"preserve"), noFailure());
    EXPECT_EQ(whatIs("newBroken"), "link to nowhere");
}

TEST_F(LinksTest, CopyThatPreservesMakesALinkInAFolder) {
    EXPECT_EQ(copy(u"toFile", u"d", u"preserve"), noFailure());
    EXPECT_EQ(whatIs("d/toFile"), "link to file");
    EXPECT_EQ(copy(u"broken", u"d/", u"preserve", {u"f"}), noFailure());
    EXPECT_EQ(whatIs("d/broken"), "link to nowhere");
    link("d", "toD");
    EXPECT_EQ(copy(u"toFolder", u"toD", u"preserve"), noFailure());
    EXPECT_EQ(whatIs("d/toFolder"), "link to folder");
}

TEST_F(LinksTest, CopiedLinkTellsTheEnvironmentNothing) {
    EXPECT_EQ(copy(u"toFile", u"new", u"preserve"), noFailure());
    EXPECT_EQ(copy(u"toFile", u"d", u"preserve"), noFailure());
    EXPECT_THAT(environment_.takeEvents(), IsEmpty());
    EXPECT_THAT(environment_.takeWarnings(), IsEmpty());
}

TEST_F(LinksTest, FileThatIsNoLinkIsCopiedAsUsualWherePreservingIsAskedFor) {
    EXPECT_EQ(copy(u"file", u"new", u"preserve"), noFailure());
    EXPECT_EQ(whatIs("new"), "F");
    EXPECT_FALSE(environment_.takeEvents().empty());
}

TEST_F(LinksTest, WhatStandsInTheLinksPlaceIsNotReplacedEvenByForce) {
    scratch_.writeFile("old", "old");
    for (const Texts& force : {Texts{}, Texts{u"f"}}) {
        EXPECT_EQ(copy(u"toFile", u"old", u"preserve", force),
                  failure("KORVEX:COPYFILE:CannotCreateSymlinkInDestFolderWithName",
                          "KORVEX:io:filesystem:symlink:CannotCreateSymlinkWithName", {u"old", at(u"old")}));
        EXPECT_EQ(
            copy(u"toFile", u"broken", u"preserve", force),
            failure("KORVEX:COPYFILE:CannotCreateSymlinkInDestFolderWithName",
                    "KORVEX:io:filesystem:symlink:CannotCreateSymlinkWithName", {u"broken", at(u"broken")}));
    }
    EXPECT_EQ(whatIs("old"), "old");
    EXPECT_EQ(whatIs("broken"), "link to nowhere");
}

TEST_F(LinksTest, WhatStandsInTheFolderUnderTheLinksNameIsNotReplacedEvenByForce) {
    scratch_.writeFile("d/toFile", "old");
    for (const Texts& force : {Texts{}, Texts{u"f"}}) {
        EXPECT_EQ(
            copy(u"toFile", u"d", u"preserve", force),
            failure("KORVEX:COPYFILE:CannotCreateSymlinkInDestFolder",
                    "KORVEX:io:filesystem:symlink:CannotCreateSymlinkInDestFolder", {u"toFile", at(u"d")}));
    }
    EXPECT_EQ(whatIs("d/toFile"), "old");
    EXPECT_THAT(environment_.takeEvents(), IsEmpty());
}

TEST_F(LinksTest, MissingFolderOfTheNewLinkIsNotMade) {
    EXPECT_EQ(copy(u"toFile", u"x/new", u"preserve"),
              failure("KORVEX:COPYFILE:CannotCreateSymlinkInDestFolderWithName",
                      "KORVEX:io:filesystem:symlink:CannotCreateSymlinkWithName", {u"new", at(u"x/new")}));
    EXPECT_EQ(whatIs("x"), "nothing");
}

TEST_F(LinksTest, SchemeChoosesTheStoragesWordForALinkThatCannotBeMade) {
    EXPECT_EQ(copy(u"toFile", u"file://" + at(u"file"), u"preserve"),
              failure("KORVEX:virtualfilesystem:CannotCreateSymlinkInDestFolderWithName",
                      "KORVEX:io:filesystem:symlink:CannotCreateSymlinkWithName", {u"file", at(u"file")}));
    EXPECT_EQ(copy(u"file://" + at(u"toFile"), u"new", u"preserve"), noFailure());
    EXPECT_EQ(whatIs("new"), "link to file");
}

TEST_F(LinksTest, SamePlaceIsRefusedBeforeTheLinkIsLookedAt) {
    EXPECT_EQ(copy(u"toFile", u"toFile", u"preserve"),
              failure("KORVEX:COPYFILE:SourceAndDestinationSame", "KORVEX:FILE:SourceAndDestinationSame"));
    EXPECT_EQ(copy(u"toFile", u".", u"preserve"),
              failure("KORVEX:COPYFILE:SourceAndDestinationSame", "KORVEX:FILE:SourceAndDestinationSame"));
}

TEST_F(LinksTest, MatchesOfAWildcardAreNotTheSourceThatIsPreserved) {
    EXPECT_EQ(copy(u"toFi*", u"d", u"preserve"), noFailure());
    EXPECT_EQ(whatIs("d/toFile"), "F");
}

TEST_F(LinksTest, LinksInsideOfAFolderStayLinks) {
    link("inner", "folder/toInner");
    EXPECT_EQ(failureOf(copyCommand, Texts{u"folder", u"new"}), noFailure());
    EXPECT_EQ(whatIs("new/toInner"), "link to inner");
    EXPECT_EQ(copy(u"folder", u"new2", u"resolve"), noFailure());
    EXPECT_EQ(whatIs("new2/toInner"), "link to inner");
}

TEST_F(LinksTest, BrokenLinkThatIsResolvedHasNoTarget) {
    EXPECT_EQ(copy(u"broken", u"d", u"resolve"),
              failure("KORVEX:COPYFILE:NoTargetForBrokenSymlink",
                      "KORVEX:io:filesystem:symlink:NoTargetForBrokenSymlink", {at(u"broken")}));
    EXPECT_EQ(copy(u"file://" + at(u"broken"), u"d", u"resolve"),
              failure("KORVEX:virtualfilesystem:NoTargetForBrokenSymlink",
                      "KORVEX:io:filesystem:symlink:NoTargetForBrokenSymlink", {at(u"broken")}));
    EXPECT_EQ(whatIs("d/broken"), "nothing");
}

TEST_F(LinksTest, BrokenLinkThatIsCopiedByTheLayersRuleIsNotFound) {
    EXPECT_EQ(failureOf(copyCommand, Texts{u"broken", u"d"}),
              failure("KORVEX:COPYFILE:ResourceNotFound", "KORVEX:virtualfilesystem:resourceNotFound",
                      {at(u"broken")}));
    EXPECT_EQ(whatIs("d/broken"), "nothing");
}

TEST_F(LinksTest, BrokenLinkAmongMatchesIsNotFoundAlsoWherePreservingIsAskedFor) {
    for (const std::u16string behavior : {u"osdefault", u"preserve"}) {
        EXPECT_EQ(copy(u"b*", u"d", behavior),
                  failure("KORVEX:COPYFILE:ResourceNotFound", "KORVEX:virtualfilesystem:resourceNotFound",
                          {at(u"broken")}));
        EXPECT_EQ(whatIs("d/broken"), "nothing");
    }
}

TEST_F(LinksTest, MoveRenamesTheLink) {
    EXPECT_EQ(move(u"toFile", u"new"), noFailure());
    EXPECT_EQ(whatIs("new"), "link to file");
    EXPECT_EQ(whatIs("toFile"), "nothing");
    EXPECT_EQ(whatIs("file"), "F");
    EXPECT_EQ(move(u"toFolder", u"newFolder"), noFailure());
    EXPECT_EQ(whatIs("newFolder"), "link to folder");
    EXPECT_EQ(whatIs("folder/inner"), "I");
}

TEST_F(LinksTest, MovePutsTheLinkIntoAFolder) {
    EXPECT_EQ(move(u"toFile", u"d"), noFailure());
    EXPECT_EQ(whatIs("d/toFile"), "link to file");
    EXPECT_EQ(move(u"broken", u"d"), noFailure());
    EXPECT_EQ(whatIs("d/broken"), "link to nowhere");
    EXPECT_EQ(whatIs("broken"), "nothing");
}

TEST_F(LinksTest, BrokenLinkUnderANewNameGoesIntoAFolderOfThatName) {
    // On purpose: nothing stands at the end of the link, so it is found as the match of its own name.
    EXPECT_EQ(move(u"broken", u"new"), noFailure());
    EXPECT_EQ(whatIs("new"), "folder");
    EXPECT_EQ(whatIs("new/broken"), "link to nowhere");
}

TEST_F(LinksTest, MoveThatResolvesMovesWhatTheLinkLeadsTo) {
    EXPECT_EQ(moveResolved(u"toFile", u"new"), noFailure());
    EXPECT_EQ(whatIs("new"), "F");
    EXPECT_EQ(whatIs("file"), "nothing");
    EXPECT_EQ(whatIs("toFile"), "link to file");
    EXPECT_EQ(moveResolved(u"toFolder", u"d"), noFailure());
    EXPECT_EQ(whatIs("d/folder/inner"), "I");
    EXPECT_EQ(whatIs("toFolder"), "link to folder");
}

TEST_F(LinksTest, MoveThatPreservesIsAnOrdinaryMoveAndTellsTheEnvironment) {
    EXPECT_EQ(move(u"toFile", u"new"), noFailure());
    const std::string here = scratch_.path().string();
    EXPECT_THAT(environment_.takeEvents(),
                ElementsAre("folderOutOfDate " + here + "/toFile", "folderOutOfDate " + here + "/new",
                            "pathRefreshRequested"));
}

TEST_F(LinksTest, LinkOnTheWayIsFollowedInAnyCase) {
    EXPECT_EQ(copy(u"toFolder/inner", u"new", u"preserve"), noFailure());
    EXPECT_EQ(whatIs("new"), "I");
    EXPECT_EQ(copy(u"file", u"toFolder/new", u"preserve"), noFailure());
    EXPECT_EQ(whatIs("folder/new"), "F");
}

TEST_F(LinksTest, FileIntoALinkToAFolderGoesIntoTheFolder) {
    EXPECT_EQ(failureOf(copyCommand, Texts{u"file", u"toFolder"}), noFailure());
    EXPECT_EQ(whatIs("folder/file"), "F");
    EXPECT_EQ(whatIs("toFolder"), "link to folder");
}

TEST_F(LinksTest, PlaceThatIsNoLocalPathTakesNoLink) {
    // Taken as a path against the process's own folder it would have a place for the link.
    const fs::path processFolder = fs::current_path();
    scratch_.makeFolder("process/memory:/box");
    fs::current_path(scratch_.path() / "process");
    const Failure told = copy(u"toFile", u"memory://box/new", u"preserve");
    fs::current_path(processFolder);
    EXPECT_EQ(told, failure("KORVEX:virtualfilesystem:CannotCreateSymlinkInDestFolderWithName",
                            "KORVEX:io:filesystem:symlink:CannotCreateSymlinkWithName",
                            {u"new", u"memory://box/new"}));
    EXPECT_EQ(whatIs("process/memory:/box/new"), "nothing");
}

TEST_F(LinksTest, FolderThatIsNoLocalOneIsShownAsItWouldBeTyped) {
    vfs::Folder(vfs::AbsoluteIRI(u"memory://links/two%20words"),
                Velquist::KorvexStorageSystem::GetStorageSystemReference())
        .createFolder();
    EXPECT_EQ(copy(u"toFile", u"memory://links/two%20words", u"preserve"),
              failure("KORVEX:virtualfilesystem:CannotCreateSymlinkInDestFolder",
                      "KORVEX:io:filesystem:symlink:CannotCreateSymlinkInDestFolder",
                      {u"toFile", u"memory://links/two words"}));
}

TEST_F(LinksTest, NamesThatNoDiskHasTakeNoLink) {
    const std::u16string unpaired(1, 0xD800);
    EXPECT_EQ(copy(u"toFile", unpaired, u"preserve").identifier,
              "KORVEX:COPYFILE:CannotCreateSymlinkInDestFolderWithName");
    EXPECT_EQ(copy(u"toFile", u"file://" + at(u"new%00x"), u"preserve").identifier,
              "KORVEX:virtualfilesystem:CannotCreateSymlinkInDestFolderWithName");
    EXPECT_EQ(whatIs("new"), "nothing");
}

TEST_F(LinksTest, OddNamesOfLinksArriveAsTheyAre) {
    const std::string odd =
        "a\xff"
        "b\n c";
    link("file", odd);
    EXPECT_EQ(copy(std::u16string{u'a', 0xDCFF, u'b', u'\n', u' ', u'c'}, u"d", u"preserve"), noFailure());
    EXPECT_EQ(whatIs("d/" + odd), "link to file");
}

TEST_F(LinksTest, TargetsOfLinksThatAreNoTextAreKept) {
    link("no-\xff-text", "odd");
    EXPECT_EQ(copy(u"odd", u"new", u"preserve"), noFailure());
    EXPECT_EQ(whatIs("new"), "link to no-\xff-text");
}

}  // namespace
}  // namespace korvex::filemanip::tests
