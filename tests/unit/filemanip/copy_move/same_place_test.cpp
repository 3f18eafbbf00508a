// Sent onto itself, by whatever spelling and through whatever link, nothing is lost and nothing is changed.
#include "tests/unit/filemanip/copy_move/links_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace fs = std::filesystem;

Failure samePlace(const Command& command) {
    return failure("KORVEX:" + command.word + ":SourceAndDestinationSame",
                   "KORVEX:FILE:SourceAndDestinationSame");
}

/// Both commands; also "d/x", which is write-protected, and "toD", which leads to "d".
class SamePlaceTest : public LinksTest, public testing::WithParamInterface<Command> {
protected:
    SamePlaceTest() {
        fs::permissions(scratch_.writeFile("d/x", "X"), fs::perms(0444));
        link("d", "toD");
    }
    Failure run(const std::u16string& source, const std::u16string& destination, const Texts& options = {}) {
        Texts arguments{source, destination};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return failureOf(GetParam(), arguments);
    }
    bool isProtected(const fs::path& name) const {
        return (fs::status(scratch_.path() / name).permissions() & fs::perms(0222)) == fs::perms::none;
    }
};

INSTANTIATE_TEST_SUITE_P(CopyMove, SamePlaceTest, testing::Values(copyCommand, moveCommand), nameOfCommand);

TEST_P(SamePlaceTest, FileIsNotSentOntoItselfThroughALinkOnTheWay) {
    EXPECT_EQ(run(u"d/x", u"toD/x", {u"f"}), samePlace(GetParam()));
    EXPECT_EQ(run(u"d/x", u"toD", {u"f"}), samePlace(GetParam()));
    EXPECT_EQ(run(u"toD/x", u"d/", {u"f"}), samePlace(GetParam()));
    EXPECT_EQ(whatIs("d/x"), "X");
    EXPECT_TRUE(isProtected("d/x"));
}

TEST_P(SamePlaceTest, LinkIsNotSentOntoTheFileThatItLeadsTo) {
    for (const Texts& options : {Texts{}, Texts{u"f"}}) {
        EXPECT_EQ(run(u"toFile", u"file", options), samePlace(GetParam()));
        EXPECT_EQ(whatIs("file"), "F");
        EXPECT_EQ(whatIs("toFile"), "link to file");
    }
}

TEST_P(SamePlaceTest, SecondNameOfAFileIsAnotherFile) {
    fs::create_hard_link(scratch_.path() / "file", scratch_.path() / "name");
    EXPECT_EQ(run(u"file", u"name"), noFailure());
    EXPECT_EQ(whatIs("name"), "F");
}

TEST_P(SamePlaceTest, LinkAmongTheMatchesNeverTakesThePlaceOfItsFile) {
    link("../file", "d/file");
    const Failure outcome = run(u"d/f*", u".", {u"f"});
    EXPECT_EQ(outcome == noFailure(), GetParam().isCopy);
    EXPECT_EQ(whatIs("file"), "F");
    EXPECT_EQ(whatIs("d/file"), "link to ../file");
}

TEST_P(SamePlaceTest, LinkInAMergedFolderNeverTakesThePlaceOfItsFile) {
    scratch_.makeFolder("a/folder");
    link("../../folder/inner", "a/folder/inner");
    for (const Texts& options : {Texts{}, Texts{u"f"}}) {
        EXPECT_NE(run(u"a/folder", GetParam().isCopy ? u"folder" : u".", options), noFailure());
        EXPECT_EQ(whatIs("folder/inner"), "I");
        EXPECT_EQ(whatIs("a/folder/inner"), "link to ../../folder/inner");
    }
}

TEST_P(SamePlaceTest, FolderThatOneStandsInIsNeverSentAsAWholeByAnySpelling) {
    scratch_.writeFile("p/real/file", "R");
    link("p", "toP");
    runtime::dispatcher::setCurrentFolderPath(at(u"p/real"));
    EXPECT_EQ(run(at(u"toP/real"), at(u"new")), noFailure());
    EXPECT_EQ(whatIs("new/file"), "R");
    EXPECT_EQ(whatIs("p/real"), "folder");
}

TEST_F(LinksTest, LinkDoesNotMoveOntoAnotherLinkToTheSameFile) {
    link("./file", "other");
    EXPECT_EQ(move(u"toFile", u"other"), samePlace(moveCommand));
    EXPECT_EQ(whatIs("other"), "link to ./file");
    EXPECT_EQ(whatIs("toFile"), "link to file");
}

TEST_F(LinksTest, FileDoesNotMoveOntoALinkToItself) {
    EXPECT_EQ(move(u"file", u"toFile"), samePlace(moveCommand));
    EXPECT_EQ(whatIs("toFile"), "link to file");
    EXPECT_EQ(whatIs("file"), "F");
}

TEST_F(LinksTest, LinkDoesNotMoveOntoItselfByAnotherSpelling) {
    link("folder", "toTheFolder");
    link("inner", "folder/toInner");
    const Failure same = samePlace(moveCommand);
    EXPECT_EQ(move(u"folder/toInner", u"toTheFolder/toInner"), same);
    EXPECT_EQ(move(u"folder/toInner", u"toTheFolder"), same);
    EXPECT_EQ(whatIs("folder/toInner"), "link to inner");
}

TEST_F(LinksTest, LinkToTheFolderThatOneStandsInIsMovedItself) {
    runtime::dispatcher::setCurrentFolderPath(at(u"folder"));
    EXPECT_EQ(move(at(u"toFolder"), at(u"moved")), noFailure());
    EXPECT_EQ(whatIs("moved"), "link to folder");
    EXPECT_EQ(whatIs("folder/inner"), "I");
}

TEST_F(LinksTest, MovedLinkLeavesTheProtectionOfWhatItLeadsTo) {
    for (const fs::perms bits : {fs::perms(0444), fs::perms(0464)}) {
        fs::permissions(scratch_.path() / "file", bits);
        EXPECT_EQ(failureOf(moveCommand, Texts{u"toFile", u"moved", u"f"}), noFailure());
        EXPECT_EQ(whatIs("moved"), "link to file");
        EXPECT_EQ(fs::status(scratch_.path() / "file").permissions(), bits);
        EXPECT_EQ(failureOf(moveCommand, Texts{u"moved", u"toFile"}), noFailure());
    }
}

TEST_F(LinksTest, LinkThatAForcedMoveReplacesLeavesTheProtectionOfWhatItLeadsTo) {
    fs::permissions(scratch_.path() / "file", fs::perms(0444));
    EXPECT_EQ(failureOf(moveCommand, Texts{u"folder/inner", u"toFile", u"f"}), noFailure());
    EXPECT_EQ(whatIs("toFile"), "I");
    EXPECT_EQ(whatIs("file"), "F");
    EXPECT_EQ(fs::status(scratch_.path() / "file").permissions(), fs::perms(0444));
}

TEST_F(LinksTest, LinkAmongTheTargetsOfAForcedMoveLeavesTheProtectionOfWhatItLeadsTo) {
    fs::permissions(scratch_.path() / "file", fs::perms(0444));
    link("../file", "d/inner");
    EXPECT_EQ(failureOf(moveCommand, Texts{u"folder/i*", u"d", u"f"}), noFailure());
    EXPECT_EQ(whatIs("d/inner"), "I");
    EXPECT_EQ(fs::status(scratch_.path() / "file").permissions(), fs::perms(0444));
}

}  // namespace
}  // namespace korvex::filemanip::tests
