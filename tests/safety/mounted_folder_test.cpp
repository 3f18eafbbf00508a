// Folders that are mounted inside a tree, or in two places: removing and moving leave them alone, and find no
// way round through them.
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <functional>

#include "tests/safety/own_mounts.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

/// Shows a folder in a second place for as long as it lives.
class SecondPlace {
public:
    SecondPlace(const fs::path& folder, const fs::path& place) : place_(place) {
        fs::create_directories(place);
        EXPECT_EQ(::mount(folder.c_str(), place.c_str(), nullptr, MS_BIND, nullptr), 0);
    }
    ~SecondPlace() { ::umount2(place_.c_str(), MNT_DETACH); }
    SecondPlace(const SecondPlace&) = delete;
    SecondPlace& operator=(const SecondPlace&) = delete;

private:
    const fs::path place_;
};

class MountedFolderTest : public testing::Test {
protected:
    MountedFolderTest() {
        fs::create_directories(tree_ / "sub");
        fs::create_directories(guarded_);
        fs::create_directories(other_);
        writeContent(guarded_ / "file", "guarded");
    }
    ~MountedFolderTest() override {
        for (const fs::path& folder : {tree_, guarded_, other_})
            fs::remove_all(folder);
    }
    void expectGuarded() const { EXPECT_EQ(contentOf(guarded_ / "file"), "guarded"); }

    const fs::path tree_ = workDisk() / "tree";
    const fs::path guarded_ = workDisk() / "guarded";
    const fs::path other_ = otherDisk() / "other";
};

TEST_F(MountedFolderTest, RemovalStopsBeforeWhatIsMountedInTheTree) {
    for (const fs::path& mounted : {guarded_, other_}) {
        writeContent(mounted / "file", "guarded");
        const SecondPlace place(mounted, tree_ / "sub" / "mounted");
        fs::path where;
        EXPECT_EQ(codeRaisedBy([&] { folderAt(tree_).removeFolder(vfs::RemoveWithContents); }, &where),
                  vfs::resourceInUse);
        EXPECT_EQ(where, tree_ / "sub" / "mounted");
        EXPECT_EQ(contentOf(mounted / "file"), "guarded");
    }
}

TEST_F(MountedFolderTest, EntriesThatAreListedInItStay) {
    fs::create_directories(guarded_ / "below");
    const SecondPlace place(guarded_, tree_ / "sub" / "mounted");
    const auto sub = folderAt(tree_).listAll(u"sub");
    const auto mounted = boost::get<vfs::Folder>(sub.begin()->getFileOrFolder()).listAll(u"");
    for (const vfs::ListEntry& entry :
         boost::get<vfs::Folder>(mounted.begin()->getFileOrFolder()).listAll(u"")) {
        const vfs::Item& item = entry.getFileOrFolder();
        const auto remove = [&] {
            if (const auto* const file = boost::get<vfs::File>(&item)) return file->removeFile();
            boost::get<vfs::Folder>(item).removeFolder(vfs::RemoveEmptyFolder);
        };
        EXPECT_EQ(codeRaisedBy(remove), vfs::resourceInUse);
    }
    expectGuarded();
    EXPECT_TRUE(fs::exists(guarded_ / "below"));
}

TEST_F(MountedFolderTest, FolderThatWasNamedItselfIsEmptied) {
    const SecondPlace place(guarded_, tree_ / "mounted");
    for (const vfs::ListEntry& entry : folderAt(tree_ / "mounted").listAll(u""))
        boost::get<vfs::File>(entry.getFileOrFolder()).removeFile();
    EXPECT_TRUE(fs::is_empty(guarded_));
}

TEST_F(MountedFolderTest, MoveBetweenDisksOntoItselfLosesNothing) {
    fs::create_directories(other_ / "tree" / "sub");
    for (const bool isSourceMounted : {true, false}) {
        const fs::path real = (isSourceMounted ? other_ / "tree" : tree_) / "sub";
        writeContent(real / "only", "the only copy");
        const SecondPlace place(real, (isSourceMounted ? tree_ : other_ / "tree") / "sub");
        EXPECT_EQ(codeRaisedBy(
                      [&] { folderAt(tree_).moveFolder(folderAt(other_ / "tree"), provider::ReplaceAny); }),
                  vfs::resourceInUse);
        EXPECT_EQ(contentOf(real / "only"), "the only copy");
    }
}

TEST_F(MountedFolderTest, MergeOnOneDiskLeavesWhatIsMountedInTheSource) {
    fs::create_directories(workDisk() / "target" / "sub");
    const SecondPlace place(guarded_, tree_ / "sub");
    EXPECT_EQ(codeRaisedBy(
                  [&] { folderAt(tree_).moveFolder(folderAt(workDisk() / "target"), provider::ReplaceAny); }),
              vfs::resourceInUse);
    expectGuarded();
    EXPECT_TRUE(fs::is_empty(workDisk() / "target" / "sub"));
    fs::remove_all(workDisk() / "target");
}

TEST_F(MountedFolderTest, FileThatIsMountedStopsAMoveBeforeAnythingIsRemoved) {
    fs::create_directories(other_ / "tree");
    for (const fs::path& real : {guarded_ / "file", other_ / "tree" / "file"}) {
        writeContent(real, "the only copy");
        writeContent(tree_ / "file", "");
        ASSERT_EQ(::mount(real.c_str(), (tree_ / "file").c_str(), nullptr, MS_BIND, nullptr), 0);
        EXPECT_EQ(codeRaisedBy(
                      [&] { folderAt(tree_).moveFolder(folderAt(other_ / "tree"), provider::ReplaceAny); }),
                  vfs::resourceInUse);
        ::umount2((tree_ / "file").c_str(), MNT_DETACH);
        EXPECT_EQ(contentOf(real), "the only copy");
        EXPECT_TRUE(fs::exists(tree_ / "sub"));
    }
}

TEST_F(MountedFolderTest, FolderThatIsMountedIsNotEmptiedByAMerge) {
    fs::create_directories(workDisk() / "target");
    const SecondPlace place(guarded_, tree_ / "mounted");
    EXPECT_EQ(
        codeRaisedBy([&] {
            folderAt(tree_ / "mounted").moveFolder(folderAt(workDisk() / "target"), provider::ReplaceAny);
        }),
        vfs::resourceInUse);
    expectGuarded();
    EXPECT_TRUE(fs::is_empty(workDisk() / "target"));
    fs::remove_all(workDisk() / "target");
}

TEST_F(MountedFolderTest, NothingGoesIntoItsOwnSubtreeByAnotherPlace) {
    fs::create_directories(tree_ / "sub" / "tree");
    writeContent(tree_ / "file", "content");
    const fs::path alias = workDisk() / "alias";
    {
        const SecondPlace place(tree_, alias);
        const auto refusalOf = [&](auto transfer, const fs::path& target) {
            return codeRaisedBy([&] { (folderAt(tree_).*transfer)(folderAt(target), provider::ReplaceAny); });
        };
        for (const fs::path& target : {alias / "sub" / "tree", alias / "new", alias / "new" / "below"}) {
            EXPECT_EQ(refusalOf(&vfs::Folder::moveFolder, target), vfs::invalidLocation);
            EXPECT_EQ(refusalOf(&vfs::Folder::copyFolder, target), vfs::invalidLocation);
        }
    }
    EXPECT_EQ(contentOf(tree_ / "file"), "content");
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(tree_), {}), 3);
    fs::remove(alias);
}

}  // namespace
}  // namespace korvex::tests
