// What goes item by item: the matches of a wildcard, the folder one stands in, and a folder into itself.
#include "platform/message_identifiers.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/transfer_progress.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using storage::Call;
using storage::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

/// "/s" with two files and a folder, and the empty folder "/d", at the settings' prefix.
class FolderContentsTest : public TransferTest {
protected:
    FolderContentsTest() {
        put(u"/s/a.txt", "A");
        put(u"/s/b.txt", "B");
        put(u"/s/c.txt/inner", "I");
        put(u"/s/other", "O");
        put(u"/d/");
    }

    Tree treeOf(const std::u16string& folder) const { return storage_.treeOf(path(folder)); }
    /// What the source folder holds when these entries have been taken from it.
    Tree sourceWithout(const std::vector<std::string>& entries) const {
        Tree left = all_;
        if (command().isCopy) return left;
        for (const std::string& entry : entries)
            std::erase_if(left, [&](const auto& item) { return item.first.starts_with(entry); });
        return left;
    }
    Operation fileOperation() const { return command().isCopy ? Operation::copyFile : Operation::moveFile; }
    Failure readOnly(const std::u16string& at) const {
        return failure(commandIdentifier("ReadOnly"), "KORVEX:FILE:ReadOnly", {path(at)});
    }

    const Tree all_{{"a.txt", "A"}, {"b.txt", "B"}, {"c.txt/", ""}, {"c.txt/inner", "I"}, {"other", "O"}};
    const Tree matches_{{"a.txt", "A"}, {"b.txt", "B"}, {"c.txt/", ""}, {"c.txt/inner", "I"}};
};

INSTANTIATE_TEST_SUITE_P(CopyMove, FolderContentsTest, testing::ValuesIn(allSettings()), nameOfSetting);

TEST_P(FolderContentsTest, MatchesGoIntoTheFolder) {
    EXPECT_EQ(run(u"/s/*.txt", u"/d"), noFailure());
    EXPECT_EQ(treeOf(u"/d"), matches_);
    EXPECT_EQ(treeOf(u"/s"), sourceWithout({"a.txt", "b.txt", "c.txt"}));
}

TEST_P(FolderContentsTest, MatchesGoInTheOrderOfTheListing) {
    EXPECT_EQ(run(u"/s/*.txt", u"/d"), noFailure());
    const auto folderOperation = command().isCopy ? Operation::copyFolder : Operation::moveFolder;
    const auto to = [&](Operation operation, const std::u16string& name) {
        return Call{operation, storage_.at(path(u"/s/" + name)), storage_.at(path(u"/d/" + name))};
    };
    EXPECT_THAT(storage_.changes(), ElementsAre(to(fileOperation(), u"a.txt"), to(fileOperation(), u"b.txt"),
                                                to(folderOperation, u"c.txt")));
}

TEST_P(FolderContentsTest, EnvironmentIsToldOnceOfThePathsThatWereNamed) {
    const std::string prefix = GetParam().hasScheme() ? "memory://box" : "";
    EXPECT_EQ(run(u"/s/*", u"/d"), noFailure());
    if (command().isCopy) {
        EXPECT_THAT(environment_.takeEvents(),
                    ElementsAre("folderOutOfDate " + prefix + "/d", "pathRefreshRequested"));
    } else {
        EXPECT_THAT(environment_.takeEvents(),
                    ElementsAre("folderOutOfDate " + prefix + "/s/*", "folderOutOfDate " + prefix + "/d",
                                "pathRefreshRequested"));
    }
}

TEST_P(FolderContentsTest, NewNameBecomesAFolderForTheMatches) {
    EXPECT_EQ(run(u"/s/a*", u"/d/new"), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"new/", ""}, {"new/a.txt", "A"}}));
}

TEST_P(FolderContentsTest, MissingFoldersAboveANewNameAreMade) {
    EXPECT_EQ(run(u"/s/*.txt", u"/x/y/new"), noFailure());
    EXPECT_EQ(treeOf(u"/x/y/new"), matches_);
}

TEST_P(FolderContentsTest, MatchesReplaceWritableFiles) {
    put(u"/d/b.txt", "old");
    EXPECT_EQ(run(u"/s/?.txt", u"/d"), noFailure());
    EXPECT_EQ(treeOf(u"/d"), matches_);
}

