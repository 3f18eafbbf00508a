// The search path and a folder that moves: what leaves it, what is said, and what is put back.
#include <filesystem>

#include "platform/message_identifiers.h"
#include "runtime/configuration/configuration_folder.h"
#include "runtime/dispatcher/search_path.h"
#include "runtime/packages/package_registry.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using storage::Operation;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// "/s" with "/s/one" and "/s/two" in it, their neighbour "/sibling", and "/other"; all of them are folders
/// of the search path, which is kept in a folder on disk. Not on it is "/d".
class MovedSearchPathTest : public WatchedStorageTest {
protected:
    MovedSearchPathTest() {
        runtime::configuration::setConfigurationFolder((configuration_.path() / "korvex").u16string());
        for (const std::u16string name : {u"/s/one/", u"/s/two/", u"/sibling/", u"/other/", u"/d/"})
            storage_.put(name);
        storage_.put(u"/s/a", "A");
        EXPECT_TRUE(runtime::dispatcher::addToSearchPath(all_).empty());
        environment_.takeEvents();
        storage_.provider->forgetCalls();
    }
    ~MovedSearchPathTest() override { runtime::configuration::setConfigurationFolder(u""); }

    static Failure move(const std::u16string& source, const std::u16string& destination) {
        return failureOf(moveCommand, Texts{source, destination});
    }
    static Texts searchPath() {
        Texts texts;
        for (const auto& folder : runtime::dispatcher::searchPath())
            texts.push_back(Velquist::PathManagement::GetStringFromIRI(folder));
        return texts;
    }
    static std::string removed(const std::u16string& folder) {
        return warning(KORVEX::MOVEFILE::RemovedFromPath(folder));
    }

    const Texts all_{u"/other", u"/s/two", u"/s", u"/sibling", u"/s/one"};
    korvex::tests::ScratchFolder configuration_;
};

TEST_F(MovedSearchPathTest, MovedFolderAndAllWhoseTextItBeginsLeaveThePath) {
    EXPECT_EQ(move(u"/s", u"/d"), noFailure());
    EXPECT_EQ(searchPath(), Texts{u"/other"});
    // On purpose texts are compared with no regard for separators: the neighbour goes too.
    EXPECT_THAT(environment_.takeWarnings(),
                ElementsAre(removed(u"/s/two"), removed(u"/s"), removed(u"/sibling"), removed(u"/s/one")));
}

TEST_F(MovedSearchPathTest, EachEntryBelowIsToldOfOnce) {
    EXPECT_TRUE(runtime::dispatcher::removeFromSearchPath({u"/s", u"/sibling"}).empty());
    EXPECT_EQ(move(u"/s", u"/d/new"), noFailure());
    EXPECT_THAT(environment_.takeWarnings(), ElementsAre(removed(u"/s/two"), removed(u"/s/one")));
}

TEST_F(MovedSearchPathTest, PathThatCannotBeWrittenBackIsWarnedOf) {
    runtime::packages::registerPackage(u"/s", u"Fixed", false);
    storage_.provider->failCall(Operation::moveFolder, 1, {.code = vfs::ioError});
    // The folder is off the path, and about to move, when the first warning comes.
    std::vector<std::string> identifiers;
    const auto earlier =
        runtime::interpreter::setWarningReceiver([&](const runtime::interpreter::Warning& shown) {
            identifiers.push_back(shown.identifier);
            std::filesystem::permissions(configuration_.path() / "korvex" / "path.json",
                                         std::filesystem::perms::owner_read);
        });
    EXPECT_NE(move(u"/s", u"/d"), noFailure());
    runtime::interpreter::setWarningReceiver(earlier);
    EXPECT_EQ(searchPath(), all_);
    EXPECT_THAT(identifiers,
                ElementsAre("KORVEX:MOVEFILE:MovedFolderFromPackage", "KORVEX:host:searchPathNotWritten"));
}

