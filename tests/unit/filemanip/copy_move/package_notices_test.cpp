// What is said when a transfer changes a package behind its back.
#include <filesystem>

#include "io/filesystem/filemanip/CopyMoveFiles_package_notice.h"
#include "platform/message_identifiers.h"
#include "platform/packages.h"
#include "runtime/configuration/configuration_folder.h"
#include "runtime/packages/package_registry.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using storage::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char16_t* definitionFile = u"kpackage.json";

/// Two packages, "/fixed" and "/open", which is editable; and what stands outside, "/s/a" and "/s/in". The
/// registry is kept in a folder on disk.
class PackageNoticesTest : public TransferTest {
protected:
    PackageNoticesTest() {
        runtime::configuration::setConfigurationFolder((configuration_.path() / "korvex").u16string());
        put(u"/s/a", "A");
        put(u"/s/in/b", "B");
        for (const std::u16string root : {u"/fixed", u"/open"}) {
            put(root + u'/' + definitionFile, "{}");
            put(root + u"/file", "F");
            put(root + u"/sub/inner", "I");
            put(root + u"/@class/method", "M");
            put(root + u"/resources/picture", "P");
            put(root + u"/sub/resources/picture", "P");
        }
        runtime::packages::registerPackage(path(u"/fixed"), u"Fixed", false);
        runtime::packages::registerPackage(path(u"/open"), u"Open", true);
        storage_.provider->forgetCalls();
    }
    ~PackageNoticesTest() override { runtime::configuration::setConfigurationFolder(u""); }

    /// The warnings of a transfer that succeeds.
    std::vector<std::string> warningsOf(const std::u16string& source, const std::u16string& destination) {
        EXPECT_EQ(run(source, destination), noFailure());
        return environment_.takeWarnings();
    }

    korvex::tests::ScratchFolder configuration_;
};

class CopyNoticesTest : public PackageNoticesTest {};
class MoveNoticesTest : public PackageNoticesTest {};

INSTANTIATE_TEST_SUITE_P(CopyMove, PackageNoticesTest, testing::ValuesIn(allSettings()), nameOfSetting);
INSTANTIATE_TEST_SUITE_P(CopyMove, CopyNoticesTest, testing::ValuesIn(copySettings()), nameOfSetting);
INSTANTIATE_TEST_SUITE_P(CopyMove, MoveNoticesTest, testing::ValuesIn(moveSettings()), nameOfSetting);

TEST_P(PackageNoticesTest, NothingIsSaidOutsideOfPackages) {
    EXPECT_THAT(warningsOf(u"/s/a", u"/new"), IsEmpty());
    EXPECT_THAT(warningsOf(u"/s/in", u"/other"), IsEmpty());
}

TEST_P(PackageNoticesTest, NothingIsSaidWhileThePackageManagerIsOff) {
    runtime::packages::setPackageManagerEnabled(false);
    EXPECT_THAT(warningsOf(u"/s/a", u"/fixed"), IsEmpty());
    EXPECT_THAT(warningsOf(u"/fixed/sub", u"/out"), IsEmpty());
}

TEST_P(PackageNoticesTest, NothingIsSaidOnceAPackageIsForgotten) {
    EXPECT_TRUE(runtime::packages::unregisterPackage(u"Fixed"));
    EXPECT_THAT(warningsOf(u"/s/a", u"/fixed"), IsEmpty());
}

TEST_P(PackageNoticesTest, NoticeFailsNothingAndReachesNoOutput) {
    const Array source = text(path(u"/s/a"));
    const Array destination = text(path(u"/fixed"));
    const Outcome outcome = call(command().entry, 3, {source.get(), destination.get()});
    EXPECT_EQ(logicals(outcome.outputs[0]), std::vector<bool>{true});
    EXPECT_TRUE(kxIsEmpty(outcome.outputs[1].get()));
    EXPECT_TRUE(kxIsEmpty(outcome.outputs[2].get()));
    EXPECT_EQ(environment_.takeWarnings().size(), 1U);
}

TEST_P(PackageNoticesTest, EachMatchOfAWildcardIsToldOf) {
    put(u"/s/c", "C");
    EXPECT_EQ(warningsOf(u"/s/*", u"/fixed").size(), 3U);
}

