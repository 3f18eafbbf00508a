// A whole folder to its destination: merging, going inside, missing folders on the way, and their undoing.
#include "platform/message_identifiers.h"
#include "runtime/dispatcher/current_folder.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using storage::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

/// "/s" with a file and a folder with a file, and the empty folder "/d", at the settings' prefix.
class FolderTransferTest : public TransferTest {
protected:
    FolderTransferTest() {
        put(u"/s/a", "A");
        put(u"/s/in/b", "B");
        put(u"/d/");
    }

    Tree treeOf(const std::u16string& folder) const { return storage_.treeOf(path(folder)); }
    Operation operation() const { return command().isCopy ? Operation::copyFolder : Operation::moveFolder; }

    const Tree content_{{"a", "A"}, {"in/", ""}, {"in/b", "B"}};
};

class FolderCopyTest : public FolderTransferTest {};
class FolderMoveTest : public FolderTransferTest {};

INSTANTIATE_TEST_SUITE_P(CopyMove, FolderTransferTest, testing::ValuesIn(allSettings()), nameOfSetting);
INSTANTIATE_TEST_SUITE_P(CopyMove, FolderCopyTest, testing::ValuesIn(copySettings()), nameOfSetting);
INSTANTIATE_TEST_SUITE_P(CopyMove, FolderMoveTest, testing::ValuesIn(moveSettings()), nameOfSetting);

TEST_P(FolderTransferTest, NewNameBecomesTheFolderInOneCall) {
    EXPECT_EQ(run(u"/s", u"/d/new"), noFailure());
    EXPECT_EQ(treeOf(u"/d/new"), content_);
    EXPECT_EQ(storage_.existence(path(u"/s")), command().isCopy ? provider::AsFolder : provider::AsNeither);
    EXPECT_EQ(storage_.changes().size(), 1U);
}

TEST_P(FolderTransferTest, SeparatorAtTheEndOfAFolderChangesNothing) {
    EXPECT_EQ(run(u"/s/", u"/d/new/"), noFailure());
    EXPECT_EQ(treeOf(u"/d/new"), content_);
}

TEST_P(FolderTransferTest, EnvironmentIsToldOfThePathsThatWereNamed) {
    const std::string prefix = GetParam().hasScheme() ? "memory://box" : "";
    EXPECT_EQ(run(u"/s", u"/d"), noFailure());
    if (command().isCopy) {
        EXPECT_THAT(environment_.takeEvents(),
                    ElementsAre("folderOutOfDate " + prefix + "/d", "pathRefreshRequested"));
    } else {
        EXPECT_THAT(environment_.takeEvents(),
                    ElementsAre("folderOutOfDate " + prefix + "/s", "folderOutOfDate " + prefix + "/d",
                                "pathRefreshRequested"));
    }
}

TEST_P(FolderTransferTest, MissingFoldersAboveTheDestinationAreMade) {
    EXPECT_EQ(run(u"/s", u"/x/y/new"), noFailure());
    EXPECT_EQ(treeOf(u"/x/y/new"), content_);
}

TEST_P(FolderTransferTest, FolderCannotGoOntoAFile) {
    put(u"/f", "F");
    const Failure expected =
        GetParam().hasScheme() ? plainFailure("KORVEX:virtualfilesystem:invalidLocation", {path(u"/f")})
                               : failure(commandIdentifier("OSError"), "KORVEX:FILE:DestNotAFolder", {u"/f"});
    EXPECT_EQ(run(u"/s", u"/f"), expected);
    EXPECT_EQ(run(u"/s", u"/f/", {u"f"}), expected);
    EXPECT_THAT(storage_.changes(), IsEmpty());
}

TEST_P(FolderTransferTest, FolderInsideOfTheSourceIsNoDestination) {
    const Failure expected =
        failure(identifier("SourceIsAncestorOfDestination"), "KORVEX:FILE:SourceIsAncestorOfDestination");
    EXPECT_EQ(run(u"/s", u"/s/in"), expected);
    EXPECT_EQ(run(u"/s", u"/s/in", {u"f"}), expected);
    put(u"/s/in/deep/");
    EXPECT_EQ(run(u"/s", u"/s/in/deep"), expected);
    EXPECT_THAT(storage_.changes(), IsEmpty());
}

TEST_P(FolderTransferTest, NameThatTheSourcesNameBeginsWithIsNoAncestor) {
    put(u"/ss/");
    EXPECT_EQ(run(u"/s", u"/ss"), noFailure());
    EXPECT_EQ(treeOf(command().isCopy ? u"/ss" : u"/ss/s"), content_);
}