TEST_F(MovedSearchPathTest, FolderOffThePathLeavesItAlone) {
    storage_.put(u"/plain/x");
    EXPECT_EQ(move(u"/plain", u"/d"), noFailure());
    EXPECT_EQ(searchPath(), all_);
    EXPECT_THAT(environment_.takeWarnings(), IsEmpty());
    EXPECT_THAT(environment_.takeEvents(),
                ElementsAre("folderOutOfDate /plain", "folderOutOfDate /d", "pathRefreshRequested"));
}

TEST_F(MovedSearchPathTest, EventsTellTheEntriesBeforeTheMoveIsTold) {
    EXPECT_EQ(move(u"/s/one", u"/d"), noFailure());
    EXPECT_THAT(environment_.takeEvents(),
                ElementsAre("upstreamEntriesNotified /s/one", "pathEntriesRemoved /s/one",
                            "folderOutOfDate /s/one", "folderOutOfDate /d", "pathRefreshRequested"));
}

TEST_F(MovedSearchPathTest, EntriesAreOffThePathBeforeTheFolderMoves) {
    storage_.provider->failCall(Operation::moveFolder, 1, {.code = vfs::noSpaceLeft});
    move(u"/s/one", u"/d");
    EXPECT_THAT(environment_.takeEvents(), ElementsAre("upstreamEntriesNotified /s/one",
                                                       "pathEntriesRemoved /s/one", "pathEntriesRestored"));
}

TEST_F(MovedSearchPathTest, FailedMovePutsTheWholePathBack) {
    for (int code = vfs::folderNotEmpty; code <= vfs::unknownError; ++code) {
        storage_.provider->failCall(Operation::moveFolder, 1, {.code = static_cast<vfs::ErrorCode>(code)});
        EXPECT_NE(move(u"/s", u"/d"), noFailure());
        EXPECT_EQ(searchPath(), all_);
        EXPECT_THAT(environment_.takeWarnings(), IsEmpty());
    }
    EXPECT_EQ(storage_.existence(u"/s/a"), provider::AsFile);
}

TEST_F(MovedSearchPathTest, FailedMoveOfAFolderOffThePathPutsNothingBack) {
    storage_.put(u"/plain/x");
    storage_.provider->failCall(Operation::moveFolder, 1, {.code = vfs::noSpaceLeft});
    EXPECT_NE(move(u"/plain", u"/d"), noFailure());
    EXPECT_THAT(environment_.takeEvents(), IsEmpty());
}

TEST_F(MovedSearchPathTest, PathThatWasPutBackIsKeptForTheNextRun) {
    storage_.provider->failCall(Operation::moveFolder, 1, {.code = vfs::noSpaceLeft});
    EXPECT_NE(move(u"/s", u"/d"), noFailure());
    const std::u16string folder = runtime::configuration::configurationFolder();
    runtime::configuration::setConfigurationFolder(u"");
    runtime::configuration::setConfigurationFolder(folder);
    EXPECT_EQ(searchPath(), all_);
}

TEST_F(MovedSearchPathTest, FailureBelowAMissingFolderPutsThePathBackToo) {
    storage_.provider->failCall(Operation::moveFolder, 1, {.code = vfs::noSpaceLeft});
    EXPECT_NE(move(u"/s", u"/x/new"), noFailure());
    EXPECT_EQ(searchPath(), all_);
    EXPECT_EQ(storage_.existence(u"/x"), provider::AsNeither);
}

TEST_F(MovedSearchPathTest, MoveThatWouldGoIntoItselfIsPassedOverWithThePathPutBack) {
    storage_.put(u"/s/one/to/");
    EXPECT_EQ(move(u"/s/o*", u"/s/one/to"), noFailure());
    EXPECT_EQ(searchPath(), all_);
    EXPECT_THAT(environment_.takeWarnings(), IsEmpty());
}