TEST_P(PackageNoticesTest, EachFileOfALongRunIsToldOf) {
    for (char16_t unit = u'a'; unit <= u'z'; ++unit) {
        put(std::u16string(u"/fixed/many/") + unit, "F");
        put(std::u16string(u"/fixed/many/") + unit + unit, "F");
    }
    EXPECT_EQ(warningsOf(u"/fixed/many/*", u"/s").size(), command().isCopy ? 0U : 52U);
    const std::u16string from = command().isCopy ? u"/fixed/many/*" : u"/s/*";
    put(u"/fixed/new/");
    EXPECT_GE(warningsOf(from, u"/fixed/new").size(), 52U);
}

TEST_P(CopyNoticesTest, FileIntoAPackageNamesTheFolder) {
    EXPECT_THAT(warningsOf(u"/s/a", u"/fixed"),
                ElementsAre(warning(KORVEX::COPYFILE::CopiedFileIntoPackage(path(u"/fixed"), u"Fixed"))));
    EXPECT_THAT(warningsOf(u"/s/a", u"/fixed/sub/new"),
                ElementsAre(warning(KORVEX::COPYFILE::CopiedFileIntoPackage(path(u"/fixed/sub"), u"Fixed"))));
    EXPECT_THAT(
        warningsOf(u"/s/a", u"/fixed/@class"),
        ElementsAre(warning(KORVEX::COPYFILE::CopiedFileIntoPackage(path(u"/fixed/@class"), u"Fixed"))));
}

TEST_P(CopyNoticesTest, FileIntoAnEditablePackageIsNotWorthANotice) {
    EXPECT_THAT(warningsOf(u"/s/a", u"/open"), IsEmpty());
    EXPECT_THAT(warningsOf(u"/s/a", std::u16string(u"/open/") + definitionFile), IsEmpty());
}

TEST_P(CopyNoticesTest, NothingIsSaidOfWhereACopyIsFrom) {
    EXPECT_THAT(warningsOf(u"/fixed/file", u"/new"), IsEmpty());
    EXPECT_THAT(warningsOf(u"/fixed/sub", u"/other"), IsEmpty());
    EXPECT_THAT(warningsOf(u"/fixed", u"/whole"), IsEmpty());
}

TEST_P(CopyNoticesTest, FolderIntoAPackageNamesTheFolderAround) {
    EXPECT_THAT(warningsOf(u"/s/in", u"/fixed/new"),
                ElementsAre(warning(KORVEX::COPYFILE::CopiedFolderIntoPackage(path(u"/fixed"), u"Fixed"))));
    EXPECT_THAT(warningsOf(u"/s/in", u"/fixed/@other"),
                ElementsAre(warning(KORVEX::COPYFILE::CopiedFolderIntoPackage(path(u"/fixed"), u"Fixed"))));
    EXPECT_THAT(
        warningsOf(u"/s/in", u"/fixed/sub/deep"),
        ElementsAre(warning(KORVEX::COPYFILE::CopiedFolderIntoPackage(path(u"/fixed/sub"), u"Fixed"))));
}

TEST_P(CopyNoticesTest, FolderOntoAFolderOfAPackageIsToldOfByTheFolderAround) {
    EXPECT_THAT(warningsOf(u"/s/in", u"/fixed/sub"),
                ElementsAre(warning(KORVEX::COPYFILE::CopiedFolderIntoPackage(path(u"/fixed"), u"Fixed"))));
    // The root itself stands in no package.
    EXPECT_THAT(warningsOf(u"/s/in", u"/fixed"), IsEmpty());
}

TEST_P(CopyNoticesTest, OnlyOrdinaryFoldersIntoAnEditablePackageAreToldOf) {
    EXPECT_THAT(
        warningsOf(u"/s/in", u"/open/new"),
        ElementsAre(warning(KORVEX::COPYFILE::CopiedFolderIntoEditablePackage(path(u"/open"), u"Open"))));
    for (const char16_t* name : {u"/open/@other", u"/open/+names", u"/open/private", u"/open/resources"})
        EXPECT_THAT(warningsOf(u"/s/in", name), IsEmpty());
}

