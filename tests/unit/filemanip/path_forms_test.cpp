// How the text of a path becomes what the storage is asked: the module over stand-ins for the platform's path
// functions, which follow the rules of Windows; and over an interpreter that returns from user errors.
#include <algorithm>
#include <memory>
#include <utility>

#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/existence_queries.h"
#include "platform/filesystem_core.h"
#include "platform/message_identifiers.h"
#include "runtime/storage/storage_system.h"
#include "tests/unit/filemanip/entry_call.h"
#include "tests/unit/filemanip/fake_platform_paths.h"
#include "tests/unit/filemanip/observed_provider.h"

namespace korvex::filemanip::tests {
namespace {

namespace core = korvex::io::filesystem::core;
namespace except = foundation::core::except;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
namespace storage = korvex::runtime::storage;
using Calls = std::vector<std::u16string>;

/// A storage of named locations, whose questions go into the log of the platform's calls.
class PathFormsTest : public testing::Test {
protected:
    PathFormsTest() { fakePlatform() = FakePlatform(); }
    ~PathFormsTest() override { fakePlatform() = FakePlatform(); }

    std::shared_ptr<const vfs::StorageSystem> observedSystem() {
        auto system = std::make_shared<vfs::StorageSystem>();
        const auto observed = std::make_shared<ObservedProvider>(fakePlatform().calls, locations_);
        system->add(u"file", observed);
        system->add(u"memory", observed);
        system->add(u"http", observed);
        return system;
    }

    void hasFile(const std::u16string& location) { locations_->entries[location] = provider::AsFile; }
    void hasFolder(const std::u16string& location) { locations_->entries[location] = provider::AsFolder; }

    /// Whether the text names a file, or a folder, with `elsewhere_` for the current folder.
    bool isFile(const std::u16string& text) { return locationExists<vfs::File>(text, storage_, elsewhere_); }
    bool isFolder(const std::u16string& text) {
        return locationExists<vfs::Folder>(text, storage_, elsewhere_);
    }

    static Calls takeCalls() { return std::exchange(fakePlatform().calls, {}); }

