// `delete`: names whose last component holds `*`.
#include "tests/unit/filemanip/delete/delete_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DeleteWildcardsTest : public DeleteTest {};

TEST_F(DeleteWildcardsTest, MatchingFilesGoAndOthersStay) {
    make({"a.txt", "b.txt", "c.dat", ".hidden.txt", "d/a.txt"});
    EXPECT_THAT(deleteNames({u"*.txt"}), IsEmpty());
    EXPECT_EQ(left(), (Names{"c.dat", "d"}));
    EXPECT_TRUE(fs::exists(diskPath("d/a.txt")));
}

TEST_F(DeleteWildcardsTest, WorkInFoldersAndLocations) {
    make({"d/a1", "d/a2", "d/b"});
    makeInBox({u"a1", u"a2", u"b", u"d/a1"});
    EXPECT_THAT(deleteNames({u"d/a*", u"file://" + pathOf(u"d/b*"), u"memory://box/a*"}), IsEmpty());
    EXPECT_TRUE(fs::is_empty(diskPath("d")));
    EXPECT_EQ(leftInBox(), (Names{"b", "d"}));
}

TEST_F(DeleteWildcardsTest, MatchingFoldersStayWithAWarningThatNamesTheirPlace) {
    make({"dir1/", "dir2.txt", "dir3/x", "dir4"});
    EXPECT_THAT(deleteNames({u"dir*"}),
                ElementsAre(warning(KORVEX::DELETE::DirectoryDeletion(pathOf(u"dir1"))),
                            warning(KORVEX::DELETE::DirectoryDeletion(pathOf(u"dir3")))));
    EXPECT_EQ(left(), (Names{"dir1", "dir3"}));
}

TEST_F(DeleteWildcardsTest, OfLocationsTheWarningShowsTheDecodedLocation) {
    makeInBox({u"two words/a", u"two b"});
    EXPECT_THAT(deleteNames({u"memory://box/two*"}),
                ElementsAre(warning(KORVEX::DELETE::DirectoryDeletion(u"memory://box/two words"))));
    EXPECT_EQ(leftInBox(), Names{"two words"});
    make({"two words/", "two b"});
    EXPECT_THAT(deleteNames({u"file://" + pathOf(u"two*")}),
                ElementsAre(warning(KORVEX::DELETE::DirectoryDeletion(u"file://" + pathOf(u"two words")))));
    EXPECT_EQ(left(), Names{"two words"});
}

TEST_F(DeleteWildcardsTest, WithoutAMatchNothingIsSaid) {
    make({"a", "d/"});
    EXPECT_THAT(deleteNames({u"nothing*", u"d/*", u"memory://box/nothing*"}), IsEmpty());
    EXPECT_THAT(deleteNames({u"nowhere/*", u"a/*", u"memory://box/nowhere/*"}), IsEmpty())
        << "not even about a folder that is not there";
    EXPECT_EQ(left(), (Names{"a", "d"}));
}

TEST_F(DeleteWildcardsTest, OnlyTheLastComponentIsAPattern) {
    make({"d1/a", "d2/a"});
    EXPECT_THAT(deleteNames({u"d*/a", u"d*/*"}), IsEmpty());
    EXPECT_TRUE(fs::exists(diskPath("d1/a")));
    makeInBox({u"d1/a"});
    EXPECT_THAT(deleteNames({u"memory://box/d*/a"}), IsEmpty());
    EXPECT_TRUE(leftInBox().contains("d1"));
}

TEST_F(DeleteWildcardsTest, StarInAFoldersNameIsLookedUpAsItStands) {
    make({"d*/a", "d1/a"});
    EXPECT_THAT(deleteNames({u"d*/a"}), IsEmpty());
    EXPECT_FALSE(fs::exists(diskPath("d*/a")));
    EXPECT_TRUE(fs::exists(diskPath("d1/a")));
    EXPECT_THAT(deleteNames({u"d*/nothing"}),
                ElementsAre(warning(KORVEX::DELETE::FileNotFound(u"d*/nothing"))))
        << "the folder is there, and the last component is no pattern";
}

TEST_F(DeleteWildcardsTest, FileThatReallyHasTheNameIsTheOnlyOneToGo) {
    make({"a*", "a1", "a2"});
    EXPECT_THAT(deleteNames({u"a*"}), IsEmpty());
    EXPECT_EQ(left(), (Names{"a1", "a2"}));
    EXPECT_THAT(deleteNames({u"a*"}), IsEmpty());
    EXPECT_EQ(left(), Names{});
}

TEST_F(DeleteWildcardsTest, FolderThatReallyHasTheNameStaysAndSoDoTheMatches) {
    make({"a*/", "a1"});
    EXPECT_THAT(deleteNames({u"a*"}), ElementsAre(warning(KORVEX::DELETE::DirectoryDeletion(u"a*"))));
    EXPECT_EQ(left(), (Names{"a*", "a1"}));
}

