// Several names of one file, and several spellings of one name: nothing that is sent onto itself is lost.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <utility>

#include "tests/safety/own_mounts.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace provider = foundation::storage::provider;

constexpr provider::ReplacementPolicy policies[] = {provider::ReplaceWritable, provider::ReplaceAny,
                                                    provider::MergeFolder};

ino_t inodeOf(const fs::path& path) {
    struct ::stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_ino;
}

/// A folder that is found at another place too.
class SecondMount {
public:
    SecondMount(const fs::path& folder, fs::path place) : place_(std::move(place)) {
        EXPECT_EQ(::mount(folder.c_str(), place_.c_str(), nullptr, MS_BIND, nullptr), 0);
    }
    ~SecondMount() { ::umount2(place_.c_str(), MNT_DETACH); }
    SecondMount(const SecondMount&) = delete;
    SecondMount& operator=(const SecondMount&) = delete;

private:
    const fs::path place_;
};

class SameFileTest : public testing::Test {
protected:
    SameFileTest() {
        fs::create_directories(folder_);
        writeContent(file_, "content");
        fs::create_hard_link(file_, otherName_);
        fs::create_directory_symlink(folder_, base_ / "link");
    }
    ~SameFileTest() override { fs::remove_all(base_); }

    void expectBothNames() const {
        EXPECT_EQ(contentOf(file_), "content");
        EXPECT_EQ(contentOf(otherName_), "content");
        EXPECT_EQ(inodeOf(file_), inodeOf(otherName_));
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 2);
    }

    const fs::path base_ = workDisk() / "same";
    const fs::path folder_ = base_ / "folder";
    const fs::path file_ = folder_ / "file";
    const fs::path otherName_ = folder_ / "name";
};

TEST_F(SameFileTest, MoveOntoItselfByAnySpellingKeepsItsName) {
    for (const auto policy : policies) {
        for (const fs::path& spelling :
             {file_, base_ / "link" / "file", folder_ / ".." / "folder" / "file"}) {
            fileAt(file_).moveFile(fileAt(spelling), policy);
            expectBothNames();
            fileAt(spelling).moveFile(fileAt(file_), policy);
            expectBothNames();
        }
    }
}

TEST_F(SameFileTest, MoveOntoItselfThroughASecondMountKeepsItsName) {
    const fs::path mounted = base_ / "mounted";
    fs::create_directory(mounted);
    const SecondMount mount(folder_, mounted);
    fileAt(file_).moveFile(fileAt(mounted / "file"), provider::ReplaceAny);
    expectBothNames();
    fileAt(file_).moveFile(fileAt(mounted / "name"), provider::ReplaceAny);
    EXPECT_FALSE(fs::exists(file_));
    EXPECT_EQ(contentOf(otherName_), "content");
}

TEST_F(SameFileTest, MoveOntoAnotherNameInAnotherFolderTakesTheFirstNameAway) {
    const fs::path elsewhere = base_ / "elsewhere";
    fs::create_directory(elsewhere);
    fs::create_hard_link(file_, elsewhere / "file");
    fileAt(file_).moveFile(fileAt(elsewhere / "file"), provider::ReplaceWritable);
    EXPECT_FALSE(fs::exists(file_));
    EXPECT_EQ(contentOf(elsewhere / "file"), "content");
    EXPECT_EQ(contentOf(otherName_), "content");
}

TEST_F(SameFileTest, CopyOntoAnyOfItsNamesChangesNothing) {
    fs::create_symlink("name", folder_ / "link");
    for (const auto policy : policies) {
        for (const fs::path& name : {file_, otherName_, base_ / "link" / "name", folder_ / "link"})
            fileAt(file_).copyFile(fileAt(name), policy);
    }
    EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
    fs::remove(folder_ / "link");
    expectBothNames();
}

TEST_F(SameFileTest, CopyOfAFolderOntoOneWithTheSameFilesChangesNothing) {
    const fs::path copy = base_ / "copy";
    fs::create_directory(copy);
    fs::create_hard_link(file_, copy / "file");
    folderAt(folder_).copyFolder(folderAt(copy), provider::MergeFolder);
    EXPECT_EQ(inodeOf(copy / "file"), inodeOf(file_));
    EXPECT_EQ(contentOf(copy / "name"), "content");
}

}  // namespace
}  // namespace korvex::tests
