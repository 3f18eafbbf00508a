// Files that go to the desktop's trash: with a record from which a file manager restores them, whatever their
// names are; and those that no trash can take, which stay.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <chrono>
#include <ctime>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "platform/shell_file_operation.h"
#include "runtime/text/encoding.h"
#include "tests/support/posix/ordinary_user.h"
#include "tests/unit/trash/posix/trash_of_process.h"

namespace korvex::runtime::trash {
namespace {

namespace fs = std::filesystem;
using korvex::tests::withoutEscapes;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned short usualFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_ALLOWUNDO | FOF_FILESONLY;

class DesktopTrashTest : public testing::Test {
protected:
    DesktopTrashTest() { trash_.empty(); }

    static int call(const std::u16string& list, unsigned function = FO_DELETE,
                    unsigned short flags = usualFlags) {
        SHFILEOPSTRUCTW operation{};
        operation.wFunc = function;
        operation.pFrom = list.c_str();
        operation.fFlags = flags;
        return SHFileOperationW(&operation);
    }
    static std::u16string listOf(const std::vector<fs::path>& paths) {
        std::u16string list;
        for (const fs::path& path : paths)
            list += text::fromBytes(path.native()) + u'\0';
        return list;
    }
    static bool recycled(const fs::path& path) { return call(listOf({path})) == 0; }

    static std::string contentOf(const fs::path& path) {
        std::ostringstream content;
        content << std::ifstream(path, std::ios::binary).rdbuf();
        return content.str();
    }
    static bool isThere(const fs::path& path) { return fs::exists(fs::symlink_status(path)); }
    fs::path path(const std::string& name) const { return scratch_.path() / name; }

    const korvex::tests::TrashOfProcess& trash_ = korvex::tests::TrashOfProcess::get();
    korvex::tests::ScratchFolder scratch_;
};

/// On the disk in memory that Linux has at this place; no trash takes what is there.
class FolderInMemory {
public:
    FolderInMemory() {
        if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("cannot make " + path_);
    }
    ~FolderInMemory() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    FolderInMemory(const FolderInMemory&) = delete;
    FolderInMemory& operator=(const FolderInMemory&) = delete;