TEST_P(FolderContentsTest, NameWithoutAMatchIsNotFound) {
    const auto notFound = [&](const std::u16string& at) {
        return GetParam().hasScheme()
                   ? plainFailure("KORVEX:virtualfilesystem:resourceNotFound", {path(at)})
                   : failure(commandIdentifier("FileNotFound"), "KORVEX:FILE:FileNotFound", {path(at)});
    };
    EXPECT_EQ(run(u"/s/nothing", u"/d"), notFound(u"/s/nothing"));
    EXPECT_EQ(run(u"/s/*.dat", u"/d"), notFound(u"/s/*.dat"));
    EXPECT_EQ(run(u"/s/*.dat", u"/d/new"), notFound(u"/s/*.dat"));
    EXPECT_EQ(run(u"/s/nothing", u"/s/other"), notFound(u"/s/nothing"));
    EXPECT_EQ(run(u"/s/A.TXT", u"/d"), notFound(u"/s/A.TXT"));
    EXPECT_THAT(storage_.changes(), IsEmpty());
    EXPECT_THAT(environment_.takeEvents(), IsEmpty());
}

TEST_P(FolderContentsTest, FolderOfThePatternThatIsMissingIsNotFound) {
    const Failure expected =
        GetParam().hasScheme()
            ? plainFailure("KORVEX:virtualfilesystem:resourceNotFound", {path(u"/nowhere")})
            : failure(commandIdentifier("FileNotFound"), "KORVEX:FILE:FileNotFound", {u"/nowhere/*"});
    EXPECT_EQ(run(u"/nowhere/*", u"/d"), expected);
}

TEST_P(FolderContentsTest, WildcardInTheMiddleOfAPathIsAName) {
    EXPECT_NE(run(u"/*/a.txt", u"/d"), noFailure());
    EXPECT_EQ(treeOf(u"/d"), Tree());
}

TEST_P(FolderContentsTest, ParentMadeForNothingGoesAgainAndFoldersAboveItStay) {
    EXPECT_NE(run(u"/s/*.dat", u"/x/y/new"), noFailure());
    EXPECT_EQ(storage_.existence(path(u"/x/y")), provider::AsNeither);
    EXPECT_EQ(storage_.existence(path(u"/x")), provider::AsFolder);
}

TEST_P(FolderContentsTest, FileWithAWildcardInItsNameIsThatFile) {
    put(u"/s/*.txt", "star");
    EXPECT_EQ(run(u"/s/*.txt", u"/d"), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"*.txt", "star"}}));
}

TEST_P(FolderContentsTest, FileAsTheDestinationHoldsNoMatches) {
    put(u"/f", "F");
    EXPECT_EQ(run(u"/s/*.txt", u"/f"), readOnly(u"/f/a.txt"));
    EXPECT_THAT(storage_.changes(), IsEmpty());
    EXPECT_NE(run(u"/s/*.txt", u"/f", {u"f"}), noFailure());
    EXPECT_EQ(tree()["f"], "F");
    EXPECT_EQ(treeOf(u"/s"), all_);
}

TEST_P(FolderContentsTest, ProtectedTargetAnywhereStopsEverythingBeforeItBegins) {
    put(u"/d/b.txt", "old");
    storage_.protect(path(u"/d/b.txt"));
    EXPECT_EQ(run(u"/s/*.txt", u"/d"), readOnly(u"/d/b.txt"));
    EXPECT_THAT(storage_.changes(), IsEmpty());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"b.txt", "[read-only] old"}}));
    EXPECT_THAT(environment_.takeEvents(), IsEmpty());
}

TEST_P(FolderContentsTest, FirstOfSeveralProtectedTargetsIsNamed) {
    for (const std::u16string name : {u"b.txt", u"c.txt/"}) {
        put(u"/d/" + name, "old");
        storage_.protect(path(u"/d/" + name));
    }
    EXPECT_EQ(run(u"/s/*.txt", u"/d"), readOnly(u"/d/b.txt"));
    storage_.memory->removeFile(storage_.at(path(u"/d/b.txt")));
    EXPECT_EQ(run(u"/s/*.txt", u"/d"), readOnly(u"/d/c.txt"));
}

TEST_P(FolderContentsTest, ProtectedDestinationFolderTakesNoNewItems) {
    storage_.protect(path(u"/d"));
    EXPECT_EQ(run(u"/s/*.txt", u"/d"), readOnly(u"/d/a.txt"));
    EXPECT_THAT(storage_.changes(), IsEmpty());
}

TEST_P(FolderContentsTest, ForceReplacesProtectedTargetsAndGoesOn) {
    put(u"/d/b.txt", "old");
    storage_.protect(path(u"/d/b.txt"));
    EXPECT_EQ(run(u"/s/*.txt", u"/d", {u"f"}), noFailure());
    EXPECT_EQ(treeOf(u"/d"), matches_);
}

