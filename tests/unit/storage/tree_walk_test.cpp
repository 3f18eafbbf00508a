// What a walk through a tree holds at a time, and that it comes by everything.
#include "runtime/storage/providers/local/posix/tree_walk.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "tests/support/scratch_folder.h"

namespace korvex::runtime::storage::posix {
namespace {

/// Counts what it is shown.
class Counting : public TreeVisitor {
public:
    bool hasDestination() const override { return false; }
    bool enter(TreeFolder& folder) override {
        ++entered;
        return !folder.parent() || tree->open(folder, sourceSide) == 0;
    }
    void visit(TreeFolder&, const FolderTree::Handle (&)[2], const WalkedEntry&) override { ++visited; }
    bool leave(TreeFolder&) override {
        ++left;
        return true;
    }

    FolderTree* tree = nullptr;
    std::atomic<std::size_t> entered{0};
    std::atomic<std::size_t> visited{0};
    std::atomic<std::size_t> left{0};
};

TEST(TreeWalkTest, HoldsTheFoldersOnItsWayAndNotAllThatWait) {
    constexpr std::size_t workers = 4;
    constexpr std::size_t wide = 300;
    const tests::ScratchFolder scratch;
    for (std::size_t number = 0; number < wide; ++number) {
        scratch.makeFolder("top/folder" + std::to_string(number) + "/one");
        scratch.makeFolder("top/folder" + std::to_string(number) + "/two");
    }
    scratch.writeFile("top/folder0/one/file");

    Counting counting;
    TreeWalk walk(counting, workers);
    counting.tree = &walk.tree();
    const auto top = std::make_shared<TreeFolder>(walk.tree(), nullptr, std::string());
    const std::string path = (scratch.path() / "top").string();
    ASSERT_EQ(walk.tree().adopt(*top, sourceSide,
                                FileDescriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))),
              0);
    walk.run(top);
    EXPECT_EQ(counting.entered, 1 + 3 * wide);
    EXPECT_EQ(counting.left, 1 + 3 * wide);
    EXPECT_EQ(counting.visited, 1U);
    // Two levels below the top, and on each of them what every worker is about.
    EXPECT_LE(walk.tree().mostFolders(), 1 + 2 * 2 * workers);
}

}  // namespace
}  // namespace korvex::runtime::storage::posix
