// What an engine records, and what it tells the environment.
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <tuple>
#include <type_traits>

#include "platform/message_catalog.h"
#include "platform/message_identifiers.h"
#include "runtime/dispatcher/environment_events.h"
#include "runtime/messages/locale.h"
#include "tests/unit/filesystem_core/engine_under_test.h"

namespace korvex::io::filesystem::core::tests {
namespace {

namespace dispatcher = korvex::runtime::dispatcher;
namespace vfs = foundation::storage::vfs;

const vfs::AbsoluteIRI somewhere(u"file:///some/where");

bool contains(const std::u16string& text, const std::u16string& part) {
    return text.find(part) != std::u16string::npos;
}

TEST(FileManipulatorTest, BeginsAsASuccessWithoutAMessage) {
    EngineUnderTest engine;
    EXPECT_EQ(engine.GetStatus().code, Status::success);
    EXPECT_FALSE(engine.GetStatus().exception);
    engine.ParseOptArgs({u"f"});
    EXPECT_EQ(engine.GetStatus().code, Status::success);
}

TEST(FileManipulatorTest, GivesCopiesOfItsStatus) {
    EngineUnderTest engine;
    Status copy = engine.GetStatus();
    copy.code = Status::failure;
    EXPECT_EQ(engine.GetStatus().code, Status::success);
}

TEST(FileManipulatorTest, MayBeDestroyedThroughItsBase) {
    static_assert(std::has_virtual_destructor_v<FileManipulator>);
    const std::unique_ptr<FileManipulator> engine = std::make_unique<EngineUnderTest>();
    EXPECT_NE(engine, nullptr);
}

TEST(SetStatusException, TakesTheTextOfTheClassAndTheIdentifierOfTheCommand) {
    EngineUnderTest engine;
    engine.setStatusException("OSError", KORVEX::FILE::DestNotAFolder(u"/d"));
    EXPECT_EQ(engine.identifier(), "KORVEX:FILE:OSError");
    EXPECT_EQ(engine.entry(), "KORVEX:FILE:DestNotAFolder");
    EXPECT_TRUE(contains(engine.text(), u"/d"));
    EXPECT_EQ(engine.status_.code, Status::failure);
}

TEST(SetStatusException, AsksTheEngineForThePrefixEachTime) {
    EngineUnderTest engine;
    engine.isIRI = true;
    engine.setStatusException("writeNotAllowed", KORVEX::virtualfileio::stream::writeNotAllowed());
    EXPECT_EQ(engine.identifier(), "KORVEX:virtualfilesystem:writeNotAllowed");
}

TEST(SetStatusException, StoresWhatCanBeCaughtAsTheClassOfItsMessage) {
    EngineUnderTest engine;
    engine.setStatusException("ReadOnly", KORVEX::FILE::ReadOnly(u"/d"));
    using ReadOnly = foundation::core::except::Exception<KORVEX::FILE::ReadOnly, std::exception, void>;
    EXPECT_THROW(boost::rethrow_exception(engine.status_.exception), ReadOnly);
}

TEST(SetStatusException, SecondFailureReplacesTheMessageAndTheCodeStays) {
    EngineUnderTest engine;
    engine.setStatusException("ReadOnly", KORVEX::FILE::ReadOnly(u"/a"));
    engine.setStatusException("FileNotFound", KORVEX::FILE::FileNotFound(u"/b"));
    EXPECT_EQ(engine.identifier(), "KORVEX:FILE:FileNotFound");
    EXPECT_EQ(engine.status_.code, Status::failure);
}

TEST(SetStatusException, ACodeThatIsNoSuccessStays) {
    EngineUnderTest engine;
    engine.status_.code = 7;
    engine.setStatusException("ReadOnly", KORVEX::FILE::ReadOnly(u"/a"));
    EXPECT_EQ(engine.status_.code, 7);
}

TEST(ReportByKey, CarriesTheWordOfTheCommandEvenForALocation) {
    EngineUnderTest engine;
    engine.isIRI = true;
    engine.reportByKey("OSError");
    EXPECT_EQ(engine.identifier(), "KORVEX:COPYFILE:OSError");
    EXPECT_EQ(engine.entry(), "KORVEX:FileManip:OSError");
    EXPECT_EQ(engine.status_.code, Status::failure);
}

TEST(ReportByKey, ReplacesAnEarlierFailure) {
    EngineUnderTest engine;
    engine.setStatusException("ReadOnly", KORVEX::FILE::ReadOnly(u"/a"));
    engine.reportByKey("OSError");
    EXPECT_EQ(engine.identifier(), "KORVEX:COPYFILE:OSError");
    EXPECT_EQ(engine.status_.code, Status::failure);
}

TEST(SystemFailure, HasTheSystemsOwnWordsOfTheFailureThatIsHandled) {
    EngineUnderTest engine;
    try {
        throw vfs::Exception(vfs::ioError, somewhere, u"read", "The disk is on fire");
    } catch (const vfs::Exception&) {
        engine.reportByKey("OSError");
    }
    EXPECT_EQ(engine.identifier(), "KORVEX:COPYFILE:OSError");
    EXPECT_EQ(engine.entry(), "KORVEX:FileManip:OSErrorWithReason");
    EXPECT_TRUE(contains(engine.text(), u"The disk is on fire"));
}

TEST(SystemFailure, HasTheWordsOfAStandardSystemErrorToo) {
    EngineUnderTest engine;
    const std::error_code full = std::make_error_code(std::errc::no_space_on_device);
    try {
        throw std::filesystem::filesystem_error("copy_symlink", full);
    } catch (const std::exception&) {
        engine.reportByKey("OSError");
    }
    EXPECT_TRUE(contains(engine.text(), fl::i18n::to_ustring(full.message())));
}

TEST(SystemFailure, OfAnotherExceptionOrAnEarlierOneHasNoSuchWords) {
    EngineUnderTest engine;
    try {
        throw vfs::Exception(vfs::ioError, somewhere, u"read", "The disk is on fire");
    } catch (const vfs::Exception&) {
    }
    engine.reportByKey("OSError");
    EXPECT_EQ(engine.entry(), "KORVEX:FileManip:OSError");
    try {
        throw vfs::Exception(vfs::ioError, somewhere);
    } catch (const vfs::Exception&) {
        engine.reportByKey("OSError");
    }
    EXPECT_EQ(engine.entry(), "KORVEX:FileManip:OSError");
    try {
        throw 1;
    } catch (int) {
        engine.reportByKey("OSError");
    }
    EXPECT_EQ(engine.entry(), "KORVEX:FileManip:OSError");
}

TEST(SystemFailure, SpeaksTheLanguageOfTheUser) {
    const auto textIn = [](const char* locale) {
        korvex::runtime::messages::setGlobalLocale(locale);
        EngineUnderTest engine;
        engine.reportByKey("OSError");
        return engine.text();
    };
    const std::u16string german = textIn("de");
    const std::u16string english = textIn("en");
    korvex::runtime::messages::setGlobalLocale("");
    EXPECT_TRUE(contains(german, u"System hat"));
    EXPECT_NE(german, english);
}

TEST(SetErrorStatus, KnowsTheEntriesOfFileattrib) {
    EngineUnderTest engine;
    engine.SetErrorStatus("FILEATTRIB", "CannotFindFile");
    EXPECT_EQ(engine.identifier(), "KORVEX:FILEATTRIB:CannotFindFile");
    EXPECT_EQ(engine.entry(), "KORVEX:FILEATTRIB:CannotFindFile");
    engine.SetErrorStatus("FILEATTRIB", "CouldNotSetAttributes");
    EXPECT_EQ(engine.identifier(), "KORVEX:FILEATTRIB:CouldNotSetAttributes");
    EXPECT_EQ(engine.entry(), "KORVEX:FILEATTRIB:CouldNotSetAttributes");
    EXPECT_EQ(engine.status_.code, Status::failure);
}

TEST(SetErrorStatus, KeyWithoutAnEntryReadsAsAFailureOfTheSystem) {
    EngineUnderTest engine;
    engine.SetErrorStatus("RMDIR", "CannotFindFile");
    EXPECT_EQ(engine.identifier(), "KORVEX:RMDIR:CannotFindFile");
    EXPECT_EQ(engine.entry(), "KORVEX:FileManip:OSError");
}

TEST(SetVFSErrorStatus, StoresTheMessageOfEachCodeAndLeavesTheStatusCode) {
    constexpr const char* keys[] = {
        "folderNotEmpty",   "invalidLocation",  "permissionDenied", "resourceAlreadyExists",
        "resourceNotFound", "readOnlyProvider", "fileTooLarge",     "resourceInUse",
        "noSpaceLeft",      "ioError",          "internalError",    "unsupportedOperation",
        "unknownError",     "unknownError"};
    for (std::size_t code = 0; code < std::size(keys); ++code) {
        EngineUnderTest engine;
        engine.SetVFSErrorStatus(vfs::Exception(static_cast<vfs::ErrorCode>(code), somewhere), u"/shown");
        EXPECT_EQ(engine.identifier(), std::string("KORVEX:virtualfilesystem:") + keys[code]);
        EXPECT_EQ(engine.entry(), engine.identifier());
        EXPECT_TRUE(contains(engine.text(), u"/shown"));
        EXPECT_EQ(engine.status_.code, Status::success);
    }
}

TEST(SetVFSErrorStatus, StoresWhatCanBeCaughtAsTheClassOfItsMessage) {
    EngineUnderTest engine;
    engine.SetVFSErrorStatus(vfs::Exception(vfs::noSpaceLeft, somewhere), u"/a");
    using NoSpaceLeft = foundation::core::except::Exception<KORVEX::virtualfilesystem::noSpaceLeft>;
    EXPECT_THROW(boost::rethrow_exception(engine.status_.exception), NoSpaceLeft);
}

TEST(SetErrorExceptionContext, IdentifierOfAnEntryWithOneArgumentIsStored) {
    EngineUnderTest engine;
    EXPECT_TRUE(engine.SetErrorExceptionContext(u"KORVEX:virtualfilesystem:resourceInUse", u"/a"));
    EXPECT_EQ(engine.identifier(), "KORVEX:virtualfilesystem:resourceInUse");
    EXPECT_TRUE(contains(engine.text(), u"/a"));
    EXPECT_EQ(engine.status_.code, Status::failure);
}

TEST(SetErrorExceptionContext, AnyOtherContextChangesNothing) {
    EngineUnderTest engine;
    for (const char16_t* context : {u"", u"existence", u"KORVEX:FILE:PATHMAX", u"KORVEX:FILE",
                                    u"KORVEX:no:entry", u"KORVEX:COPYFILE:CopiedFileIntoPackage",
                                    u"korvex:file:readonly", u"KORVEX:io:common:validation:InternalError"}) {
        EXPECT_FALSE(engine.SetErrorExceptionContext(context, u"/a"));
        EXPECT_EQ(engine.status_.code, Status::success);
        EXPECT_FALSE(engine.status_.exception);
    }
}

TEST(CheckStringForPathMax, LimitItselfIsWithin) {
    EngineUnderTest engine;
    EXPECT_TRUE(engine.CheckStringForPathMax(std::u16string(1280, u'a'), 1280));
    EXPECT_EQ(engine.status_.code, Status::success);
    EXPECT_FALSE(engine.CheckStringForPathMax(std::u16string(1281, u'a'), 1280));
    EXPECT_EQ(engine.identifier(), "KORVEX:FILE:PATHMAX");
    EXPECT_EQ(engine.status_.code, Status::failure);
}

TEST(CheckStringForPathMax, CarriesItsOwnIdentifierAlsoForALocation) {
    EngineUnderTest engine;
    engine.isIRI = true;
    engine.CheckStringForPathMax(u"ab", 1);
    EXPECT_EQ(engine.identifier(), "KORVEX:FILE:PATHMAX");
}

TEST(FilenameContainsNull, FindsANullAnywhere) {
    for (const std::u16string& path : {std::u16string(1, u'\0'), std::u16string(u"a\0b", 3)}) {
        EngineUnderTest engine;
        EXPECT_TRUE(engine.FilenameContainsNull(path));
        EXPECT_EQ(engine.identifier(), "KORVEX:FileManip:NullCharacterInName");
        EXPECT_EQ(engine.status_.code, Status::failure);
    }
    EngineUnderTest engine;
    EXPECT_FALSE(engine.FilenameContainsNull(u""));
    EXPECT_FALSE(engine.FilenameContainsNull(u"a%00"));
    EXPECT_FALSE(engine.status_.exception);
}

TEST(EnvironmentEvents, AreWhatTheEngineTellsInOrder) {
    using dispatcher::EnvironmentEvent;
    std::vector<EnvironmentEvent> events;
    const auto earlier =
        dispatcher::watchEvents([&](const EnvironmentEvent& event) { events.push_back(event); });
    EngineUnderTest engine;
    std::u16string folder = u"/a";
    engine.MarkDirOutOfDate(folder);
    engine.RequestPathRefresh();
    dispatcher::watchEvents(earlier);
    engine.RequestPathRefresh();

    EXPECT_EQ(folder, u"/a");
    EXPECT_EQ(events, (std::vector<EnvironmentEvent>{{EnvironmentEvent::Kind::folderOutOfDate, {u"/a"}},
                                                     {EnvironmentEvent::Kind::pathRefreshRequested, {}}}));
}

TEST(EnvironmentEvents, WithoutAWatcherAreDropped) {
    const auto earlier = dispatcher::watchEvents({});
    EXPECT_NO_THROW(dispatcher::markFolderOutOfDate(u"/a"));
    EXPECT_FALSE(dispatcher::watchEvents(earlier));
}

}  // namespace
}  // namespace korvex::io::filesystem::core::tests