TEST_P(FolderContentsTest, ForceLooksAtNoTargetBeforehand) {
    EXPECT_EQ(run(u"/s/*.txt", u"/d", {u"f"}), noFailure());
    for (const Call& call : storage_.provider->callsOf(Operation::isWritable)) {
        EXPECT_FALSE(storage_.at(path(u"/d")).isAncestorOf(call.location)) << call;
    }
}

TEST_P(FolderContentsTest, DoubtAboutATargetStopsNothing) {
    storage_.provider->failCall(Operation::isWritable, 2, {.code = vfs::ioError});
    EXPECT_EQ(run(u"/s/*.txt", u"/d"), noFailure());
    EXPECT_EQ(storage_.provider->faultsRaised(), 1U);
    EXPECT_EQ(treeOf(u"/d"), matches_);
}

TEST_P(FolderContentsTest, FailureInTheMiddleKeepsWhatWasDoneAndTriesNoMore) {
    storage_.provider->failCall(fileOperation(), 2, {.code = vfs::noSpaceLeft});
    EXPECT_EQ(run(u"/s/*.txt", u"/d"), generalFailure("noSpaceLeft", u"/s/b.txt"));
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"a.txt", "A"}}));
    EXPECT_EQ(treeOf(u"/s"), sourceWithout({"a.txt"}));
    EXPECT_EQ(storage_.changes().size(), 2U);
    EXPECT_THAT(environment_.takeEvents(), IsEmpty());
}

/// The user who has seen enough after the first item.
class ImpatientUser : public storage::ProgressObserver {
public:
    ImpatientUser() : earlier_(storage::setProgressObserver(this)) {}
    ~ImpatientUser() override {
        storage::setProgressObserver(earlier_);
        runtime::interpreter::takeInterrupt();
    }
    ImpatientUser(const ImpatientUser&) = delete;
    ImpatientUser& operator=(const ImpatientUser&) = delete;

    void progressed(const storage::Progress&) override { runtime::interpreter::raiseInterrupt(); }

private:
    storage::ProgressObserver* earlier_;
};

TEST_P(FolderContentsTest, InterruptBetweenTwoItemsKeepsWhatWasDoneAndLeavesTheWishPending) {
    const ImpatientUser user;
    EXPECT_EQ(run(u"/s/*.txt", u"/d"), generalFailure("unknownError", u"/s/b.txt"));
    EXPECT_TRUE(runtime::interpreter::takeInterrupt());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"a.txt", "A"}}));
    EXPECT_EQ(treeOf(u"/s"), sourceWithout({"a.txt"}));
}

TEST_P(FolderContentsTest, FolderMadeForTheMatchesStaysWhenTheyFail) {
    storage_.provider->failCall(fileOperation(), 1, {.code = vfs::noSpaceLeft});
    EXPECT_EQ(run(u"/s/*.txt", u"/d/new"), generalFailure("noSpaceLeft", u"/s/a.txt"));
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"new/", ""}}));
}

TEST_P(FolderContentsTest, CreatedParentThatHoldsTheNewFolderIsLeftAndThatIsTold) {
    storage_.provider->failCall(fileOperation(), 1, {.code = vfs::noSpaceLeft});
    EXPECT_EQ(run(u"/s/*.txt", u"/x/y/new"), generalFailure("folderNotEmpty", u"/x/y"));
    EXPECT_EQ(treeOf(u"/x"), (Tree{{"y/", ""}, {"y/new/", ""}}));
}

TEST_P(FolderContentsTest, RefusedNewFolderHasTheIdentifierOfCopyfileAndNamesTheSource) {
    storage_.provider->failCall(Operation::createFolder, 1, {.code = vfs::permissionDenied});
    EXPECT_EQ(run(u"/s/*.txt", u"/x/new"),
              failure("KORVEX:COPYFILE:ReadOnlyDestination", "KORVEX:virtualfilesystem:permissionDenied",
                      {path(u"/s/*.txt")}));
    EXPECT_EQ(storage_.existence(path(u"/x")), provider::AsNeither);
}

TEST_P(FolderContentsTest, ContextOfARefusedNewFolderSpeaksOfTheDestination) {
    storage_.provider->failCall(Operation::createFolder, 1,
                                {.code = vfs::permissionDenied,
                                 .context = u"KORVEX:virtualfilesystem:noSpaceLeft",
                                 .location = storage_.at(path(u"/elsewhere"))});
    EXPECT_EQ(run(u"/s/*.txt", u"/d/new"),
              plainFailure("KORVEX:virtualfilesystem:noSpaceLeft", {path(u"/d/new")}));
}

