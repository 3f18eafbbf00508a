// One file to its destination: where it goes, what stops it, and what the environment is told.
#include <boost/variant/get.hpp>
#include <functional>
#include <new>
#include <stdexcept>

#include "platform/message_identifiers.h"
#include "runtime/dispatcher/current_folder.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using storage::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

/// "/s/a" with content and the empty folder "/d", at the settings' prefix.
class FileTransferTest : public TransferTest {
protected:
    FileTransferTest() {
        put(u"/s/a", "A");
        put(u"/d/");
    }

    /// What is left of the source.
    Tree sourceTree() const { return command().isCopy ? Tree{{"a", "A"}} : Tree{}; }
    Tree treeOf(const std::u16string& folder) const { return storage_.treeOf(path(folder)); }
    std::string shown(const std::string& path) const {
        return (GetParam().hasScheme() ? "memory://box" : "") + path;
    }
};

INSTANTIATE_TEST_SUITE_P(CopyMove, FileTransferTest, testing::ValuesIn(allSettings()), nameOfSetting);

TEST_P(FileTransferTest, NewNameBecomesTheFile) {
    EXPECT_EQ(run(u"/s/a", u"/d/new"), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"new", "A"}}));
    EXPECT_EQ(treeOf(u"/s"), sourceTree());
}

TEST_P(FileTransferTest, FolderTakesTheFileInUnderItsName) {
    EXPECT_EQ(run(u"/s/a", u"/d"), noFailure());
    put(u"/s/a", "A");
    put(u"/e/");
    EXPECT_EQ(run(u"/s/a", u"/e/"), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"a", "A"}}));
    EXPECT_EQ(treeOf(u"/e"), (Tree{{"a", "A"}}));
}

TEST_P(FileTransferTest, WritableFileIsReplacedWithoutForce) {
    put(u"/d/old", "old");
    EXPECT_EQ(run(u"/s/a", u"/d/old"), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"old", "A"}}));
    EXPECT_EQ(treeOf(u"/s"), sourceTree());
}

TEST_P(FileTransferTest, WritableFileOfTheSameNameInTheFolderIsReplaced) {
    put(u"/d/a", "old");
    EXPECT_EQ(run(u"/s/a", u"/d"), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"a", "A"}}));
}

TEST_P(FileTransferTest, PolicyIsThatOfForce) {
    EXPECT_EQ(run(u"/s/a", u"/d/1"), noFailure());
    put(u"/s/a", "A");
    EXPECT_EQ(run(u"/s/a", u"/d/2", {u"f"}), noFailure());
    EXPECT_THAT(storage_.memory->policies, ElementsAre(provider::ReplaceWritable, provider::ReplaceAny));
}

TEST_P(FileTransferTest, EnvironmentIsToldOfThePathsThatWereNamed) {
    EXPECT_EQ(run(u"/s/a", u"/d"), noFailure());
    if (command().isCopy) {
        EXPECT_THAT(environment_.takeEvents(),
                    ElementsAre("folderOutOfDate " + shown("/d"), "pathRefreshRequested"));
    } else {
        EXPECT_THAT(environment_.takeEvents(),
                    ElementsAre("folderOutOfDate " + shown("/s/a"), "folderOutOfDate " + shown("/d"),
                                "pathRefreshRequested"));
    }
    EXPECT_THAT(environment_.takeWarnings(), IsEmpty());
}

TEST_P(FileTransferTest, EnvironmentIsToldNothingOfAFailure) {
    EXPECT_NE(run(u"/s/a", u"/nowhere/new"), noFailure());
    EXPECT_THAT(environment_.takeEvents(), IsEmpty());
}

TEST_P(FileTransferTest, SeparatorBehindAFileAsksForAFolderThatIsNone) {
    put(u"/f", "F");
    const Failure expected =
        GetParam().hasScheme() ? plainFailure("KORVEX:virtualfilesystem:invalidLocation", {path(u"/f")})
                               : failure(commandIdentifier("OSError"), "KORVEX:FILE:DestNotAFolder", {u"/f"});
    EXPECT_EQ(run(u"/s/a", u"/f/"), expected);
    EXPECT_EQ(run(u"/s/a", u"/f/", {u"f"}), expected);
    EXPECT_THAT(storage_.changes(), IsEmpty());
    EXPECT_EQ(tree()["f"], "F");
}

TEST_P(FileTransferTest, SeparatorBehindNothingMakesNoFolder) {
    const auto expected = [&](const std::u16string& at) {
        return GetParam().hasScheme()
                   ? plainFailure("KORVEX:virtualfilesystem:invalidLocation", {path(at)})
                   : failure(commandIdentifier("OSError"), "KORVEX:FILE:NeitherFileNorFolder");
    };
    EXPECT_EQ(run(u"/s/a", u"/new/"), expected(u"/new"));
    EXPECT_EQ(run(u"/s/a", u"/nowhere/new/", {u"f"}), expected(u"/nowhere/new"));
    EXPECT_THAT(storage_.changes(), IsEmpty());
}

