// Trees and files on the local disk that are large, deep or odd: what a transfer keeps, and what it needs.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "platform/path_management.h"
#include "platform/storage_vfs.h"
#include "runtime/process/posix/file_descriptor.h"
#include "runtime/storage/providers/local/tree_listing.h"
#include "tests/support/posix/few_open_files.h"
#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
using korvex::runtime::process::FileDescriptor;

class LocalTreesTest : public testing::Test {
protected:
    vfs::Folder folder(const std::string& name) const { return {locationOf(name), storage()}; }
    vfs::File file(const std::string& name) const { return {locationOf(name), storage()}; }

    vfs::AbsoluteIRI locationOf(const std::string& name) const {
        return Velquist::PathManagement::GetIRIFromString((scratch_.path() / name).u16string());
    }
    static vfs::StorageSystemReference storage() {
        return Velquist::KorvexStorageSystem::GetStorageSystemReference();
    }

    /// Folders inside each other, each with a file and an empty folder beside the next one.
    void makeComb(const std::string& name, int levels) const {
        FileDescriptor level(::open(scratch_.path().c_str(), O_PATH | O_DIRECTORY));
        ASSERT_EQ(::mkdirat(level.get(), name.c_str(), 0777), 0);
        level = FileDescriptor(::openat(level.get(), name.c_str(), O_PATH | O_DIRECTORY));
        for (int i = 0; i < levels; ++i) {
            ASSERT_EQ(::mkdirat(level.get(), "down", 0777), 0);
            ASSERT_EQ(::mkdirat(level.get(), "beside", 0777), 0);
            FileDescriptor(::openat(level.get(), "file", O_CREAT | O_WRONLY, 0666));
            level = FileDescriptor(::openat(level.get(), "down", O_PATH | O_DIRECTORY));
        }
    }

    /// Entries in and below a folder.
    std::size_t entriesBelow(const std::string& name) const {
        std::size_t count = 0;
        korvex::runtime::storage::listLocalTree(
            locationOf(name), [&](const auto&, auto&& entries) { count += entries.size(); });
        return count;
    }

    korvex::tests::ScratchFolder scratch_;
};

TEST_F(LocalTreesTest, DepthHasNoLimitAndHandlesStayFew) {
    constexpr int levels = 5000;
    const korvex::tests::FewOpenFiles few(400);
    makeComb("deep", levels);
    EXPECT_EQ(entriesBelow("deep"), std::size_t{3} * levels);

    folder("deep").copyFolder(folder("copy"), provider::ReplaceWritable);
    EXPECT_EQ(entriesBelow("copy"), std::size_t{3} * levels);
    folder("copy").moveFolder(folder("deep"), provider::ReplaceAny);
    EXPECT_FALSE(folder("copy").folderExists());
    EXPECT_EQ(entriesBelow("deep"), std::size_t{3} * levels);

    folder("deep").removeFolder(vfs::RemoveWithContents);
    EXPECT_FALSE(folder("deep").folderExists());
}

TEST_F(LocalTreesTest, KeptListingsOfADeepTreeStayUsableAndHandlesFew) {
    constexpr int levels = 1000;
    makeComb("deep", levels);
    const korvex::tests::FewOpenFiles few(200);
    std::vector<vfs::FolderListing<vfs::ListEntry>> listings;
    listings.push_back(folder("deep").listAll(u""));
    while (!listings.back().empty()) {
        const vfs::ListEntry down = *std::next(listings.back().begin());
        listings.push_back(boost::get<vfs::Folder>(down.getFileOrFolder()).listAll(u""));
    }
    ASSERT_EQ(listings.size(), std::size_t{levels} + 1);
    for (auto listing = listings.rbegin(); listing != listings.rend(); ++listing) {
        for (const vfs::ListEntry& entry : *listing) {
            const vfs::Item& item = entry.getFileOrFolder();
            if (const auto* const file = boost::get<vfs::File>(&item)) file->removeFile();
            if (const auto* const below = boost::get<vfs::Folder>(&item))
                below->removeFolder(vfs::RemoveEmptyFolder);
        }
    }
    EXPECT_EQ(entriesBelow("deep"), 0U);
}