    fs::path path() const { return path_; }

private:
    std::string path_ = "/dev/shm/korvex-" + std::string(6, 'X');
};

::dev_t deviceOf(const fs::path& path) {
    struct ::stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_dev;
}

/// Seconds since the epoch, of the form that records have; local time.
std::time_t timeOf(const std::string& recorded) {
    std::tm local{};
    const char* const end = ::strptime(recorded.c_str(), "%Y-%m-%dT%H:%M:%S", &local);
    if (end == nullptr || *end != '\0') return 0;
    local.tm_isdst = -1;
    return std::mktime(&local);
}

TEST_F(DesktopTrashTest, TakesAFileWithTheRecordOfWhereItWasAndWhenItWent) {
    const fs::path file = scratch_.writeFile("a.txt", "content");
    const std::time_t before = std::time(nullptr);
    EXPECT_TRUE(recycled(file));
    const std::time_t after = std::time(nullptr);
    EXPECT_FALSE(isThere(file));
    EXPECT_EQ(contentOf(trash_.file("a.txt")), "content");
    EXPECT_THAT(trash_.records(), ElementsAre("a.txt.trashinfo"));
    EXPECT_EQ(trash_.recorded("a.txt", "Path"), file.string());
    EXPECT_GE(timeOf(trash_.recorded("a.txt", "DeletionDate")), before);
    EXPECT_LE(timeOf(trash_.recorded("a.txt", "DeletionDate")), after);
}

TEST_F(DesktopTrashTest, FilesOfOneNameAllSurvive) {
    for (const char* name : {"a.txt", "one/a.txt", "two/a.txt"})
        EXPECT_TRUE(recycled(scratch_.writeFile(name, name)));
    std::vector<std::string> contents;
    for (const std::string& name : trash_.names()) {
        contents.push_back(contentOf(trash_.file(name)));
        EXPECT_EQ(trash_.recorded(name, "Path"), path(contents.back()).string());
    }
    EXPECT_THAT(contents, testing::UnorderedElementsAre("a.txt", "one/a.txt", "two/a.txt"));
}

TEST_F(DesktopTrashTest, TheSamePathCanGoAgainAndAgain) {
    for (const char* content : {"first", "second", "third"})
        EXPECT_TRUE(recycled(scratch_.writeFile("a", content)));
    std::vector<std::string> contents;
    for (const std::string& name : trash_.names())
        contents.push_back(contentOf(trash_.file(name)));
    EXPECT_THAT(contents, testing::UnorderedElementsAre("first", "second", "third"));
}

TEST_F(DesktopTrashTest, NamesAreRecordedByteByByteSoThatTheFileCanComeBack) {
    const std::string names[] = {"50%",
                                 "%41.txt",
                                 "%",
                                 "two words",
                                 " blank ",
                                 "line\nfeed",
                                 "tab\t",
                                 "\xFF\xFE no UTF-8",
                                 "caf\xE9.txt",
                                 "gr\xC3\xBC\xC3\x9F.txt",
                                 "\xF0\x9F\x97\x91",
                                 "a=b",
                                 "[Trash Info]",
                                 "#?;&",
                                 "*",
                                 "back\\slash",
                                 "-rf",
                                 ".hidden",
                                 "..two",
                                 "a.",
                                 "quo'\"te",
                                 std::string(200, 'n')};
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        trash_.empty();
        const fs::path file = scratch_.writeFile("fol der%/" + name, "content");
        ASSERT_TRUE(recycled(file));
        ASSERT_FALSE(isThere(file));
        ASSERT_EQ(trash_.names().size(), 1U);
        const std::string kept = trash_.names().front();
        EXPECT_THAT(trash_.records(), ElementsAre(kept + ".trashinfo"));
        // As a file manager restores it.
        fs::rename(trash_.file(kept), withoutEscapes(trash_.recorded(kept, "Path")));
        EXPECT_EQ(contentOf(file), "content");
    }
}

TEST_F(DesktopTrashTest, LinksGoThemselves) {
    scratch_.writeFile("file", "content");
    scratch_.makeFolder("folder");
    fs::create_symlink("file", path("toFile"));
    fs::create_symlink("folder", path("toFolder"));
    fs::create_symlink("nothing", path("broken"));
    for (const char* link : {"toFile", "toFolder", "broken"})
        EXPECT_TRUE(recycled(path(link))) << link;
    EXPECT_THAT(trash_.names(), ElementsAre("broken", "toFile", "toFolder"));
    EXPECT_EQ(fs::read_symlink(trash_.file("broken")), "nothing");
    EXPECT_EQ(contentOf(path("file")), "content");
    EXPECT_TRUE(fs::is_directory(path("folder")));
}

TEST_F(DesktopTrashTest, ProtectedFilesGoAndStayProtected) {
    const fs::path file = scratch_.writeFile("a", "content");
    fs::permissions(file, fs::perms(0444));
    EXPECT_TRUE(recycled(file));
    EXPECT_EQ(fs::status(trash_.file("a")).permissions(), fs::perms(0444));
}

TEST_F(DesktopTrashTest, DoubleDotsBehindALinkLeadWhereTheSystemSays) {
    scratch_.writeFile("real/inner/x", "");
    scratch_.writeFile("real/a", "meant");
    scratch_.writeFile("a", "another one");
    fs::create_directory_symlink("real/inner", path("link"));
    EXPECT_TRUE(recycled(path("link/../a")));
    EXPECT_EQ(contentOf(path("a")), "another one");
    EXPECT_EQ(contentOf(trash_.file("a")), "meant");
    EXPECT_EQ(trash_.recorded("a", "Path"), path("real/a").string());
}

TEST_F(DesktopTrashTest, AllFilesOfAListGo) {
    const fs::path one = scratch_.writeFile("one");
    const fs::path two = scratch_.writeFile("two");
    EXPECT_EQ(call(listOf({one, two})), 0);
    EXPECT_THAT(trash_.names(), ElementsAre("one", "two"));
    EXPECT_EQ(call(listOf({})), 0);
}

TEST_F(DesktopTrashTest, TheFirstFileThatCannotGoEndsTheList) {
    const fs::path one = scratch_.writeFile("one");
    const fs::path three = scratch_.writeFile("three");
    EXPECT_NE(call(listOf({one, path("two"), three})), 0);
    EXPECT_THAT(trash_.names(), ElementsAre("one"));
    EXPECT_TRUE(isThere(three));
}

TEST_F(DesktopTrashTest, FoldersStay) {
    scratch_.writeFile("folder/a", "content");
    EXPECT_FALSE(recycled(path("folder")));
    EXPECT_FALSE(recycled(path("folder/.")));
    EXPECT_FALSE(recycled(path("folder/..")));
    EXPECT_EQ(contentOf(path("folder/a")), "content");
    EXPECT_THAT(trash_.names(), IsEmpty());
}

TEST_F(DesktopTrashTest, WhatIsNotThereCannotGo) {
    EXPECT_FALSE(recycled(path("nothing")));
    EXPECT_FALSE(recycled(path("nothing/../a")));
    EXPECT_NE(call(text::fromBytes(scratch_.path().native()) + u"/\xD800" + u'\0'), 0);
    EXPECT_THAT(trash_.records(), IsEmpty());
}

TEST_F(DesktopTrashTest, FileStaysWhereThereIsNoPlaceForATrash) {
    const fs::path file = scratch_.writeFile("a", "content");
    trash_.block();
    EXPECT_FALSE(recycled(file));
    EXPECT_EQ(contentOf(file), "content");
}

TEST_F(DesktopTrashTest, FileStaysOnADiskThatHasNoTrash) {
    const FolderInMemory folder;
    ASSERT_NE(deviceOf(folder.path()), deviceOf(scratch_.path()))
        << "the home folder must be on another disk";
    const fs::path file = folder.path() / "a";
    std::ofstream(file) << "content";
    EXPECT_FALSE(recycled(file));
    EXPECT_EQ(contentOf(file), "content");
    EXPECT_THAT(trash_.names(), IsEmpty());
    EXPECT_THAT(trash_.records(), IsEmpty());
}

TEST_F(DesktopTrashTest, FileThatMayNotLeaveItsFolderStaysAndTheTrashIsNotEvenOpened) {
    const fs::path file = scratch_.writeFile("locked/a", "content");
    fs::create_directories(trash_.folder());
    fs::permissions(trash_.folder(), fs::perms::all);
    fs::permissions(scratch_.path(), fs::perms::all);
    fs::permissions(file.parent_path(), fs::perms(0555));
    {
        const korvex::tests::OrdinaryUser user;
        EXPECT_FALSE(recycled(file));
    }
    EXPECT_EQ(contentOf(file), "content");
    EXPECT_TRUE(fs::is_empty(trash_.folder())) << "no record was begun";
}

TEST_F(DesktopTrashTest, FileStaysWhoseNameLeavesNoRoomForARecord) {
    const fs::path file = scratch_.writeFile(std::string(255, 'n'), "content");
    EXPECT_FALSE(recycled(file));
    EXPECT_EQ(contentOf(file), "content");
}

TEST_F(DesktopTrashTest, EveryOtherOperationFails) {
    const fs::path file = scratch_.writeFile("a", "content");
    constexpr unsigned copying = 2;
    EXPECT_NE(call(listOf({file}), copying), 0);
    EXPECT_NE(call(listOf({file}), FO_DELETE, FOF_SILENT | FOF_FILESONLY), 0) << "for good is for others";
    EXPECT_NE(call(listOf({file}), FO_DELETE, FOF_ALLOWUNDO), 0);
    SHFILEOPSTRUCTW withoutList{};
    withoutList.wFunc = FO_DELETE;
    withoutList.fFlags = usualFlags;
    EXPECT_NE(SHFileOperationW(&withoutList), 0);
    EXPECT_EQ(contentOf(file), "content");
}

}  // namespace
}  // namespace korvex::runtime::trash
