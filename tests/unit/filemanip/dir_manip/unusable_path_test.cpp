// A path that the platform cannot make absolute, and the order in which one that it can is cleaned up: the
// driver of `mkdir` and `rmdir` over stand-ins for the platform's path functions, which follow the rules of
// Windows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "io/filesystem/filemanip/DirManip.h"
#include "platform/message_identifiers.h"
#include "runtime/dispatcher/environment_events.h"
#include "tests/unit/filemanip/fake_platform_paths.h"

// No environment here that could be told: it would bring the real path functions with it.
namespace korvex::runtime::dispatcher {
void markFolderOutOfDate(const std::u16string&) {}
void requestPathRefresh() {}
}  // namespace korvex::runtime::dispatcher

namespace korvex::filemanip::tests {
namespace {

using io::filesystem::core::Status;
using testing::ElementsAre;
using testing::IsEmpty;

class RecordingEngine : public DirManipulator {
public:
    bool DirProcess(const AbsoluteIRI& location, const std::u16string&) override {
        locations.push_back(location.toString());
        return false;
    }
    void reportByKey(const char* key) override { SetErrorStatus("RECORDING", key); }

    std::vector<std::u16string> locations;
};

class UnusablePathTest : public testing::Test {
protected:
    UnusablePathTest() { fakePlatform() = FakePlatform(); }
    ~UnusablePathTest() override { fakePlatform() = FakePlatform(); }

    Status process(const std::u16string& path) { return engine_.Process(std::vector<std::u16string>{path}); }

    RecordingEngine engine_;
};

TEST_F(UnusablePathTest, PathThatCannotBeMadeAbsoluteIsUsedAsItIs) {
    fakePlatform().absolute = [](const auto&, const auto&) -> std::u16string {
        throw std::runtime_error("no idea");
    };
    EXPECT_EQ(process(u"C:\\a\\.\\b").code, Status::success);
    EXPECT_THAT(engine_.locations, ElementsAre(u"file:///C:/a/b"));
}

TEST_F(UnusablePathTest, PathIsMadeAbsoluteAndCleanedUpInItsOrder) {
    EXPECT_EQ(process(u"a\\.\\b\\..\\c. ").code, Status::success);
    EXPECT_THAT(fakePlatform().calls,
                ElementsAre(u"absolute(a\\.\\b\\..\\c. , )", u"handleSingleDots(C:\\here\\a\\.\\b\\..\\c. )",
                            u"handleDotDots(C:\\here\\a\\b\\..\\c. )",
                            u"handleWindowsTrailingDotsAndSpaces(C:\\here\\a\\c. )",
                            u"GetIRIFromString(C:\\here\\a\\c)"));
    EXPECT_THAT(engine_.locations, ElementsAre(u"file:///C:/here/a/c"));
}

TEST_F(UnusablePathTest, PathThatBecomesEmptyIsNotFound) {
    fakePlatform().absolute = [](const auto&, const auto&) { return std::u16string(); };
    const Status status = process(u"a");
    EXPECT_EQ(status.code, Status::failure);
    // The entry of one command under the word of another.
    EXPECT_EQ(io::filesystem::core::detail::GetID(status.exception), "KORVEX:FILE:PathNotFound");
    EXPECT_EQ(io::filesystem::core::detail::GetUnicodeMessageTxt(status.exception),
              foundation::core::except::Exception(KORVEX::RMDIR::PathNotFound()).GetUnicodeMessageTxt());
    EXPECT_THAT(engine_.locations, IsEmpty());
}

TEST_F(UnusablePathTest, PathsAreJoinedByThePlatformsSeparatorAndLocationsByASlash) {
    engine_.Process(std::vector<std::u16string>{u"C:\\a", u"b"});
    engine_.Process(std::vector<std::u16string>{u"memory://box/a", u"b"});
    EXPECT_THAT(engine_.locations, ElementsAre(u"file:///C:/a/b", u"memory://box/a/b"));
}

}  // namespace
}  // namespace korvex::filemanip::tests
