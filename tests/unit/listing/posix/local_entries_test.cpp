// The lister on a POSIX disk: links, odd entries, folders that may not be read, names that are no text, trees
// that are deep, and handles that are few.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <filesystem>
#include <string>

#include "platform/storage_vfs.h"
#include "runtime/process/posix/file_descriptor.h"
#include "tests/support/posix/few_open_files.h"
#include "tests/support/posix/ordinary_user.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/listing/lister_calls.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
using korvex::runtime::process::FileDescriptor;
using testing::ElementsAre;
using testing::IsEmpty;

class LocalEntriesTest : public testing::Test {
protected:
    Texts paths(std::u16string_view pattern) { return calls_.paths(pattern); }
    FileNameWithStatLight entry(std::u16string_view pattern) {
        const auto found = calls_.entries(pattern);
        EXPECT_EQ(found.size(), 1U);
        return found.empty() ? FileNameWithStatLight() : found.front();
    }
    void link(const fs::path& target, const fs::path& name) const {
        fs::create_symlink(target, scratch_.path() / name);
    }
    void setModified(const fs::path& name, ::time_t seconds, long nanoseconds) const {
        const struct ::timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
        ASSERT_EQ(::utimensat(AT_FDCWD, (scratch_.path() / name).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
    }

    ScratchFolder scratch_;
    ListerCalls calls_{scratch_.text()};
};

TEST_F(LocalEntriesTest, LinkHasSizeAndTimeOfItsTarget) {
    scratch_.writeFile("target", "1234567");
    setModified("target", 1000, 2000);
    link("target", "link");
    setModified("link", 5000, 0);
    for (const auto* pattern : {u"link", u"lin*"}) {
        const FileNameWithStatLight found = entry(pattern);
        EXPECT_EQ(found.name, u"link");
        EXPECT_FALSE(found.isDirectory);
        EXPECT_EQ(std::get<std::uint64_t>(found.size), 7U);
        EXPECT_EQ(to_iso_extended_string(found.modified), "1970-01-01T00:16:40.000002");
    }
}

TEST_F(LocalEntriesTest, LinkWithoutATargetIsListedWithNothingKnown) {
    link("nowhere", "broken");
    link("loop", "loop");
    for (const auto* pattern : {u"broken", u"brok*", u"loop", u"loo*"}) {
        const FileNameWithStatLight found = entry(pattern);
        EXPECT_FALSE(found.isDirectory);
        EXPECT_FALSE(found.sizeKnown);
        EXPECT_TRUE(found.modified.is_not_a_date_time());
    }
}

TEST_F(LocalEntriesTest, LinkToAFolderIsListedAsAFolderAndNotWalkedInto) {
    scratch_.writeFile("folder/inner");
    link("folder", "link");
    link(".", "folder/round");
    EXPECT_THAT(paths(u"**/*"), ElementsAre("folder", "link", "folder/inner", "folder/round"));
    EXPECT_THAT(paths(u"*/inner"), ElementsAre("folder/inner"));
    EXPECT_TRUE(entry(u"li*").isDirectory);
    EXPECT_EQ(std::get<std::uint64_t>(entry(u"li*").size), 0U);
}

TEST_F(LocalEntriesTest, LinkToAFolderThatThePatternNamesIsOpened) {
    scratch_.writeFile("folder/inner");
    scratch_.writeFile("a/other");
    link("../folder", "a/link");
    link("folder", "link");
    EXPECT_THAT(paths(u"link"), ElementsAre("link/inner"));
    EXPECT_THAT(paths(u"link/*"), ElementsAre("link/inner"));
    EXPECT_THAT(paths(u"*/link"), ElementsAre("a/link/inner"));
    EXPECT_THAT(paths(u"*/link/i*"), ElementsAre("a/link/inner"));
    EXPECT_THAT(paths(u"**/link/**/inner"), ElementsAre("a/link/inner", "link/inner"));
}

TEST_F(LocalEntriesTest, LinksThatLeadRoundInCirclesComeToAnEnd) {
    scratch_.writeFile("a/x");
    link(".", "a/a");
    EXPECT_THAT(paths(u"**/a/x"), ElementsAre("a/x", "a/a/x"));
    EXPECT_THAT(paths(u"*/a/a/a/x"), ElementsAre("a/a/a/a/x"));
}

TEST_F(LocalEntriesTest, PipesAndDevicesAreListedAsFiles) {
    ASSERT_EQ(::mkfifo((scratch_.path() / "pipe").c_str(), 0666), 0);
    const FileNameWithStatLight found = entry(u"*");
    EXPECT_FALSE(found.isDirectory);
    EXPECT_TRUE(found.sizeKnown);
    EXPECT_EQ(entry(u"pipe").name, u"pipe");
}

TEST_F(LocalEntriesTest, NamesThatAreNoTextKeepTheirBytes) {
    scratch_.writeFile("no-\xFF-text");
    scratch_.writeFile("folder-\xFE/inner");
    EXPECT_EQ(entry(u"no*").name, u"no-\xDCFF-text");
    EXPECT_EQ(entry(u"no-?-text").name, u"no-\xDCFF-text");
    EXPECT_EQ(entry(u"no-\xDCFF-text").name, u"no-\xDCFF-text");
    EXPECT_EQ(*entry(u"fol*/*").folder, scratch_.text() + u"/folder-\xDCFE");
}

TEST_F(LocalEntriesTest, NameThatNoDiskCanHoldIsNotFound) {
    scratch_.writeFile("x");
    EXPECT_THAT(paths(std::u16string(1, char16_t{0xD800})), IsEmpty());
    EXPECT_THAT(paths(std::u16string(300, u'x')), IsEmpty());
    EXPECT_THAT(paths(std::u16string(300, u'x') + u"/*"), IsEmpty());
}

TEST_F(LocalEntriesTest, TimesBefore1970AndFractionsAreKept) {
    scratch_.writeFile("old");
    setModified("old", -1, 999'999'999);
    EXPECT_EQ(to_iso_extended_string(entry(u"old").modified), "1969-12-31T23:59:59.999999");
}

TEST_F(LocalEntriesTest, FolderBelowThatMayNotBeReadIsListedAndPassedOver) {
    scratch_.writeFile("locked/inner");
    scratch_.writeFile("open/inner");
    fs::permissions(scratch_.path(), fs::perms(0755));
    fs::permissions(scratch_.path() / "locked", fs::perms(0));
    const OrdinaryUser user;
    EXPECT_THAT(paths(u"**/*"), ElementsAre("locked", "open", "open/inner"));
    const FileNameWithStatLight locked = calls_.entries(u"*").front();
    EXPECT_TRUE(locked.isDirectory);
    EXPECT_FALSE(locked.modified.is_special());
}

TEST_F(LocalEntriesTest, LinkToAFolderThatMayNotBeReadIsNeitherDisplayedAsEmptyNorFound) {
    scratch_.writeFile("locked/inner");
    scratch_.makeFolder("a");
    scratch_.makeFolder("b");
    link("../locked", "a/link");
    fs::permissions(scratch_.path(), fs::perms(0755));
    fs::permissions(scratch_.path() / "locked", fs::perms(0));
    const OrdinaryUser user;
    for (const auto* pattern : {u"*/link", u"*/link/*"}) {
        displayCalls().clear();
        std::vector<FileNameWithStatLight> buffer;
        EXPECT_FALSE(ioGetDirListRecursive(Velquist::PathManagement::GetIRIFromString(scratch_.text()),
                                           pattern, buffer, u"", false, rememberDisplay, u""));
        for (const Displayed& call : displayCalls())
            EXPECT_FALSE(call.isEmpty) << call.text;
        EXPECT_THAT(paths(pattern), IsEmpty());
        EXPECT_FALSE(calls_.isFound);
    }
    displayCalls().clear();
}

TEST_F(LocalEntriesTest, FolderOfTheVeryNameIsOpenedAndAnyOtherNameMatches) {
    scratch_.writeFile("what?/inner");
    scratch_.writeFile("whatx");
    scratch_.writeFile("a?/b?/deep");
    link("what?", "link?");
    scratch_.writeFile("linky");
    EXPECT_THAT(paths(u"what?"), ElementsAre("what?/inner"));
    EXPECT_THAT(paths(u"link?"), ElementsAre("link?/inner"));
    EXPECT_THAT(paths(u"a?/b?"), ElementsAre("a?/b?/deep"));
    EXPECT_THAT(paths(u"wha??"), ElementsAre("what?", "whatx"));
    EXPECT_THAT(paths(u"w*t?"), ElementsAre("what?", "whatx"));
    fs::remove_all(scratch_.path() / "what?");
    EXPECT_THAT(paths(u"what?"), ElementsAre("whatx"));
}

TEST_F(LocalEntriesTest, FileOfTheVeryNameIsOneOfTheMatches) {
    scratch_.writeFile("what?");
    scratch_.writeFile("whatx");
    EXPECT_THAT(paths(u"what?"), ElementsAre("what?", "whatx"));
}

TEST_F(LocalEntriesTest, FolderThatMayOnlyBeReadIsMatchedByNames) {
    scratch_.writeFile("named/inner");
    fs::permissions(scratch_.path(), fs::perms(0755));
    fs::permissions(scratch_.path() / "named", fs::perms(0744));
    const OrdinaryUser user;
    std::vector<FileNameWithStatLight> found;
    EXPECT_TRUE(ioGetDirListRecursive(Velquist::PathManagement::GetIRIFromString(scratch_.text() + u"/named"),
                                      u"inne?", found, u"", false, nullptr, u""));
    EXPECT_EQ(found.size(), 1U);
}

TEST_F(LocalEntriesTest, FolderThatWasNamedAndMayNotBeReadIsAnError) {
    scratch_.writeFile("locked/inner");
    fs::permissions(scratch_.path(), fs::perms(0755));
    fs::permissions(scratch_.path() / "locked", fs::perms(0));
    const OrdinaryUser user;
    for (const auto* pattern : {u"locked", u"locked/*", u"locked/inner"}) {
        try {
            paths(pattern);
            FAIL() << "nothing was raised";
        } catch (const vfs::Exception& error) {
            EXPECT_EQ(error.getErrorCode(), vfs::permissionDenied);
        }
    }
}

TEST_F(LocalEntriesTest, FolderThatMayOnlyBeSearchedGivesWhatIsNamed) {
    scratch_.writeFile("searched/inner", "123");
    fs::permissions(scratch_.path(), fs::perms(0755));
    fs::permissions(scratch_.path() / "searched", fs::perms(0711));
    const OrdinaryUser user;
    EXPECT_THAT(paths(u"searched/inner"), ElementsAre("searched/inner"));
    EXPECT_THROW(paths(u"searched"), vfs::Exception);
}

TEST_F(LocalEntriesTest, EntriesThatMayNotBeLookedAtAreListedByTheirNames) {
    scratch_.writeFile("named/inner", "123");
    scratch_.makeFolder("named/folder");
    fs::permissions(scratch_.path(), fs::perms(0755));
    fs::permissions(scratch_.path() / "named", fs::perms(0744));
    const OrdinaryUser user;
    const auto found = calls_.entries(u"named");
    ASSERT_EQ(found.size(), 2U);
    EXPECT_TRUE(found[0].isDirectory);
    EXPECT_FALSE(found[1].isDirectory);
    for (const FileNameWithStatLight& unknown : found) {
        EXPECT_FALSE(unknown.sizeKnown);
        EXPECT_TRUE(unknown.modified.is_not_a_date_time());
    }
}

TEST_F(LocalEntriesTest, DepthHasNoLimitAndHandlesStayFew) {
    constexpr int levels = 1000;
    {
        FileDescriptor level(::open(scratch_.path().c_str(), O_PATH | O_DIRECTORY));
        for (int i = 0; i < levels; ++i) {
            ASSERT_EQ(::mkdirat(level.get(), "down", 0777), 0);
            ASSERT_EQ(::mkdirat(level.get(), "beside", 0777), 0);
            level = FileDescriptor(::openat(level.get(), "down", O_PATH | O_DIRECTORY));
        }
    }
    const korvex::tests::FewOpenFiles few(250);
    EXPECT_EQ(calls_.entries(u"**/*").size(), std::size_t{2} * levels);
    displayCalls().clear();
    std::vector<FileNameWithStatLight> buffer;
    EXPECT_TRUE(ioGetDirListRecursive(Velquist::PathManagement::GetIRIFromString(scratch_.text()), u"**/b*",
                                      buffer, u"", false, rememberDisplay, u""));
    EXPECT_EQ(displayCalls().size(), std::size_t{2} * levels + 1);
    displayCalls().clear();
}

TEST_F(LocalEntriesTest, ListingThatRunsOutOfHandlesIsRaisedAndNotCutShort) {
    scratch_.writeFile("folder/file");
    // The same paths once before: a sanitizer needs handles of its own when it meets a type for the first
    // time.
    EXPECT_EQ(calls_.entries(u"**/*").size(), 2U);
    EXPECT_THROW(throw vfs::Exception(vfs::ioError, vfs::AbsoluteIRI(u"file:///x"), u"listing", "words"),
                 vfs::Exception);
    const int lowestFree = FileDescriptor(::open("/", O_PATH)).get();
    // Room for the folder itself, and for none below it.
    const korvex::tests::FewOpenFiles few(static_cast<rlim_t>(lowestFree) + 1);
    EXPECT_THROW(calls_.entries(u"**/*"), vfs::Exception);
    EXPECT_EQ(calls_.entries(u"*").size(), 1U);
}

TEST_F(LocalEntriesTest, PathLongerThanTheSystemTakesIsOpened) {
    std::u16string path;
    fs::path native = scratch_.path();
    FileDescriptor level(::open(scratch_.path().c_str(), O_PATH | O_DIRECTORY));
    const std::string name(200, 'n');
    for (int i = 0; i < 30; ++i) {
        ASSERT_EQ(::mkdirat(level.get(), name.c_str(), 0777), 0);
        level = FileDescriptor(::openat(level.get(), name.c_str(), O_PATH | O_DIRECTORY));
        path += std::u16string(200, u'n') + u'/';
    }
    FileDescriptor(::openat(level.get(), "file", O_CREAT | O_WRONLY, 0666));
    EXPECT_EQ(calls_.entries(path + u"*").size(), 1U);
    EXPECT_EQ(calls_.entries(path + u"file").size(), 1U);
}

}  // namespace
}  // namespace korvex::tests