TEST_P(CopyNoticesTest, FailedCopyIsNotToldOf) {
    storage_.provider->failCall(Operation::copyFile, 1, {.code = vfs::noSpaceLeft});
    EXPECT_NE(run(u"/s/a", u"/fixed"), noFailure());
    EXPECT_THAT(environment_.takeWarnings(), IsEmpty());
}

TEST_P(MoveNoticesTest, FileOutOfAPackageNamesTheFile) {
    EXPECT_THAT(
        warningsOf(u"/fixed/sub/inner", u"/new"),
        ElementsAre(warning(KORVEX::MOVEFILE::MovedFileFromPackage(path(u"/fixed/sub/inner"), u"Fixed"))));
}

TEST_P(MoveNoticesTest, FileIntoAPackageNamesTheFolder) {
    EXPECT_THAT(warningsOf(u"/s/a", u"/fixed/sub"),
                ElementsAre(warning(KORVEX::MOVEFILE::MovedFileIntoPackage(path(u"/fixed/sub"), u"Fixed"))));
}

TEST_P(MoveNoticesTest, FileWithinAPackageIsToldOfTwiceTheOldPlaceFirst) {
    EXPECT_THAT(warningsOf(u"/fixed/file", u"/fixed/sub"),
                ElementsAre(warning(KORVEX::MOVEFILE::MovedFileFromPackage(path(u"/fixed/file"), u"Fixed")),
                            warning(KORVEX::MOVEFILE::MovedFileIntoPackage(path(u"/fixed/sub"), u"Fixed"))));
}

TEST_P(MoveNoticesTest, OnlyTheDefinitionFileOutOfAnEditablePackageIsToldOf) {
    EXPECT_THAT(warningsOf(u"/open/file", u"/new"), IsEmpty());
    EXPECT_THAT(warningsOf(u"/new", u"/open"), IsEmpty());
    const std::u16string definition = std::u16string(u"/open/") + definitionFile;
    EXPECT_THAT(warningsOf(definition, u"/definition"),
                ElementsAre(warning(KORVEX::MOVEFILE::MovedFileFromPackage(path(definition), u"Open"))));
    EXPECT_THAT(warningsOf(u"/definition", definition), IsEmpty());
}

TEST_P(MoveNoticesTest, NameLikeTheDefinitionFilesIsNoDefinitionFile) {
    put(u"/open/KPackage.json", "{}");
    EXPECT_THAT(warningsOf(u"/open/KPackage.json", u"/new"), IsEmpty());
}

TEST_P(MoveNoticesTest, FolderOutOfAPackageNamesTheFolderWhateverItsKind) {
    for (const std::u16string name : {u"sub", u"@class", u"resources"}) {
        EXPECT_THAT(warningsOf(u"/fixed/" + name, u"/out"),
                    ElementsAre(warning(
                        KORVEX::MOVEFILE::MovedFolderFromPackage(path(u"/fixed/" + name), u"Fixed"))));
        storage_.memory->removeFolder(storage_.at(path(u"/out")), vfs::RemoveWithContents);
    }
}

TEST_P(MoveNoticesTest, FolderIntoAPackageNamesTheFolderAround) {
    EXPECT_THAT(warningsOf(u"/s/in", u"/fixed"),
                ElementsAre(warning(KORVEX::MOVEFILE::MovedFolderIntoPackage(path(u"/fixed"), u"Fixed"))));
    EXPECT_EQ(storage_.existence(path(u"/fixed/in/b")), provider::AsFile);
}

TEST_P(MoveNoticesTest, RootOfAPackageIsMovedOutOfIt) {
    EXPECT_THAT(warningsOf(u"/fixed", u"/renamed"),
                ElementsAre(warning(KORVEX::MOVEFILE::MovedFolderFromPackage(path(u"/fixed"), u"Fixed"))));
}

TEST_P(MoveNoticesTest, OrdinaryFoldersOfAnEditablePackageAreToldOf) {
    EXPECT_THAT(
        warningsOf(u"/open/sub", u"/out"),
        ElementsAre(warning(KORVEX::MOVEFILE::MovedFolderFromEditablePackage(path(u"/open/sub"), u"Open"))));
    EXPECT_THAT(
        warningsOf(u"/out", u"/open"),
        ElementsAre(warning(KORVEX::MOVEFILE::MovedFolderIntoEditablePackage(path(u"/open"), u"Open"))));
}