TEST_F(DeleteWildcardsTest, MatchesGoInTheOrderOfTheListing) {
    make({"b", "a", "c", "B"});
    EXPECT_THAT(deleteNames({u"*"}), IsEmpty());
    std::vector<std::u16string> removed;
    for (const auto& call : local_->callsOf(Operation::removeFile))
        removed.push_back(call.location.getName());
    EXPECT_THAT(removed, ElementsAre(u"B", u"a", u"b", u"c"));
}

TEST_F(DeleteWildcardsTest, EachMatchIsLookedAtOnceMore) {
    make({"a1", "a2"});
    deleteNames({u"a*"});
    std::vector<std::u16string> asked;
    for (const auto& call : local_->callsOf(Operation::extendedExistence))
        asked.push_back(call.location.getName());
    EXPECT_THAT(asked, ElementsAre(u"a*", u"a1", u"a2"));
}

TEST_F(DeleteWildcardsTest, MatchThatIsGoneWhenItIsLookedAtEndsTheListingWithoutAWord) {
    make({"a1", "a2", "a3", "b"});
    const auto watcher = runtime::dispatcher::watchEvents(
        [this](const runtime::dispatcher::EnvironmentEvent&) { fs::remove(diskPath("a2")); });
    EXPECT_THAT(deleteNames({u"a*", u"b"}), IsEmpty());
    runtime::dispatcher::watchEvents(watcher);
    EXPECT_EQ(left(), Names{"a3"});
}

TEST_F(DeleteWildcardsTest, QuestionMarkIsOneUnitAndNotSilentWithoutAMatch) {
    make({"a", "ab", "ac", "abc"});
    EXPECT_THAT(deleteNames({u"a?"}), IsEmpty());
    EXPECT_EQ(left(), (Names{"a", "abc"}));
    EXPECT_THAT(deleteNames({u"a?"}), ElementsAre(warning(KORVEX::DELETE::FileNotFound(u"a?"))));
}

TEST_F(DeleteWildcardsTest, SeveralStarsAndSeveralNames) {
    make({"x1y2z", "x1y", "1y2", "b1", "c1"});
    EXPECT_THAT(deleteNames({u"*y*z", u"b*", u"*c*"}), IsEmpty());
    EXPECT_EQ(left(), (Names{"x1y", "1y2"}));
}

TEST_F(DeleteWildcardsTest, NamesOfAnyBytesMatch) {
    for (const char* name : {"x\xE9", "x\xFF", "x\n", "x \xC3\xBC", "x%41"})
        make({name});
    EXPECT_THAT(deleteNames({u"x*"}), IsEmpty());
    EXPECT_EQ(left(), Names{});
}

TEST_F(DeleteWildcardsTest, FailureEndsTheListingAndNotTheCommand) {
    make({"a1", "a2", "a3", "b"});
    local_->failAt(Operation::removeFile, locationOf(u"a2"), {.code = vfs::permissionDenied});
    EXPECT_THAT(deleteNames({u"a*", u"b"}), ElementsAre(warning(KORVEX::DELETE::Permission())));
    EXPECT_EQ(left(), (Names{"a2", "a3"}));
}

TEST_F(DeleteWildcardsTest, InterruptReadsAsNotFoundAndLeavesTheFilesBehindIt) {
    make({"a1", "a2", "b", "c1", "d/"});
    makeLink("d", "toFolder");
    const std::u16string location = u"file://" + pathOf(u"b");
    const InterruptingWatcher watcher;
    EXPECT_THAT(
        deleteNames({u"a*", u"b", u"c*", location, u"nothing*", u"toFolder"}),
        ElementsAre(warning(KORVEX::DELETE::FileNotFound(u"a*")), warning(KORVEX::DELETE::FileNotFound(u"b")),
                    warning(KORVEX::DELETE::FileNotFound(u"c*")),
                    warning(KORVEX::virtualfilesystem::unknownError(location)),
                    warning(KORVEX::DELETE::FileNotFound(u"nothing*")),
                    warning(KORVEX::DELETE::FileNotFound(u"toFolder"))));
    EXPECT_EQ(left(), (Names{"a2", "b", "c1", "d", "toFolder"}));
    EXPECT_TRUE(runtime::interpreter::isInterruptPending());
}

TEST_F(DeleteWildcardsTest, SeparatorBehindTheStarMakesNoDifference) {
    make({"a1", "d/"});
    EXPECT_THAT(deleteNames({u"a*/"}), IsEmpty());
    EXPECT_EQ(left(), Names{"d"});
}

}  // namespace
}  // namespace korvex::filemanip::tests