TEST_F(MovedSearchPathTest, NoticeThatFailsAfterTheMovePutsThePathBack) {
    runtime::packages::registerPackage(u"/s", u"Pack", false);
    // The notice of the old place is the moment at which the registry breaks, before that of the new one.
    const std::filesystem::path registry = configuration_.path() / "korvex" / "packages.json";
    const auto earlier = runtime::interpreter::setWarningReceiver([&](const runtime::interpreter::Warning&) {
        std::filesystem::remove(registry);
        std::filesystem::create_directory(registry);
    });
    const Failure told = move(u"/s/one", u"/s/new");
    runtime::interpreter::setWarningReceiver(earlier);
    EXPECT_EQ(told.identifier, "KORVEX:MOVEFILE:OSError");
    EXPECT_EQ(searchPath(), all_);
    EXPECT_EQ(storage_.existence(u"/s/new"), provider::AsFolder);
    EXPECT_EQ(storage_.existence(u"/s/one"), provider::AsNeither);
}

TEST_F(MovedSearchPathTest, MatchesThatAreFoldersLeaveThePath) {
    EXPECT_EQ(move(u"/s/*", u"/d"), noFailure());
    EXPECT_EQ(searchPath(), (Texts{u"/other", u"/s", u"/sibling"}));
    EXPECT_THAT(environment_.takeWarnings(), ElementsAre(removed(u"/s/one"), removed(u"/s/two")));
}

TEST_F(MovedSearchPathTest, MatchesThatMovedBeforeAFailureStayOffThePath) {
    storage_.provider->failCall(Operation::moveFolder, 2, {.code = vfs::noSpaceLeft});
    EXPECT_NE(move(u"/s/*", u"/d"), noFailure());
    EXPECT_EQ(searchPath(), (Texts{u"/other", u"/s/two", u"/s", u"/sibling"}));
    EXPECT_THAT(environment_.takeWarnings(), ElementsAre(removed(u"/s/one")));
}

TEST_F(MovedSearchPathTest, LocationOfALocalFolderIsLocal) {
    EXPECT_EQ(move(u"file:///s/one", u"/d"), noFailure());
    EXPECT_THAT(searchPath(), Not(Contains(std::u16string(u"/s/one"))));
}

TEST_F(MovedSearchPathTest, FolderOfAnotherStorageLeavesThePathAlone) {
    storage_.put(u"memory://box/lib/");
    EXPECT_TRUE(runtime::dispatcher::addToSearchPath({u"memory://box/lib"}).empty());
    const Texts before = searchPath();
    EXPECT_EQ(move(u"memory://box/lib", u"memory://box/moved"), noFailure());
    EXPECT_EQ(searchPath(), before);
    EXPECT_THAT(environment_.takeWarnings(), IsEmpty());
}

TEST_F(MovedSearchPathTest, LocalFolderLeavesThePathWhereverItGoes) {
    EXPECT_EQ(move(u"/s/one", u"memory://box/new"), noFailure());
    EXPECT_THAT(searchPath(), Not(Contains(std::u16string(u"/s/one"))));
    EXPECT_THAT(environment_.takeWarnings(), ElementsAre(removed(u"/s/one")));
}

TEST_F(MovedSearchPathTest, MovedFileLeavesThePathAlone) {
    EXPECT_EQ(move(u"/s/a", u"/d"), noFailure());
    EXPECT_EQ(searchPath(), all_);
}

TEST_F(MovedSearchPathTest, CopyLeavesThePathAlone) {
    EXPECT_EQ(failureOf(copyCommand, Texts{u"/s", u"/d"}), noFailure());
    EXPECT_EQ(searchPath(), all_);
    EXPECT_THAT(environment_.takeWarnings(), IsEmpty());
}

TEST_F(MovedSearchPathTest, NoticeOfThePackageComesBeforeWhatIsSaidOfThePath) {
    runtime::packages::registerPackage(u"/s", u"Pack", false);
    EXPECT_EQ(move(u"/s/one", u"/s/new"), noFailure());
    EXPECT_THAT(
        environment_.takeWarnings(),
        ElementsAre(warning(KORVEX::MOVEFILE::MovedFolderFromPackage(u"/s/one", u"Pack")),
                    warning(KORVEX::MOVEFILE::MovedFolderIntoPackage(u"/s", u"Pack")), removed(u"/s/one")));
}

}  // namespace
}  // namespace korvex::filemanip::tests