    std::shared_ptr<ListedLocations> locations_ = std::make_shared<ListedLocations>();
    storage::ScopedStorageSystem system_{observedSystem()};
    vfs::StorageSystemReference storage_{storage::currentStorageSystem()};
    vfs::Folder elsewhere_{vfs::AbsoluteIRI(u"memory://box/elsewhere"), storage_};
};

TEST_F(PathFormsTest, OrdinaryPathIsMadeAbsoluteWithoutABase) {
    hasFile(u"file:///C:/here/sub/x");
    EXPECT_TRUE(isFile(u"sub/x"));
    EXPECT_EQ(takeCalls(), (Calls{u"absolute(sub/x, )", u"make_native_form(C:\\here\\sub/x, true)",
                                  u"is_absolute(C:\\here\\sub\\x)", u"GetIRIFromString(C:\\here\\sub/x)",
                                  u"file:///C:/here/sub/x"}));
}

TEST_F(PathFormsTest, NetworkPathKeepsItsTextAndIsJudgedByItsNativeForm) {
    hasFolder(u"file://host/share/a");
    EXPECT_TRUE(isFolder(u"//host/share/a/"));
    EXPECT_EQ(takeCalls(),
              (Calls{u"make_native_form(//host/share/a/, true)", u"is_absolute(\\\\host\\share\\a\\)",
                     u"GetIRIFromString(//host/share/a/)", u"file://host/share/a"}));
}

TEST_F(PathFormsTest, LongPathKeepsItsTextAndIsJudgedByItsNativeForm) {
    hasFile(u"file:///C:/a/b");
    EXPECT_TRUE(isFile(u"\\\\?\\C:\\a/b"));
    EXPECT_EQ(takeCalls(), (Calls{u"make_native_form(\\\\?\\C:\\a/b, true)", u"is_absolute(\\\\?\\C:\\a\\b)",
                                  u"GetIRIFromString(\\\\?\\C:\\a/b)", u"file:///C:/a/b"}));
}

TEST_F(PathFormsTest, EitherOfNetworkAndLongPathIsEnoughToKeepTheText) {
    const auto yes = [](const std::u16string&) { return true; };
    const auto no = [](const std::u16string&) { return false; };
    const auto isMadeAbsolute = [this] {
        isFile(u"C:\\a");
        return takeCalls().front() == u"absolute(C:\\a, )";
    };
    fakePlatform().isUncPath = yes;
    fakePlatform().isLongPath = no;
    EXPECT_FALSE(isMadeAbsolute());
    fakePlatform().isUncPath = no;
    fakePlatform().isLongPath = yes;
    EXPECT_FALSE(isMadeAbsolute());
    fakePlatform().isLongPath = no;
    EXPECT_TRUE(isMadeAbsolute());
}

TEST_F(PathFormsTest, PathThatStaysRelativeIsLookedUpBelowTheGivenFolder) {
    fakePlatform().absolute = [](const std::u16string& path, const std::u16string&) { return path; };
    hasFile(u"memory://box/elsewhere/sub/x");
    EXPECT_TRUE(isFile(u"sub/x"));
    // The handle is of the path as it is, not of the native form, which was there for the judgement only.
    EXPECT_EQ(takeCalls(), (Calls{u"absolute(sub/x, )", u"make_native_form(sub/x, true)",
                                  u"is_absolute(sub\\x)", u"memory://box/elsewhere/sub/x"}));
    EXPECT_FALSE(isFolder(u"sub/x"));
}

TEST_F(PathFormsTest, NetworkPathThatIsNotAbsoluteIsLookedUpBelowTheGivenFolder) {
    fakePlatform().isAbsolute = [](const std::u16string&) { return false; };
    hasFolder(u"memory://box/elsewhere/host/share");
    EXPECT_TRUE(isFolder(u"//host/share"));
    EXPECT_EQ(takeCalls(), (Calls{u"make_native_form(//host/share, true)", u"is_absolute(\\\\host\\share)",
                                  u"memory://box/elsewhere/host/share"}));
}

TEST_F(PathFormsTest, PathThatBecomesEmptyHasAnEmptyNativeForm) {
    fakePlatform().absolute = [](const std::u16string&, const std::u16string&) { return u""; };
    hasFolder(u"memory://box/elsewhere");
    EXPECT_TRUE(isFolder(u"x"));
    EXPECT_EQ(takeCalls(), (Calls{u"absolute(x, )", u"is_absolute()", u"memory://box/elsewhere"}));
}

TEST_F(PathFormsTest, LocationIsNeitherMadeAbsoluteNorJudged) {
    hasFile(u"memory://box/a b");
    EXPECT_FALSE(isFile(u"memory://box/a"));
    EXPECT_EQ(takeCalls(), (Calls{u"GetIRIFromString(memory://box/a)", u"memory://box/a"}));
    EXPECT_FALSE(isFile(u"HTTP://host"));
    EXPECT_EQ(takeCalls(), (Calls{u"GetIRIFromString(HTTP://host/)", u"http://host/"}));
}

TEST_F(PathFormsTest, EmptyTextAndWrongSlashesCallNothing) {
    EXPECT_FALSE(isFolder(u""));
    EXPECT_FALSE(isFolder(u"memory:/box/elsewhere"));
    EXPECT_FALSE(isFolder(u"http:///host/"));
    EXPECT_EQ(takeCalls(), Calls());
}

TEST_F(PathFormsTest, FailureToMakeALocationIsLetThrough) {
    fakePlatform().beforeLocation = [](const std::u16string&) {
        throw vfs::Exception(vfs::ioError, vfs::AbsoluteIRI(u"file:///bad"));
    };
    EXPECT_THROW(isFile(u"C:\\bad"), vfs::Exception);
    EXPECT_THROW(isFolder(u"memory://box/bad"), vfs::Exception);
}

TEST_F(PathFormsTest, CurrentFolderIsAskedOnceForACallBeforeAnyText) {
    const auto expectOneQuestion = [](const Array& names) {
        for (const Entry entry : {bnIsFileFcn, bnIsFolderFcn}) {
            call(entry, 1, {names.get()});
            const Calls calls = takeCalls();
            EXPECT_EQ(std::count(calls.begin(), calls.end(), u"currentFolderExists()"), 1);
            EXPECT_EQ(calls.front(), u"currentFolderExists()");
        }
    };
    expectOneQuestion(text(u"a"));
    expectOneQuestion(text(u""));
    expectOneQuestion(cell({1, 3}, text(u"a"), text(u"b"), text(u"C:\\c")));
    expectOneQuestion(strings({3, 1}, {u"a", std::nullopt, u"\\\\host\\share\\c"}));
    expectOneQuestion(strings({0, 0}, {}));
}

TEST_F(PathFormsTest, TheOneCurrentFolderServesAllTextsOfACall) {
    fakePlatform().absolute = [](const std::u16string& path, const std::u16string&) { return path; };
    hasFile(u"file:///C:/here/a");
    hasFile(u"file:///C:/here/b");
    const Array names = cell({1, 3}, text(u"a"), text(u"x"), text(u"b"));
    EXPECT_EQ(logicals(call(bnIsFileFcn, 1, {names.get()}).outputs[0]),
              (std::vector<bool>{true, false, true}));
}

TEST_F(PathFormsTest, CurrentFolderThatIsGoneEndsTheCallBeforeAnyText) {
    fakePlatform().currentFolderExists = false;
    const Outcome outcome = call(bnIsFileFcn, 1, {text(u"C:\\a").get()});
    EXPECT_EQ(outcome.errorIdentifier, "KORVEX:services:cwdIsInvalid");
    EXPECT_EQ(takeCalls(), Calls{u"currentFolderExists()"});
}

/// The interpreter may come back from a user error; the command ends all the same.
class ReturningInterpreterTest : public PathFormsTest {
protected:
    static std::vector<std::string> handed() { return fakePlatform().handedErrors; }
};

TEST_F(ReturningInterpreterTest, ErrorIsThrownAfterItWasHandedOver) {
    EXPECT_THROW(raise(KORVEX::FILE::ReadOnly(u"/a")), except::Exception<KORVEX::FILE::ReadOnly>);
    EXPECT_EQ(handed(), std::vector<std::string>{"KORVEX:FILE:ReadOnly"});
}

TEST_F(ReturningInterpreterTest, ErrorKeepsItsOwnIdentifierAndText) {
    try {
        raise(KORVEX::FILE::ReadOnly(u"/a"), "KORVEX:COPYFILE:ReadOnly");
        FAIL() << "returned";
    } catch (const except::Exception<KORVEX::FILE::ReadOnly>& error) {
        EXPECT_EQ(error.get_error_id(), "KORVEX:COPYFILE:ReadOnly");
        EXPECT_EQ(error.message().identifier(), "KORVEX:FILE:ReadOnly");
    }
    EXPECT_EQ(handed(), std::vector<std::string>{"KORVEX:COPYFILE:ReadOnly"});
}

TEST_F(ReturningInterpreterTest, RefusedArgumentEndsTheCommandWithItsOneError) {
    const Outcome outcome = call(bnIsFileFcn, 1, {number(1).get()});
    EXPECT_EQ(outcome.errorIdentifier, "KORVEX:string:MustBeCharCellArrayOrString");
    EXPECT_EQ(outcome.outputs[0], nullptr);
    EXPECT_EQ(handed(), std::vector<std::string>{"KORVEX:string:MustBeCharCellArrayOrString"});
}

TEST_F(ReturningInterpreterTest, FailureWithoutOutputsIsThrownAfterItWasHandedOver) {
    core::Status status;
    status.code = core::Status::failure;
    status.exception = boost::copy_exception(
        except::Exception<KORVEX::FILE::ReadOnly>(KORVEX::FILE::ReadOnly(u"/a"), "KORVEX:COPYFILE:ReadOnly"));
    EXPECT_THROW(core::ResultHandler::HandleStatus(status, 0, nullptr), except::IMsgIDException);
    EXPECT_EQ(handed(), std::vector<std::string>{"KORVEX:COPYFILE:ReadOnly"});
}

}  // namespace
}  // namespace korvex::filemanip::tests