TEST_P(FileTransferTest, MissingFolderOfTheDestinationIsFoundByTheTransfer) {
    EXPECT_EQ(run(u"/s/a", u"/nowhere/deep/new"),
              failure(identifier("ResourceNotFound"), "KORVEX:virtualfilesystem:resourceNotFound",
                      {path(u"/nowhere/deep/new")}));
    EXPECT_EQ(tree(), (Tree{{"d/", ""}, {"s/", ""}, {"s/a", "A"}}));
}

TEST_P(FileTransferTest, FolderInTheTargetsPlaceIsNotReplaced) {
    put(u"/d/a/inner", "I");
    for (const Texts& options : {Texts{}, Texts{u"f"}}) {
        const Failure expected =
            GetParam().hasScheme()
                ? plainFailure("KORVEX:virtualfilesystem:resourceAlreadyExists", {path(u"/d/a")})
                : failure(commandIdentifier("ResourceExists"),
                          "KORVEX:virtualfilesystem:resourceAlreadyExists", {u"/d/a"});
        EXPECT_EQ(run(u"/s/a", u"/d", options), expected);
    }
    EXPECT_EQ(tree(), (Tree{{"d/", ""}, {"d/a/", ""}, {"d/a/inner", "I"}, {"s/", ""}, {"s/a", "A"}}));
}

TEST_P(FileTransferTest, FileOnTheWayIsNoFolder) {
    put(u"/f", "F");
    EXPECT_NE(run(u"/s/a", u"/f/new"), noFailure());
    EXPECT_EQ(tree(), (Tree{{"d/", ""}, {"f", "F"}, {"s/", ""}, {"s/a", "A"}}));
}

TEST_P(FileTransferTest, FileInTheTargetsPlaceThatCannotBeReplacedIsNotWritable) {
    put(u"/d/old", "old");
    const vfs::AbsoluteIRI target = storage_.at(path(u"/d/old"));
    storage_.provider->failAt(command().isCopy ? Operation::copyFile : Operation::moveFile, target,
                              {.code = vfs::resourceAlreadyExists});
    EXPECT_EQ(run(u"/s/a", u"/d/old"), failure(commandIdentifier("WritePermissionError"),
                                               "KORVEX:FILE:WritePermissionError", {path(u"/d/old")}));
    EXPECT_EQ(run(u"/s/a", u"/d/old", {u"f"}),
              failure(commandIdentifier("WritePermissionErrorWithFlag"),
                      "KORVEX:FILE:WritePermissionErrorWithFlag", {path(u"/d/old")}));
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"old", "old"}}));
}

TEST_P(FileTransferTest, FileThatIsGoneWhenItIsRefusedIsTheSystemsFailure) {
    const vfs::AbsoluteIRI target = storage_.at(path(u"/d/new"));
    storage_.provider->failAt(command().isCopy ? Operation::copyFile : Operation::moveFile, target,
                              {.code = vfs::permissionDenied, .moment = storage::Fault::Moment::after});
    if (command().isCopy) {
        EXPECT_EQ(run(u"/s/a", u"/d/new").entry, "KORVEX:FILE:WritePermissionError");
    } else {
        EXPECT_EQ(run(u"/s/a", u"/d/new"), failure(commandIdentifier("OSError"), "KORVEX:FileManip:OSError"));
    }
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"new", "A"}}));
}

TEST_P(FileTransferTest, FailureWhileAFailureIsExplainedIsTheOneThatIsTold) {
    const vfs::AbsoluteIRI source = storage_.at(path(u"/s/a"));
    storage_.provider->failCall(command().isCopy ? Operation::copyFile : Operation::moveFile, 1,
                                {.code = vfs::permissionDenied});
    // The first question is where the source stands at the start; then the destination and its folder.
    storage_.provider->failCall(Operation::existence, 4, {.code = vfs::ioError});
    EXPECT_EQ(run(u"/s/a", u"/d/new"), generalFailure("ioError", u"/s/a"));
    EXPECT_EQ(storage_.provider->faultsRaised(), 2U);
    EXPECT_EQ(storage_.existence(path(u"/s/a")), provider::AsFile);
}

TEST_P(FileTransferTest, ContextOfAFailureThatNamesAMessageChoosesIt) {
    const vfs::AbsoluteIRI target = storage_.at(path(u"/d/new"));
    storage_.provider->failCall(command().isCopy ? Operation::copyFile : Operation::moveFile, 1,
                                {.code = vfs::permissionDenied,
                                 .context = u"KORVEX:virtualfilesystem:noSpaceLeft",
                                 .location = target});
    EXPECT_EQ(run(u"/s/a", u"/d/new"),
              plainFailure("KORVEX:virtualfilesystem:noSpaceLeft", {path(u"/d/new")}));

    storage_.provider->failCall(
        Operation::existence, 1,
        {.code = vfs::permissionDenied, .context = u"KORVEX:virtualfilesystem:resourceInUse"});
    EXPECT_EQ(run(u"/s/a", u"/d/new"),
              plainFailure("KORVEX:virtualfilesystem:resourceInUse", {path(u"/s/a")}));
    EXPECT_EQ(treeOf(u"/d"), Tree());
}