TEST_P(FolderContentsTest, ContextOfAMissingParentSpeaksOfWhereItFailed) {
    storage_.provider->failCall(Operation::createFolderRecursive, 1,
                                {.code = vfs::ioError,
                                 .context = u"KORVEX:virtualfilesystem:noSpaceLeft",
                                 .location = storage_.at(path(u"/elsewhere"))});
    EXPECT_EQ(run(u"/s/*.txt", u"/x/new"),
              plainFailure("KORVEX:virtualfilesystem:noSpaceLeft", {path(u"/elsewhere")}));
}

TEST_P(FolderContentsTest, FolderIntoItselfTakesItsContentsAndPassesOverItsOwnDestination) {
    EXPECT_EQ(run(u"/s", u"/s/new"), noFailure());
    Tree expected = command().isCopy ? all_ : Tree{};
    expected.insert({{"new/", ""}});
    for (const auto& [name, content] : all_)
        expected.insert({"new/" + name, content});
    EXPECT_EQ(treeOf(u"/s"), expected);
    EXPECT_FALSE(environment_.takeEvents().empty());
}

TEST_P(FolderContentsTest, FolderDeepIntoItselfPassesOverTheEntryThatHoldsTheDestination) {
    EXPECT_EQ(run(u"/s", u"/s/x/new"), noFailure());
    Tree expected = command().isCopy ? all_ : Tree{};
    expected.insert({{"x/", ""}, {"x/new/", ""}});
    for (const auto& [name, content] : all_)
        expected.insert({"x/new/" + name, content});
    EXPECT_EQ(treeOf(u"/s"), expected);
}

TEST_P(FolderContentsTest, MatchThatHoldsTheDestinationIsPassedOver) {
    put(u"/s/c.txt/to/");
    EXPECT_EQ(run(u"/s/*", u"/s/c.txt/to"), noFailure());
    EXPECT_EQ(treeOf(u"/s/c.txt/to"), (Tree{{"a.txt", "A"}, {"b.txt", "B"}, {"other", "O"}}));
    EXPECT_EQ(storage_.existence(path(u"/s/c.txt/inner")), provider::AsFile);
}

TEST_P(FolderContentsTest, FolderOneStandsInGoesByItsContents) {
    if (GetParam().hasScheme()) return;
    runtime::dispatcher::setCurrentFolderPath(u"/s");
    EXPECT_EQ(failureOf(command(), Texts{u".", u"/d/new"}), noFailure());
    EXPECT_EQ(treeOf(u"/d/new"), all_);
    EXPECT_EQ(treeOf(u"/s"), command().isCopy ? all_ : Tree{});
    EXPECT_EQ(storage_.existence(u"/s"), provider::AsFolder);
}

TEST_P(FolderContentsTest, FolderOneStandsInGoesStraightIntoAFolderThatExists) {
    if (GetParam().hasScheme()) return;
    runtime::dispatcher::setCurrentFolderPath(u"/s");
    EXPECT_EQ(failureOf(command(), Texts{u"/s", u"/d"}), noFailure());
    EXPECT_EQ(treeOf(u"/d"), all_);
    EXPECT_EQ(storage_.existence(u"/s"), provider::AsFolder);
}

TEST_P(FolderContentsTest, FolderOneStandsInGoesIntoANewFolderInsideIt) {
    if (GetParam().hasScheme()) return;
    runtime::dispatcher::setCurrentFolderPath(u"/s");
    EXPECT_EQ(failureOf(command(), Texts{u".", u"new"}), noFailure());
    EXPECT_EQ(treeOf(u"/s/new"), all_);
}

TEST_P(FolderContentsTest, FolderAboveTheOneOneStandsInGoesAsAWhole) {
    if (GetParam().hasScheme()) return;
    put(u"/s/in/");
    runtime::dispatcher::setCurrentFolderPath(u"/s/in");
    EXPECT_EQ(failureOf(command(), Texts{u"/s", u"/d/new"}), noFailure());
    EXPECT_EQ(storage_.changes().size(), 1U);
}

TEST_P(FolderContentsTest, EmptyFolderOneStandsInIsTransferredByDoingNothing) {
    if (GetParam().hasScheme()) return;
    EXPECT_EQ(failureOf(command(), Texts{u".", u"/d/new"}), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"new/", ""}}));
    EXPECT_FALSE(environment_.takeEvents().empty());
}

TEST_P(FolderContentsTest, ProtectedTargetStopsTheContentsToo) {
    if (GetParam().hasScheme()) return;
    runtime::dispatcher::setCurrentFolderPath(u"/s");
    put(u"/d/other", "old");
    storage_.protect(u"/d/other");
    EXPECT_EQ(failureOf(command(), Texts{u".", u"/d"}), readOnly(u"/d/other"));
    EXPECT_THAT(storage_.changes(), IsEmpty());
}

}  // namespace
}  // namespace korvex::filemanip::tests