TEST_F(LocalTreesTest, KeptListingOfAFolderThatWasSwappedFindsNothing) {
    constexpr int levels = 300;
    makeComb("deep", levels);
    scratch_.writeFile("guarded/file", "guarded");
    std::vector<vfs::FolderListing<vfs::ListEntry>> listings;
    listings.push_back(folder("deep").listAll(u""));
    while (!listings.back().empty()) {
        const vfs::ListEntry down = *std::next(listings.back().begin());
        listings.push_back(boost::get<vfs::Folder>(down.getFileOrFolder()).listAll(u""));
    }
    // Another folder, and then a link, in the place of one whose handle has long been given up.
    const std::filesystem::path swapped = scratch_.path() / "deep" / "down" / "down";
    for (const bool isLink : {false, true}) {
        std::filesystem::remove_all(swapped);
        if (isLink) {
            std::filesystem::create_directory_symlink(scratch_.path() / "guarded", swapped);
        } else {
            scratch_.writeFile("deep/down/down/file", "another");
        }
        const vfs::ListEntry file = *std::next(listings[2].begin(), 2);
        EXPECT_THROW(boost::get<vfs::File>(file.getFileOrFolder()).removeFile(), vfs::Exception);
        EXPECT_TRUE(std::filesystem::exists(swapped / "file"));
    }
}

TEST_F(LocalTreesTest, FolderOfVeryManyEntriesIsCopiedAndRemoved) {
    for (int i = 0; i < 5000; ++i) {
        scratch_.writeFile("flat/file" + std::to_string(i), std::to_string(i));
    }
    folder("flat").copyFolder(folder("copy"), provider::ReplaceWritable);
    EXPECT_EQ(entriesBelow("copy"), 5000U);
    std::string content;
    std::ifstream(scratch_.path() / "copy/file4711") >> content;
    EXPECT_EQ(content, "4711");
    folder("copy").removeFolder(vfs::RemoveWithContents);
    EXPECT_FALSE(folder("copy").folderExists());
}