TEST_P(FolderTransferTest, ParentThatIsAFileCannotBeMadeAFolder) {
    put(u"/f", "F");
    EXPECT_EQ(run(u"/s", u"/f/x/new"), generalFailure("resourceAlreadyExists", u"/f"));
    EXPECT_EQ(tree(),
              (Tree{{"d/", ""}, {"f", "F"}, {"s/", ""}, {"s/a", "A"}, {"s/in/", ""}, {"s/in/b", "B"}}));
}

TEST_P(FolderTransferTest, ParentMadeForAFailedTransferGoesAgainAndFoldersAboveItStay) {
    storage_.provider->failCall(operation(), 1, {.code = vfs::noSpaceLeft});
    EXPECT_EQ(run(u"/s", u"/x/y/new"), generalFailure("noSpaceLeft", u"/s"));
    EXPECT_EQ(treeOf(u"/x"), Tree());
    EXPECT_EQ(storage_.existence(path(u"/x")), provider::AsFolder);
    EXPECT_EQ(treeOf(u"/s"), content_);
}

TEST_P(FolderTransferTest, ParentThatWasThereStaysWhenTheTransferFails) {
    storage_.provider->failCall(operation(), 1, {.code = vfs::noSpaceLeft});
    EXPECT_EQ(run(u"/s", u"/d/new"), generalFailure("noSpaceLeft", u"/s"));
    EXPECT_EQ(storage_.existence(path(u"/d")), provider::AsFolder);
    EXPECT_THAT(storage_.provider->callsOf(Operation::removeFolder), IsEmpty());
}

TEST_P(FolderTransferTest, ParentThatHoldsSomethingByNowIsLeftAndThatIsTold) {
    storage_.provider->failCall(operation(), 1,
                                {.code = vfs::noSpaceLeft, .moment = storage::Fault::Moment::after});
    EXPECT_EQ(run(u"/s", u"/x/y/new"), generalFailure("folderNotEmpty", u"/x/y"));
    EXPECT_EQ(treeOf(u"/x/y/new"), content_);
}

TEST_P(FolderTransferTest, RefusedFolderIsNamedAsItsPermissions) {
    for (const Texts& options : {Texts{}, Texts{u"f"}}) {
        const std::string key = options.empty() ? "FolderPermissionError" : "FolderPermissionErrorWithFlag";
        storage_.provider->failCall(
            operation(), 1, {.code = vfs::permissionDenied, .location = storage_.at(path(u"/s/in/b"))});
        EXPECT_EQ(run(u"/s", u"/d/new", options),
                  failure(commandIdentifier(key), "KORVEX:FILE:" + key, {path(u"/s")}));
    }
    EXPECT_EQ(treeOf(u"/s"), content_);
}

TEST_P(FolderTransferTest, CurrentFolderThatIsGoneEndsTheCommand) {
    storage_.memory->removeFolder(storage_.at(u"/here"), vfs::RemoveWithContents);
    const Array source = text(path(u"/s"));
    const Array destination = text(path(u"/d/new"));
    for (const int nlhs : {0, 3}) {
        EXPECT_EQ(call(command().entry, nlhs, {source.get(), destination.get()}).errorIdentifier,
                  "KORVEX:services:cwdIsInvalid");
    }
    EXPECT_THAT(storage_.changes(), IsEmpty());
}

/// Knows one folder, "/known", and no root.
class Rootless : public storage::Provider {
public:
    using AbsoluteIRI = storage::AbsoluteIRI;
    storage::ExistenceType existence(const AbsoluteIRI& location) override {
        return location.getName() == u"known" ? provider::AsFolder : provider::AsNeither;
    }
    storage::ExistenceTypeExtended extendedExistence(const AbsoluteIRI&) override {
        return provider::ExtendedNothing;
    }
    storage::CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) override {
        return storage::CanonicalAbsoluteIRI(location);
    }
};

TEST_P(FolderTransferTest, RootThatIsNotThereHasNoFolderToLookIn) {
    auto system = std::make_shared<vfs::StorageSystem>();
    system->add(GetParam().hasScheme() ? u"memory" : u"file", std::make_shared<Rootless>());
    const storage::ScopedStorageSystem scope(system);
    EXPECT_EQ(run(u"/", u"/known"),
              GetParam().hasScheme()
                  ? plainFailure("KORVEX:virtualfilesystem:invalidLocation", {u"memory://box/"})
                  : failure(commandIdentifier("OSError"), "KORVEX:FileManip:OSError"));
}

