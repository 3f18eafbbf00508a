// Write protection: what it stops, what force does about it, what is left afterwards, and the messages about
// permissions.
#include <sstream>

#include "io/filesystem/filemanip/CopyMoveFiles.h"
#include "platform/diagnostic_log.h"
#include "platform/filesystem_core.h"
#include "runtime/log/trace_output.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using storage::Call;
using storage::Operation;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// "/s/a" with content, and "/d/old", which is protected, at the settings' prefix.
class ProtectionTest : public TransferTest {
protected:
    ProtectionTest() {
        put(u"/s/a", "A");
        put(u"/d/old", "old");
        storage_.protect(path(u"/d/old"));
    }

    Tree treeOf(const std::u16string& folder) const { return storage_.treeOf(path(folder)); }
    Operation fileOperation() const { return command().isCopy ? Operation::copyFile : Operation::moveFile; }
    Failure readOnly(const std::u16string& at) const {
        return failure(commandIdentifier("ReadOnly"), "KORVEX:FILE:ReadOnly", {path(at)});
    }
    /// "ReadPermissionError" and its like, with the ending that force gives them.
    Failure permission(const std::string& kind, bool isForced, const std::u16string& shown) const {
        const std::string key = kind + "PermissionError" + (isForced ? "WithFlag" : "");
        return failure(commandIdentifier(key), "KORVEX:FILE:" + key, {shown});
    }
    Call call(Operation operation, const std::u16string& at) const {
        return {operation, storage_.at(path(at))};
    }
};

class ProtectionCopyTest : public ProtectionTest {};
class ProtectionMoveTest : public ProtectionTest {};

INSTANTIATE_TEST_SUITE_P(CopyMove, ProtectionTest, testing::ValuesIn(allSettings()), nameOfSetting);
INSTANTIATE_TEST_SUITE_P(CopyMove, ProtectionCopyTest, testing::ValuesIn(copySettings()), nameOfSetting);
INSTANTIATE_TEST_SUITE_P(CopyMove, ProtectionMoveTest, testing::ValuesIn(moveSettings()), nameOfSetting);

TEST_P(ProtectionTest, ProtectedFileStopsTheCommandBeforeAnythingIsTouched) {
    EXPECT_EQ(run(u"/s/a", u"/d/old"), readOnly(u"/d/old"));
    EXPECT_THAT(storage_.changes(), IsEmpty());
    EXPECT_EQ(tree(), (Tree{{"d/", ""}, {"d/old", "[read-only] old"}, {"s/", ""}, {"s/a", "A"}}));
}

TEST_P(ProtectionTest, ProtectedFileOfTheSameNameInTheFolderStopsItToo) {
    put(u"/d/a", "old");
    storage_.protect(path(u"/d/a"));
    EXPECT_EQ(run(u"/s/a", u"/d"), readOnly(u"/d/a"));
    EXPECT_THAT(storage_.changes(), IsEmpty());
}

TEST_P(ProtectionTest, ProtectedFolderTakesNoNewFile) {
    put(u"/e/");
    storage_.protect(path(u"/e"));
    EXPECT_EQ(run(u"/s/a", u"/e"), readOnly(u"/e/a"));
    EXPECT_THAT(storage_.changes(), IsEmpty());
}

TEST_P(ProtectionTest, ProtectedFolderIsLeftToTheTransferWhereTheFileIsNamed) {
    put(u"/e/");
    storage_.protect(path(u"/e"));
    EXPECT_EQ(run(u"/s/a", u"/e/new"), permission("Write", false, path(u"/e/new")));
    EXPECT_EQ(treeOf(u"/e"), Tree());
    EXPECT_EQ(treeOf(u"/s"), (Tree{{"a", "A"}}));
}