TEST_P(MoveNoticesTest, ResourcesRightBelowTheRootOfAnEditablePackageCountAsInAnyOther) {
    EXPECT_THAT(
        warningsOf(u"/open/resources", u"/out"),
        ElementsAre(warning(KORVEX::MOVEFILE::MovedFolderFromPackage(path(u"/open/resources"), u"Open"))));
    EXPECT_THAT(warningsOf(u"/out", u"/open/resources"), IsEmpty());
}

TEST_P(MoveNoticesTest, OtherSpecialFoldersOfAnEditablePackageAreNotToldOf) {
    EXPECT_THAT(warningsOf(u"/open/@class", u"/out"), IsEmpty());
    EXPECT_THAT(warningsOf(u"/open/sub/resources", u"/out2"), IsEmpty());
}

TEST_P(MoveNoticesTest, OldPlaceIsToldOfEvenWhenTheMoveFails) {
    storage_.provider->failCall(Operation::moveFile, 1, {.code = vfs::noSpaceLeft});
    EXPECT_NE(run(u"/fixed/file", u"/fixed/sub"), noFailure());
    EXPECT_THAT(environment_.takeWarnings(),
                ElementsAre(warning(KORVEX::MOVEFILE::MovedFileFromPackage(path(u"/fixed/file"), u"Fixed"))));
}

/// A registry that cannot be read: what stands in the place of its file is a folder.
class UnreadableRegistryTest : public PackageNoticesTest {
protected:
    UnreadableRegistryTest() {
        const std::filesystem::path file = configuration_.path() / "korvex" / "packages.json";
        std::filesystem::remove(file);
        std::filesystem::create_directory(file);
    }
};

INSTANTIATE_TEST_SUITE_P(CopyMove, UnreadableRegistryTest, testing::ValuesIn(allSettings()), nameOfSetting);

TEST_P(UnreadableRegistryTest, FailureAfterTheTransferIsTheCommandsAlthoughItHasHappened) {
    if (!command().isCopy) return;
    EXPECT_NE(run(u"/s/a", u"/fixed"), noFailure());
    EXPECT_EQ(storage_.existence(path(u"/fixed/a")), provider::AsFile);
    EXPECT_THAT(environment_.takeEvents(), IsEmpty());
}

TEST_P(UnreadableRegistryTest, FailureBeforeAMoveStopsIt) {
    if (command().isCopy) return;
    EXPECT_NE(run(u"/s/a", u"/fixed"), noFailure());
    EXPECT_NE(run(u"/s/in", u"/fixed"), noFailure());
    EXPECT_EQ(storage_.existence(path(u"/s/a")), provider::AsFile);
    EXPECT_EQ(storage_.existence(path(u"/s/in/b")), provider::AsFile);
    EXPECT_EQ(storage_.existence(path(u"/fixed/a")), provider::AsNeither);
}

TEST_P(UnreadableRegistryTest, FailureIsToldAsAnyOtherOfTheStorage) {
    const Failure told = run(u"/s/a", u"/fixed");
    if (GetParam().hasScheme()) {
        EXPECT_EQ(told.identifier, "KORVEX:virtualfilesystem:ioError");
    } else {
        EXPECT_EQ(told.identifier, commandIdentifier("OSError"));
    }
}

TEST_P(MoveNoticesTest, FailedQuestionAfterAForcedMoveCostsNoProtection) {
    put(u"/d/");
    storage_.protect(path(u"/fixed/file"));
    storage_.protect(path(u"/fixed/sub"));
    // The registry becomes unreadable with the warning that comes before the move.
    const std::filesystem::path registry = configuration_.path() / "korvex" / "packages.json";
    const std::filesystem::path aside = configuration_.path() / "aside";
    const auto earlier = runtime::interpreter::setWarningReceiver([&](const auto&) {
        std::filesystem::rename(registry, aside);
        std::filesystem::create_directory(registry);
    });
    for (const std::u16string name : {u"file", u"sub"}) {
        EXPECT_NE(run(u"/fixed/" + name, u"/d", {u"f"}), noFailure());
        EXPECT_FALSE(storage_.memory->isWritable(storage_.at(path(u"/d/" + name))));
        std::filesystem::remove(registry);
        std::filesystem::rename(aside, registry);
    }
    runtime::interpreter::setWarningReceiver(earlier);
}