TEST_P(FolderTransferTest, RootThatIsNotThereCannotBeMade) {
    auto system = std::make_shared<vfs::StorageSystem>();
    system->add(GetParam().hasScheme() ? u"memory" : u"file", std::make_shared<Rootless>());
    const storage::ScopedStorageSystem scope(system);
    EXPECT_EQ(
        run(u"/known", u"/x/.."),
        GetParam().hasScheme()
            ? plainFailure("KORVEX:virtualfilesystem:invalidIRI", {u"memory://box/x/.."})
            : failure(commandIdentifier("SourceAndDestinationSame"), "KORVEX:FILE:SourceAndDestinationSame"));
    EXPECT_EQ(run(u"/in/known", u"/"), generalFailure("invalidLocation", u"/"));
}

TEST_P(FolderCopyTest, ExistingFolderTakesTheContents) {
    put(u"/d/kept", "K");
    put(u"/d/a", "old");
    EXPECT_EQ(run(u"/s", u"/d"), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"a", "A"}, {"in/", ""}, {"in/b", "B"}, {"kept", "K"}}));
    EXPECT_EQ(treeOf(u"/s"), content_);
}

TEST_P(FolderCopyTest, PoliciesAreMergeAndForce) {
    EXPECT_EQ(run(u"/s", u"/d"), noFailure());
    EXPECT_EQ(run(u"/s", u"/d", {u"f"}), noFailure());
    EXPECT_EQ(run(u"/s", u"/new"), noFailure());
    EXPECT_THAT(storage_.memory->policies,
                ElementsAre(provider::MergeFolder, provider::ReplaceAny, provider::MergeFolder));
}

TEST_P(FolderCopyTest, ProtectedFileInTheDestinationStopsTheMergeUnlessForced) {
    put(u"/d/in/b", "old");
    storage_.protect(path(u"/d/in/b"));
    EXPECT_EQ(run(u"/s", u"/d"), failure(commandIdentifier("FolderPermissionError"),
                                         "KORVEX:FILE:FolderPermissionError", {path(u"/s")}));
    EXPECT_EQ(treeOf(u"/d/in"), (Tree{{"b", "[read-only] old"}}));
    EXPECT_EQ(run(u"/s", u"/d", {u"f"}), noFailure());
    EXPECT_EQ(treeOf(u"/d"), content_);
}

TEST_P(FolderMoveTest, ExistingFolderTakesTheFolderInside) {
    put(u"/d/kept", "K");
    EXPECT_EQ(run(u"/s", u"/d"), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"kept", "K"}, {"s/", ""}, {"s/a", "A"}, {"s/in/", ""}, {"s/in/b", "B"}}));
    EXPECT_EQ(storage_.existence(path(u"/s")), provider::AsNeither);
}

TEST_P(FolderMoveTest, PoliciesAreMergeForLocalPlacesOnlyAndForce) {
    EXPECT_EQ(run(u"/s", u"/d"), noFailure());
    EXPECT_EQ(run(u"/d/s", u"/s"), noFailure());
    EXPECT_EQ(run(u"/s", u"/d", {u"f"}), noFailure());
    const auto unforced = GetParam().hasScheme() ? provider::ReplaceWritable : provider::MergeFolder;
    EXPECT_THAT(storage_.memory->policies, ElementsAre(unforced, unforced, provider::ReplaceAny));
}

TEST_P(FolderMoveTest, FolderOfThatNameInsideIsMergedWhereThePlaceIsLocal) {
    put(u"/d/s/in/kept", "K");
    if (GetParam().hasScheme()) {
        EXPECT_EQ(run(u"/s", u"/d"),
                  plainFailure("KORVEX:virtualfilesystem:resourceAlreadyExists", {path(u"/d/s")}));
        EXPECT_EQ(treeOf(u"/s"), content_);
    } else {
        EXPECT_EQ(run(u"/s", u"/d"), noFailure());
        EXPECT_EQ(treeOf(u"/d/s"), (Tree{{"a", "A"}, {"in/", ""}, {"in/b", "B"}, {"in/kept", "K"}}));
        EXPECT_EQ(storage_.existence(u"/s"), provider::AsNeither);
    }
}

TEST_P(FolderMoveTest, FolderCannotBeMovedIntoItsOwnFolderUnderItsName) {
    EXPECT_EQ(run(u"/s/in", u"/s"),
              failure(commandIdentifier("SourceAndDestinationSame"), "KORVEX:FILE:SourceAndDestinationSame"));
    EXPECT_EQ(treeOf(u"/s"), content_);
}

TEST_P(FolderMoveTest, LocalDestinationOfAFolderFromElsewhereMerges) {
    if (!GetParam().hasScheme()) return;
    EXPECT_EQ(failureOf(command(), {path(u"/s"), u"/local"}), noFailure());
    EXPECT_THAT(storage_.memory->policies, ElementsAre(provider::MergeFolder));
    EXPECT_EQ(storage_.treeOf(u"/local"), content_);
}

}  // namespace
}  // namespace korvex::filemanip::tests