TEST_P(ProtectionTest, ForceReplacesAProtectedFileWithoutAsking) {
    EXPECT_EQ(run(u"/s/a", u"/d/old", {u"f"}), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"old", "A"}}));
    for (const Call& asked : storage_.provider->callsOf(Operation::isWritable)) {
        EXPECT_FALSE(asked == call(Operation::isWritable, u"/d/old"));
    }
}

TEST_P(ProtectionTest, ForceMakesTheTargetWritableRightBeforeTheTransfer) {
    EXPECT_EQ(run(u"/s/a", u"/d/old", {u"f"}), noFailure());
    ASSERT_FALSE(storage_.changes().empty());
    EXPECT_EQ(storage_.changes().front(), call(Operation::setWritable, u"/d/old"));
}

TEST_P(ProtectionTest, ForceWithANewNameFailsToUnprotectItQuietly) {
    EXPECT_EQ(run(u"/s/a", u"/d/new", {u"f"}), noFailure());
    EXPECT_EQ(storage_.changes().front(), call(Operation::setWritable, u"/d/new"));
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"new", "A"}, {"old", "[read-only] old"}}));
}

TEST_P(ProtectionTest, ForceGoesOnWhenNothingCanBeUnprotected) {
    storage_.provider->failAt(Operation::setWritable, storage_.at(path(u"/d/old")),
                              {.code = vfs::permissionDenied});
    EXPECT_EQ(run(u"/s/a", u"/d/old", {u"f"}), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"old", "A"}}));
}

TEST_P(ProtectionTest, ProtectionThatWasClearedIsNotPutBackAfterAFailure) {
    storage_.provider->failCall(fileOperation(), 1, {.code = vfs::noSpaceLeft});
    EXPECT_EQ(run(u"/s/a", u"/d/old", {u"f"}), generalFailure("noSpaceLeft", u"/s/a"));
    EXPECT_EQ(tree(), (Tree{{"d/", ""}, {"d/old", "old"}, {"s/", ""}, {"s/a", "A"}}));
}

TEST_P(ProtectionTest, DoubtAboutTheTargetStopsNothing) {
    storage_.memory->setWritable(storage_.at(path(u"/d/old")), true);
    for (int code = 0; code <= vfs::unknownError; ++code) {
        put(u"/s/a", "A");
        storage_.provider->failCall(Operation::isWritable, 1, {.code = static_cast<vfs::ErrorCode>(code)});
        EXPECT_EQ(run(u"/s/a", u"/d/old"), noFailure());
    }
    EXPECT_EQ(storage_.provider->faultsRaised(), 13U);
}

TEST_P(ProtectionTest, RefusedSourceCannotBeRead) {
    for (const bool isForced : {false, true}) {
        storage_.provider->failCall(fileOperation(), 1, {.code = vfs::permissionDenied});
        EXPECT_EQ(run(u"/s/a", u"/d/new", isForced ? Texts{u"f"} : Texts{}),
                  permission("Read", isForced, path(u"/s/a")));
    }
    EXPECT_EQ(treeOf(u"/s"), (Tree{{"a", "A"}}));
}

TEST_P(ProtectionTest, RefusalAnywhereElseIsTheDestinations) {
    for (const std::u16string at : {u"/d/new", u"/d", u"/s"}) {
        for (const bool isForced : {false, true}) {
            storage_.provider->failCall(fileOperation(), 1,
                                        {.code = vfs::permissionDenied, .location = storage_.at(path(at))});
            EXPECT_EQ(run(u"/s/a", u"/d/new", isForced ? Texts{u"f"} : Texts{}),
                      permission("Write", isForced, path(at)));
        }
    }
}

TEST_P(ProtectionTest, RefusedQuestionAboutTheSourceCannotBeRead) {
    for (const bool isForced : {false, true}) {
        storage_.provider->failCall(Operation::existence, 1, {.code = vfs::permissionDenied});
        EXPECT_EQ(run(u"/s/a", u"/d/new", isForced ? Texts{u"f"} : Texts{}),
                  permission("Read", isForced, path(u"/s/a")));
    }
}

