// Texts on their way in, and locations on their way to the user.
#include "io/filesystem/filemanip/command_frame_path_intake.h"

#include <gtest/gtest.h>

#include "io/filesystem/filemanip/command_frame_status_messages.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/paths/path_style.h"
#include "tests/support/scratch_folder.h"

namespace korvex::filemanip::tests {
namespace {

namespace core = korvex::io::filesystem::core;
namespace dispatcher = korvex::runtime::dispatcher;
namespace vfs = foundation::storage::vfs;
using core::Status;
using korvex::tests::ScratchFolder;
using Velquist::PathManagement::GetIRIFromString;

std::string identifierOf(const Status& status) { return core::detail::GetID(status.exception); }

bool tells(const Status& status, const std::u16string& part) {
    return core::detail::GetUnicodeMessageTxt(status.exception).find(part) != std::u16string::npos;
}

/// The intake of one text by an engine.
struct Intake {
    explicit Intake(std::u16string typed, bool isIRIBefore = false,
                    core::ResolveSymbolicLinks mode = core::KeepLinks)
        : text(std::move(typed)), isIRI(isIRIBefore), kind(takeInPath(text, mode, isIRI, status)) {}

    std::u16string text;
    bool isIRI;
    Status status;
    TakenPath kind;
};

TEST(LocationText, OfARemoteLocationIsDecoded) {
    const vfs::AbsoluteIRI location(u"memory://box/a%20b");
    EXPECT_TRUE(isRemoteLocation(location));
    EXPECT_EQ(locationText(location, true), u"memory://box/a b");
}

TEST(LocationText, OfALocalLocationIsTheNativePath) {
    const ScratchFolder scratch;
    const vfs::AbsoluteIRI location = GetIRIFromString(scratch.text() + u"/a b");
    EXPECT_FALSE(isRemoteLocation(location));
    EXPECT_EQ(locationText(location, false),
              runtime::paths::nativeForm(scratch.text() + u"/a b", true, runtime::paths::nativeStyle));
}

TEST(ReportInvalidIRI, StoresTheDecodedTextUnderItsOwnIdentifier) {
    Status status;
    reportInvalidIRI(u"memory:/a%20b", status);
    EXPECT_EQ(status.code, Status::failure);
    EXPECT_EQ(identifierOf(status), "KORVEX:virtualfilesystem:invalidIRI");
    EXPECT_TRUE(tells(status, u"memory:/a b"));
}

TEST(ReportInvalidLocation, StoresTheTextOfTheLocation) {
    Status status;
    reportInvalidLocation(vfs::AbsoluteIRI(u"memory://box/a%20b"), status);
    EXPECT_EQ(status.code, Status::failure);
    EXPECT_EQ(identifierOf(status), "KORVEX:virtualfilesystem:invalidLocation");
    EXPECT_TRUE(tells(status, u"memory://box/a b"));

    const ScratchFolder scratch;
    const vfs::AbsoluteIRI local = GetIRIFromString(scratch.text());
    reportInvalidLocation(local, status);
    EXPECT_TRUE(tells(status, locationText(local, false)));
    EXPECT_FALSE(tells(status, u"file://"));
}

TEST(PathIntake, ALocationIsTakenAsItIs) {
    for (const char16_t* text :
         {u"memory://box/a%20b", u"HTTPS://host/a", u"file:///a", u"nobody://host/a"}) {
        const Intake intake(text);
        EXPECT_EQ(intake.kind, TakenPath::location);
        EXPECT_EQ(intake.text, text);
        EXPECT_TRUE(intake.isIRI);
        EXPECT_EQ(intake.status.code, Status::success);
    }
}

TEST(PathIntake, ALocationGetsTheSlashThatItTakesToParseWhateverItsScheme) {
    EXPECT_EQ(Intake(u"memory://box").text, u"memory://box/");
    EXPECT_EQ(Intake(u"http://host").text, u"http://host/");
}

TEST(PathIntake, BadSlashesAndDotsAreRefusedBeforeAnythingIsChanged) {
    for (const char16_t* text : {u"memory:/a%20b", u"http:///a%20b", u"memory://box/../a%20b",
                                 u"file:///./a%20b", u"memory://box/%2E%2e/a%20b"}) {
        const Intake intake(text);
        EXPECT_EQ(intake.kind, TakenPath::refused);
        EXPECT_EQ(intake.text, text);
        EXPECT_FALSE(intake.isIRI);
        EXPECT_EQ(identifierOf(intake.status), "KORVEX:virtualfilesystem:invalidIRI");
        EXPECT_TRUE(tells(intake.status, u"a b"));
        EXPECT_EQ(intake.status.code, Status::failure);
    }
}

TEST(PathIntake, ARefusedTextLeavesTheVocabularyAsTheOtherTextHasSetIt) {
    const Intake intake(u"memory:/a", true);
    EXPECT_EQ(intake.kind, TakenPath::refused);
    EXPECT_TRUE(intake.isIRI);
}

TEST(PathIntake, DotsInTheQueryOfAWebLocationAreItsOwnAffair) {
    const Intake intake(u"https://host/a?from=../b#./c");
    EXPECT_EQ(intake.kind, TakenPath::location);
    EXPECT_EQ(intake.text, u"https://host/a?from=../b#./c");
    EXPECT_EQ(Intake(u"https://host/../a?from=b").kind, TakenPath::refused);
}

TEST(PathIntake, ALocationThatStillDoesNotParseRaises) {
    EXPECT_THROW(Intake(u"memory://a b/c"), vfs::InvalidIRIException);
}

TEST(PathIntake, ALocalPathLeavesTheVocabularyAsTheOtherTextHasSetIt) {
    const ScratchFolder scratch;
    EXPECT_FALSE(Intake(scratch.text()).isIRI);
    EXPECT_TRUE(Intake(scratch.text(), true).isIRI);
}

TEST(PathIntake, ALocalPathIsMadeAbsoluteAndItsLinksFollowedByMode) {
    const ScratchFolder scratch;
    scratch.makeFolder("folder");
    std::filesystem::create_directory_symlink("folder", scratch.path() / "link");
    const std::filesystem::path native = scratch.path();

    const Intake kept(scratch.text() + u"/./link//new/");
    EXPECT_EQ(kept.kind, TakenPath::localPath);
    EXPECT_EQ(kept.text, (native / "link" / "new").u16string());
    const Intake followed(scratch.text() + u"/link/new", false, core::FollowLinks);
    EXPECT_EQ(followed.text, (native / "folder" / "new").u16string());
    EXPECT_EQ(followed.status.code, Status::success);
}

TEST(PathIntake, ALocalPathThatCannotBeUsedIsEmptyAndNoFailureYet) {
    const ScratchFolder scratch;
    dispatcher::setCurrentFolderPath(scratch.makeFolder("gone").u16string());
    std::filesystem::remove(scratch.path() / "gone");
    const Intake intake(u"a");
    dispatcher::setCurrentFolderPath(u"/");
    EXPECT_EQ(intake.kind, TakenPath::localPath);
    EXPECT_EQ(intake.text, u"");
    EXPECT_EQ(intake.status.code, Status::success);
}

TEST(StoredMessages, KeepTheirOwnIdentifierOrTakeAnother) {
    Status status;
    storeFailure(status, KORVEX::MKDIR::ExistsAsFile(u"/a"));
    EXPECT_EQ(identifierOf(status), "KORVEX:MKDIR:ExistsAsFile");
    EXPECT_EQ(status.code, Status::failure);
    storeFailure(status, KORVEX::virtualfilesystem::permissionDenied(u"/a"),
                 "KORVEX:COPYFILE:ReadOnlyDestination");
    EXPECT_EQ(identifierOf(status), "KORVEX:COPYFILE:ReadOnlyDestination");
    EXPECT_TRUE(tells(status, u"/a"));
}

TEST(StoredMessages, ANoteLeavesTheCode) {
    Status status;
    storeMessage(status, KORVEX::FILE::PATHMAX());
    EXPECT_EQ(identifierOf(status), "KORVEX:FILE:PATHMAX");
    EXPECT_EQ(status.code, Status::success);
    status.code = Status::failure;
    storeMessage(status, KORVEX::MKDIR::EmptyDirectoryName());
    EXPECT_EQ(status.code, Status::failure);
}

}  // namespace
}  // namespace korvex::filemanip::tests