TEST_F(LocalTreesTest, HolesStayHoles) {
    constexpr off_t size = off_t{256} << 20;
    const fs::path source = scratch_.writeFile("sparse", std::string(100'000, 'a'));
    ASSERT_EQ(::truncate(source.c_str(), size), 0);
    std::fstream(source, std::ios::in | std::ios::out | std::ios::binary).seekp(size / 2).write("middle", 6);

    file("sparse").copyFile(file("copy"), provider::ReplaceWritable);
    struct ::stat status {};
    ASSERT_EQ(::stat((scratch_.path() / "copy").c_str(), &status), 0);
    EXPECT_EQ(status.st_size, size);
    EXPECT_LT(status.st_blocks * 512, 2 << 20);
    std::ifstream copy(scratch_.path() / "copy", std::ios::binary);
    std::string middle(6, ' ');
    copy.seekg(size / 2).read(middle.data(), 6);
    EXPECT_EQ(middle, "middle");
    EXPECT_EQ(copy.seekg(99'999).get(), 'a');
    EXPECT_EQ(copy.get(), 0);
}

TEST_F(LocalTreesTest, SizesAroundEveryBufferAreCopiedWhole) {
    for (const std::size_t size : std::initializer_list<std::size_t>{0, 1, 4095, 131071, 131072, 131073,
                                                                     262143, 262144, 262145, 3000000}) {
        std::string content(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            content[i] = static_cast<char>(i * 31 % 251);
        scratch_.writeFile("source", content);
        file("source").copyFile(file("copy"), provider::ReplaceAny);
        std::ifstream copy(scratch_.path() / "copy", std::ios::binary);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(copy), {}), content) << size;
    }
}

TEST_F(LocalTreesTest, ModeTimesAndExtendedAttributesAreKept) {
    const fs::path source = scratch_.writeFile("tree/file", "x");
    ASSERT_EQ(::chmod(source.c_str(), 0467), 0);
    ASSERT_EQ(::chmod((scratch_.path() / "tree").c_str(), 01750), 0);
    const struct timespec times[2] = {{1, 2}, {1'000'000'000, 123'456'789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, source.c_str(), times, 0), 0);
    ASSERT_EQ(::utimensat(AT_FDCWD, (scratch_.path() / "tree").c_str(), times, 0), 0);
    const bool hasAttributes = ::setxattr(source.c_str(), "user.colour", "red", 3, 0) == 0;

    folder("tree").copyFolder(folder("copy"), provider::ReplaceWritable);
    for (const auto& [name, mode] : {std::pair{"copy/file", 0467U}, std::pair{"copy", 01750U}}) {
        struct ::stat status {};
        ASSERT_EQ(::stat((scratch_.path() / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, mode);
        EXPECT_EQ(status.st_mtim.tv_sec, 1'000'000'000);
        EXPECT_EQ(status.st_mtim.tv_nsec, 123'456'789);
    }
    char value[8] = {};
    const ssize_t length =
        ::getxattr((scratch_.path() / "copy/file").c_str(), "user.colour", value, sizeof value);
    EXPECT_EQ(std::string(value, length < 0 ? 0 : static_cast<std::size_t>(length)),
              hasAttributes ? "red" : "");
}

TEST_F(LocalTreesTest, TimeAndProtectionSurviveAVisitToOtherStorage) {
    const fs::path source = scratch_.writeFile("source", "x");
    ASSERT_EQ(::chmod(source.c_str(), 0444), 0);
    const struct timespec times[2] = {{1, 2}, {-5, 250'000'000}};  // before 1970
    ASSERT_EQ(::utimensat(AT_FDCWD, source.c_str(), times, 0), 0);
    const vfs::File between(vfs::AbsoluteIRI(u"memory://local-trees/file"), storage());

    file("source").copyFile(between, provider::ReplaceWritable);
    between.copyFile(file("copy"), provider::ReplaceWritable);
    struct ::stat status {};
    ASSERT_EQ(::stat((scratch_.path() / "copy").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0222, 0U);
    EXPECT_EQ(status.st_mtim.tv_sec, -5);
    EXPECT_EQ(status.st_mtim.tv_nsec, 250'000'000);
    between.removeFile();
}

TEST_F(LocalTreesTest, PipesAreCopiedAsPipesInsideOfAFolder) {
    scratch_.makeFolder("tree");
    ASSERT_EQ(::mkfifo((scratch_.path() / "tree/pipe").c_str(), 0640), 0);
    folder("tree").copyFolder(folder("copy"), provider::ReplaceWritable);
    EXPECT_TRUE(fs::is_fifo(scratch_.path() / "copy/pipe"));
    try {
        file("tree/pipe").copyFile(file("other"), provider::ReplaceWritable);
        FAIL() << "a pipe was read";
    } catch (const vfs::Exception& error) {
        EXPECT_EQ(error.getErrorCode(), vfs::unsupportedOperation);
    }
}

TEST_F(LocalTreesTest, FileSentOntoALinkReplacesWhatTheLinkLeadsTo) {
    scratch_.writeFile("source", "new");
    scratch_.writeFile("real", "old");
    fs::create_symlink("real", scratch_.path() / "link");
    file("source").copyFile(file("link"), provider::ReplaceWritable);
    EXPECT_TRUE(fs::is_symlink(scratch_.path() / "link"));
    std::string content;
    std::ifstream(scratch_.path() / "real") >> content;
    EXPECT_EQ(content, "new");
}

TEST_F(LocalTreesTest, FolderGoesIntoItsOwnSubtreeByNoSpelling) {
    scratch_.makeFolder("tree/inner");
    fs::create_directory_symlink("tree/inner", scratch_.path() / "link");
    for (const char* target : {"tree/inner/new", "tree/inner", "link/new", "tree", "tree/./inner/new"}) {
        for (const bool isCopy : {true, false}) {
            try {
                isCopy ? folder("tree").copyFolder(folder(target), provider::MergeFolder)
                       : folder("tree").moveFolder(folder(target), provider::MergeFolder);
                FAIL() << target;
            } catch (const vfs::Exception& error) {
                EXPECT_EQ(error.getErrorCode(), vfs::invalidLocation) << target;
            }
        }
    }
    EXPECT_EQ(entriesBelow("tree"), 1U);
}

TEST_F(LocalTreesTest, ListingTellsKindsSizesAndTimes) {
    scratch_.writeFile("tree/inner/file", "12345");
    fs::create_directory_symlink("inner", scratch_.path() / "tree/link");
    fs::create_symlink("nothing", scratch_.path() / "tree/broken");
    std::set<std::string> seen;
    korvex::runtime::storage::listLocalTree(
        locationOf("tree"), [&](const std::u16string& path, auto&& entries) {
            for (const korvex::runtime::storage::ListedTreeEntry& entry : entries) {
                seen.insert(std::string(path.begin(), path.end()) + "/" +
                            std::string(entry.name.begin(), entry.name.end()) +
                            (entry.isFolder ? " folder" : "") + (entry.isLink ? " link" : "") +
                            (entry.size ? " " + std::to_string(*entry.size) : " unknown") +
                            (entry.modified ? " time" : ""));
            }
        });
    EXPECT_EQ(seen, (std::set<std::string>{"/broken link unknown", "/inner folder 0 time",
                                           "/link folder link 0 time", "inner/file 5 time"}));
}

}  // namespace