TEST_P(ProtectionTest, RefusedQuestionIsTheSourcesOnlyWhereItsTextIsWhatWasTyped) {
    // The typed text is compared with the one that is shown, so another spelling of the source is none.
    if (GetParam().hasScheme()) {
        storage_.put(u"memory://box/s/a b", "A");
        storage_.provider->failCall(Operation::existence, 1, {.code = vfs::permissionDenied});
        EXPECT_EQ(failureOf(command(), {u"memory://box/s/a%20b", path(u"/d/new")}),
                  permission("Write", false, u"memory://box/s/a b"));
    } else {
        storage_.provider->failCall(Operation::existence, 1, {.code = vfs::permissionDenied});
        EXPECT_EQ(failureOf(command(), {u"file:///s/a", u"/d/new"}), permission("Write", false, u"/s/a"));
    }
}

TEST_P(ProtectionTest, StorageThatOnlyReadsIsReadOnlyWhenAQuestionSaysSo) {
    storage_.provider->failCall(Operation::existence, 2, {.code = vfs::readOnlyProvider});
    EXPECT_EQ(run(u"/s/a", u"/d/new"), readOnly(u"/d/new"));
    storage_.provider->failCall(fileOperation(), 1, {.code = vfs::readOnlyProvider});
    EXPECT_EQ(run(u"/s/a", u"/d/new"), generalFailure("readOnlyProvider", u"/s/a"));
}

TEST_P(ProtectionTest, MessagesAboutPermissionsShowTheFirst1280UnitsOfAPath) {
    const std::u16string longest = path(u"/" + std::u16string(1280 - path(u"/").size(), u'x'));
    const vfs::AbsoluteIRI longer = storage_.at(longest + std::u16string(720, u'y'));
    const auto refuse = [&](vfs::ErrorCode code) {
        storage_.provider->failCall(fileOperation(), 1, {.code = code, .location = longer});
    };
    refuse(vfs::permissionDenied);
    EXPECT_EQ(run(u"/s/a", u"/d/new"), permission("Write", false, longest));
    refuse(vfs::permissionDenied);
    EXPECT_EQ(run(u"/s/a", u"/d/new", {u"f"}), permission("Write", true, longest));

    storage_.provider->failCall(Operation::existence, 2, {.code = vfs::readOnlyProvider, .location = longer});
    EXPECT_EQ(run(u"/s/a", u"/d/new"),
              failure(commandIdentifier("ReadOnly"), "KORVEX:FILE:ReadOnly", {longest}));
    refuse(vfs::ioError);
    if (GetParam().hasScheme()) {
        EXPECT_EQ(run(u"/s/a", u"/d/new"),
                  plainFailure("KORVEX:virtualfilesystem:ioError", {longer.toString()}));
    }
}

TEST_P(ProtectionTest, LongSourceAndFolderAreCutToo) {
    if (!GetParam().hasScheme()) return;
    const std::u16string name(2000, u'x');
    const std::u16string shown = path(u"/" + name).substr(0, 1280);
    storage_.put(path(u"/" + name), "X");
    storage_.provider->failCall(fileOperation(), 1, {.code = vfs::permissionDenied});
    EXPECT_EQ(run(u"/" + name, u"/d/new"), permission("Read", false, shown));

    storage_.put(path(u"/f" + name + u"/"));
    storage_.provider->failCall(command().isCopy ? Operation::copyFolder : Operation::moveFolder, 1,
                                {.code = vfs::permissionDenied});
    EXPECT_EQ(run(u"/f" + name, u"/d/new", {u"f"}),
              permission("Folder", true, path(u"/f" + name).substr(0, 1280)));
}