/// The two questions themselves, which other commands ask too.
class NoticeQuestionsTest : public PackageNoticesTest {
protected:
    static vfs::StorageSystemReference storageSystem() {
        return Velquist::KorvexStorageSystem::GetStorageSystemReference();
    }
    boost::optional<FilePackageNotice> noticeOfFile(const std::u16string& at, PackageNoticeMode mode) const {
        return noticeFileInPackage(vfs::File(storage_.at(path(at)), storageSystem()), mode);
    }
    boost::optional<FolderPackageNotice> noticeOfFolder(const std::u16string& at,
                                                        PackageNoticeMode mode) const {
        return noticeFolderInPackage(vfs::Folder(storage_.at(path(at)), storageSystem()), mode);
    }
};

INSTANTIATE_TEST_SUITE_P(CopyMove, NoticeQuestionsTest, testing::ValuesIn(copySettings()), nameOfSetting);

TEST_P(NoticeQuestionsTest, RootFolderHasNoFolderAroundThatCouldBeAsked) {
    EXPECT_FALSE(noticeOfFolder(u"/", PackageNoticeMode::intoPackage));
    EXPECT_FALSE(noticeOfFolder(u"/", PackageNoticeMode::fromPackage));
}

TEST_P(NoticeQuestionsTest, FileIsAskedAboutByItsFolderInBothModes) {
    for (const PackageNoticeMode mode : {PackageNoticeMode::intoPackage, PackageNoticeMode::fromPackage}) {
        EXPECT_TRUE(noticeOfFile(u"/fixed/gone", mode));
        EXPECT_FALSE(noticeOfFile(u"/fixed", mode));
        EXPECT_FALSE(noticeOfFile(u"/fixedfile", mode));
    }
}

TEST_P(NoticeQuestionsTest, ItemTextIsTheFilesOwnAtItsOldPlaceOnly) {
    EXPECT_EQ(noticeOfFile(u"/fixed/file", PackageNoticeMode::fromPackage)->itemText, path(u"/fixed/file"));
    EXPECT_EQ(noticeOfFile(u"/fixed/file", PackageNoticeMode::intoPackage)->itemText, path(u"/fixed"));
}

TEST_P(NoticeQuestionsTest, EditableIsToldOfOrdinaryFoldersOfAnEditablePackage) {
    EXPECT_TRUE(noticeOfFolder(u"/open/sub", PackageNoticeMode::fromPackage)->editable);
    EXPECT_TRUE(noticeOfFolder(u"/open/sub", PackageNoticeMode::intoPackage)->editable);
    EXPECT_FALSE(noticeOfFolder(u"/open/resources", PackageNoticeMode::fromPackage)->editable);
    EXPECT_FALSE(noticeOfFolder(u"/fixed/sub", PackageNoticeMode::fromPackage)->editable);
    EXPECT_FALSE(noticeOfFolder(u"/open/resources", PackageNoticeMode::intoPackage));
}

TEST_P(NoticeQuestionsTest, FailureToResolveTheFolderAroundPassesToTheCaller) {
    storage_.provider->failAt(Operation::canonicalLocation, storage_.at(path(u"/open")),
                              {.code = vfs::ioError});
    EXPECT_THROW(noticeOfFolder(u"/open/resources", PackageNoticeMode::fromPackage), vfs::Exception);
}

TEST_P(NoticeQuestionsTest, ParentThatIsReachedByAnotherSpellingIsTheRootAllTheSame) {
    if (GetParam().hasScheme()) return;
    put(u"/open/sub/");
    const vfs::AbsoluteIRI spelled(storage_.at(u"/open"), u"sub/../resources");
    const auto notice =
        noticeFolderInPackage(vfs::Folder(spelled, storageSystem()), PackageNoticeMode::fromPackage);
    ASSERT_TRUE(notice);
    EXPECT_FALSE(notice->editable);
}

}  // namespace
}  // namespace korvex::filemanip::tests