TEST_P(FileTransferTest, OddNamesArriveAsTheyAre) {
    for (const std::u16string& name :
         {std::u16string(u"line\nfeed"), std::u16string(u" "), std::u16string(u"a#b?c"),
          std::u16string(u"%41"), std::u16string{u'a', 0xDCFF, u'b'}, std::u16string(u"\u00e4\U0001F600"),
          std::u16string(u"'\"\\")}) {
        const vfs::AbsoluteIRI source(storage_.at(path(u"/s")), name);
        storage_.memory->putFile(source, "odd");
        const std::u16string typed =
            GetParam().hasScheme() ? source.toString() : std::u16string(vfs::fromAbsoluteIRI(source));
        EXPECT_EQ(failureOf(command(), {typed, path(u"/d")}), noFailure());
        const vfs::AbsoluteIRI target(storage_.at(path(u"/d")), name);
        EXPECT_EQ(storage_.memory->existence(target), provider::AsFile);
        EXPECT_EQ(storage_.memory->existence(source) == provider::AsFile, command().isCopy);
    }
}

TEST_P(FileTransferTest, LocationsInMessagesAreDecodedWhereTheyAreShownAsDisplayTexts) {
    if (!GetParam().hasScheme()) return;
    const std::u16string encoded = path(u"/nowhere/a%20b");
    // The transfer's own message has the location's text, the others what a person would type.
    EXPECT_EQ(
        failureOf(command(), {path(u"/s/a"), encoded}),
        failure(identifier("ResourceNotFound"), "KORVEX:virtualfilesystem:resourceNotFound", {encoded}));
    EXPECT_EQ(failureOf(command(), {path(u"/s/a"), path(u"/nowhere/a b/")}),
              plainFailure("KORVEX:virtualfilesystem:invalidLocation", {path(u"/nowhere/a b")}));
}

/// What is no failure of the storage, raised by a transfer.
class BrokenMemory : public storage::MemoryProvider {
public:
    using AbsoluteIRI = storage::AbsoluteIRI;

    void copyFile(const AbsoluteIRI&, const AbsoluteIRI&, storage::ReplacementPolicy) override { fail(); }
    void moveFile(const AbsoluteIRI&, const AbsoluteIRI&, storage::ReplacementPolicy) override { fail(); }

    std::function<void()> fail;
};

TEST_P(FileTransferTest, WhatIsNoStorageFailureIsTheSystemsFailureOnceTheTransferHasBegun) {
    const auto broken = std::make_shared<BrokenMemory>();
    auto system = std::make_shared<vfs::StorageSystem>();
    system->add(GetParam().hasScheme() ? u"memory" : u"file", broken);
    const storage::ScopedStorageSystem scope(system);
    broken->putFile(storage_.at(path(u"/s/a")), "A");
    broken->putFolder(storage_.at(path(u"/d")));
    const std::vector<std::function<void()>> failures{
        [] { throw boost::bad_get(); },
        [] { throw std::runtime_error("broken"); },
        [] { throw 1; },
        [] { throw std::bad_alloc(); },
        [] { throw vfs::InvalidIRIException(u"broken"); },
        [] { throw vfs::UnsupportedIRISchemeException(u"broken"); }};
    for (const auto& fail : failures) {
        broken->fail = fail;
        EXPECT_EQ(run(u"/s/a", u"/d/new"), failure(commandIdentifier("OSError"), "KORVEX:FileManip:OSError"));
    }
}

TEST_P(FileTransferTest, SystemsOwnWordsStandInTheSystemsFailure) {
    if (GetParam().hasScheme()) return;
    storage_.provider->failCall(command().isCopy ? Operation::copyFile : Operation::moveFile, 1,
                                {.code = vfs::ioError, .systemText = "disk on fire"});
    EXPECT_EQ(run(u"/s/a", u"/d/new"),
              failure(commandIdentifier("OSError"), "KORVEX:FileManip:OSErrorWithReason", {u"disk on fire"}));
}

TEST_P(FileTransferTest, WordsOfTheCommandStayTheCommandsWhereALocationIsCompared) {
    EXPECT_EQ(run(u"/s/a", u"/s"),
              failure(commandIdentifier("SourceAndDestinationSame"), "KORVEX:FILE:SourceAndDestinationSame"));
}

}  // namespace
}  // namespace korvex::filemanip::tests