TEST_P(ProtectionCopyTest, CopyOfAProtectedFileIsAsTheLayerMakesIt) {
    storage_.protect(path(u"/s/a"));
    EXPECT_EQ(run(u"/s/a", u"/d/new", {u"f"}), noFailure());
    EXPECT_EQ(treeOf(u"/s"), (Tree{{"a", "[read-only] A"}}));
    EXPECT_THAT(storage_.changes(), ElementsAre(call(Operation::setWritable, u"/d/new"),
                                                Call{Operation::copyFile, storage_.at(path(u"/s/a")),
                                                     storage_.at(path(u"/d/new"))}));
}

TEST_P(ProtectionCopyTest, CopyOntoAProtectedFileIsAsTheLayerLeavesIt) {
    EXPECT_EQ(run(u"/s/a", u"/d/old", {u"f"}), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"old", "A"}}));
    EXPECT_EQ(storage_.provider->callsOf(Operation::setWritable).size(), 1U);
}

TEST_P(ProtectionMoveTest, ForcedMoveOfAProtectedFileKeepsItProtected) {
    storage_.protect(path(u"/s/a"));
    EXPECT_EQ(run(u"/s/a", u"/d/new", {u"f"}), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"new", "[read-only] A"}, {"old", "[read-only] old"}}));
    const Call move{Operation::moveFile, storage_.at(path(u"/s/a")), storage_.at(path(u"/d/new"))};
    EXPECT_THAT(storage_.changes(),
                ElementsAre(call(Operation::setWritable, u"/d/new"), call(Operation::setWritable, u"/s/a"),
                            move, call(Operation::setWritable, u"/d/new")));
}

TEST_P(ProtectionMoveTest, ForcedMoveOfAWritableFileChangesNothingAfterwards) {
    EXPECT_EQ(run(u"/s/a", u"/d/old", {u"f"}), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"old", "A"}}));
    EXPECT_EQ(storage_.changes().back().operation, Operation::moveFile);
}

TEST_P(ProtectionMoveTest, ForcedMoveOfAProtectedFolderKeepsItProtected) {
    storage_.protect(path(u"/s"));
    EXPECT_EQ(run(u"/s", u"/d/new", {u"f"}), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"new/", "[read-only] "}, {"new/a", "A"}, {"old", "[read-only] old"}}));
}

TEST_P(ProtectionMoveTest, MoveWithoutForceLeavesTheSourcesProtectionToTheLayer) {
    storage_.protect(path(u"/s/a"));
    EXPECT_EQ(run(u"/s/a", u"/d/new"), noFailure());
    EXPECT_THAT(storage_.provider->callsOf(Operation::setWritable), IsEmpty());
    EXPECT_THAT(storage_.provider->callsOf(Operation::isWritable), IsEmpty());
}

TEST_P(ProtectionMoveTest, DoubtAboutTheSourcesProtectionMeansThatItHadNone) {
    storage_.protect(path(u"/s/a"));
    storage_.provider->failCall(Operation::isWritable, 1, {.code = vfs::ioError});
    EXPECT_EQ(run(u"/s/a", u"/d/new", {u"f"}), noFailure());
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"new", "A"}, {"old", "[read-only] old"}}));
    EXPECT_THAT(storage_.changes(), testing::Contains(call(Operation::setWritable, u"/s/a")));
}

TEST_P(ProtectionMoveTest, ProtectionThatCannotBePutBackDoesNotFailTheMove) {
    storage_.protect(path(u"/s/a"));
    storage_.provider->failCall(Operation::setWritable, 3, {.code = vfs::ioError});
    EXPECT_EQ(run(u"/s/a", u"/d/new", {u"f"}), noFailure());
    EXPECT_EQ(storage_.provider->faultsRaised(), 1U);
    EXPECT_EQ(treeOf(u"/d"), (Tree{{"new", "A"}, {"old", "[read-only] old"}}));
}

TEST_P(ProtectionMoveTest, ProtectedSourceThatDidNotMoveStaysUnprotected) {
    storage_.protect(path(u"/s/a"));
    storage_.provider->failCall(Operation::moveFile, 1, {.code = vfs::noSpaceLeft});
    EXPECT_EQ(run(u"/s/a", u"/d/new", {u"f"}), generalFailure("noSpaceLeft", u"/s/a"));
    EXPECT_EQ(treeOf(u"/s"), (Tree{{"a", "A"}}));
}

/// An engine whose protected part a test may call.
class EngineUnderTest : public CopyMoveFiles {
public:
    using CopyMoveFiles::SetParentWritable;
    using CopyMoveFiles::status_;

    explicit EngineUnderTest(bool isForced) : CopyMoveFiles(LinkBehavior::osdefault) { force_ = isForced; }

protected:
    void reportByKey(const char* key) override { SetErrorStatus("COPYFILE", key); }
    std::string GetErrorMsgIdPrefix() override { return "COPYFILE"; }
    void doVfsOperation(const Item&, const Item&, bool) override {}
    bool processFolder(const Folder&, const Folder&, bool) override { return true; }
    void RefreshAffectedDirectories(std::u16string, std::u16string) override {}
    bool isCopy() const override { return true; }
    LinkBehavior getLinkBehavior() const override { return linkBehavior_; }
    void setLinkBehavior(LinkBehavior behavior) override { linkBehavior_ = behavior; }
};

class SetParentWritableTest : public WatchedStorageTest {
protected:
    SetParentWritableTest() { storage_.put(u"memory://box/d/"); }

    std::pair<bool, bool> ask(EngineUnderTest& engine) {
        vfs::Folder parent(storage_.at(u"memory://box/d"),
                           Velquist::KorvexStorageSystem::GetStorageSystemReference());
        return engine.SetParentWritable(parent);
    }
    static std::string identifierOf(const EngineUnderTest& engine) {
        return io::filesystem::core::detail::GetID(engine.status_.exception);
    }
};

TEST_F(SetParentWritableTest, WritableFolderIsLeftAlone) {
    for (const bool isForced : {false, true}) {
        EngineUnderTest engine(isForced);
        EXPECT_EQ(ask(engine), std::pair(true, false));
        EXPECT_EQ(identifierOf(engine), "");
    }
    EXPECT_THAT(storage_.changes(), IsEmpty());
}

TEST_F(SetParentWritableTest, ForceMakesTheFolderWritable) {
    storage_.protect(u"memory://box/d");
    EngineUnderTest engine(true);
    EXPECT_EQ(ask(engine), std::pair(false, false));
    EXPECT_TRUE(storage_.memory->isWritable(storage_.at(u"memory://box/d")));
    EXPECT_EQ(identifierOf(engine), "");
}

TEST_F(SetParentWritableTest, WithoutForceTheFolderIsReported) {
    storage_.protect(u"memory://box/d");
    EngineUnderTest engine(false);
    EXPECT_EQ(ask(engine), std::pair(false, true));
    EXPECT_EQ(identifierOf(engine), "KORVEX:COPYFILE:ReadOnly");
    EXPECT_FALSE(storage_.memory->isWritable(storage_.at(u"memory://box/d")));
}

TEST_F(SetParentWritableTest, FailuresOfTheStorageAreTracedAndStopNothing) {
    namespace severity = foundation::log::severity;
    std::ostringstream lines;
    const runtime::log::TraceOutput output(lines, severity::exceptionInFlight);
    EngineUnderTest engine(true);
    storage_.provider->failCall(Operation::isWritable, 1, {.code = vfs::ioError});
    EXPECT_FALSE(ask(engine).second);
    storage_.protect(u"memory://box/d");
    storage_.provider->failCall(Operation::setWritable, 1, {.code = vfs::ioError});
    EXPECT_EQ(ask(engine), std::pair(false, false));
    EXPECT_EQ(identifierOf(engine), "");
    EXPECT_EQ(storage_.provider->faultsRaised(), 2U);
    EXPECT_THAT(lines.str(), HasSubstr("Exception caught: "));
}

}  // namespace
}  // namespace korvex::filemanip::tests
