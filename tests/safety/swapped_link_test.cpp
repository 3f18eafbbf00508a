// Somebody keeps swapping a folder of the tree for a link to a guarded one, while the tree is removed, copied
// and moved: the guarded tree stays as it is.
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <thread>

#include "tests/safety/own_mounts.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

constexpr int usualRounds = 60;
constexpr int filesInFolder = 30;

class SwappedLinkTest : public testing::Test {
protected:
    SwappedLinkTest() {
        fs::create_directories(base_);
        fill(guarded_);
        fs::create_directory_symlink(guarded_, base_ / "link");
    }
    ~SwappedLinkTest() override {
        fs::remove_all(base_);
        fs::remove_all(otherDisk() / "swapped");
    }

    static void fill(const fs::path& folder) {
        fs::create_directories(folder / "below");
        for (int file = 0; file < filesInFolder; ++file) {
            writeContent(folder / ("file" + std::to_string(file)), "guarded");
            writeContent(folder / "below" / ("file" + std::to_string(file)), "guarded");
        }
    }

    bool isGuardedTreeWhole() const {
        for (int file = 0; file < filesInFolder; ++file) {
            if (contentOf(guarded_ / ("file" + std::to_string(file))) != "guarded") return false;
            if (contentOf(guarded_ / "below" / ("file" + std::to_string(file))) != "guarded") return false;
        }
        return std::distance(fs::directory_iterator(guarded_), {}) == filesInFolder + 1;
    }

    static bool isTree(const fs::path& folder) {
        for (int file = 0; file < filesInFolder; ++file) {
            if (contentOf(folder / "inner" / ("file" + std::to_string(file))) != "tree") return false;
        }
        return fs::is_directory(folder / "inner" / "below");
    }

    /// Does the work again and again while the folder and the link change places in one step; in every fourth
    /// round nobody swaps anything, and the work has to succeed. `isDone` looks at what it did.
    template <class Work, class Look>
    void whileSwapping(const Work& work, const Look& isDone) {
        std::atomic<bool> isOver{false};
        std::thread swapper([&] {
            while (!isOver.load()) {
                const std::lock_guard lock(swapping_);
                ::renameat2(-100, (tree_ / "inner").c_str(), -100, (base_ / "link").c_str(), RENAME_EXCHANGE);
            }
        });
        const int rounds = repetitions("KORVEX_SAFETY_ROUNDS", usualRounds);
        int successes = 0;
        for (int round = 0; round < rounds && !HasFailure(); ++round) {
            std::unique_lock<std::mutex> undisturbed(swapping_);
            makeTree();
            const bool isDisturbed = round % 4 != 0;
            if (isDisturbed) undisturbed.unlock();
            const int code = codeRaisedBy(work);
            // Under way, that it is noticed is as good as that it is done.
            successes += code == -1;
            if (!isDisturbed) {
                EXPECT_EQ(code, -1) << "in round " << round;
                EXPECT_TRUE(isDone()) << "in round " << round;
            }
            EXPECT_TRUE(isGuardedTreeWhole()) << "in round " << round;
        }
        isOver.store(true);
        swapper.join();
        EXPECT_GE(successes, rounds / 4);
    }

    /// Puts everything in its place; nobody swaps meanwhile, or this would write through the link itself.
    void makeTree() {
        std::error_code ignored;
        fs::remove_all(tree_, ignored);
        fs::remove_all(base_ / "copy", ignored);
        fs::remove_all(otherDisk() / "swapped", ignored);
        if (!fs::is_symlink(fs::symlink_status(base_ / "link", ignored))) {
            fs::remove_all(base_ / "link", ignored);
            fs::create_directory_symlink(guarded_, base_ / "link", ignored);
        }
        fs::create_directories(tree_ / "inner" / "below", ignored);
        for (int file = 0; file < filesInFolder; ++file) {
            writeContent(tree_ / "inner" / ("file" + std::to_string(file)), "tree");
        }
    }

    std::mutex swapping_;
    const fs::path base_ = workDisk() / "swapping";
    const fs::path guarded_ = workDisk() / "guarded";
    const fs::path tree_ = base_ / "tree";
};

TEST_F(SwappedLinkTest, RemovalNeverLeavesItsTree) {
    whileSwapping([&] { folderAt(tree_).removeFolder(vfs::RemoveWithContents); },
                  [&] { return !fs::exists(tree_); });
}

TEST_F(SwappedLinkTest, CopyNeverWritesOutsideOfItsTree) {
    whileSwapping(
        [&] {
            folderAt(tree_).copyFolder(folderAt(base_ / "copy"), provider::MergeFolder);
            folderAt(base_ / "copy").copyFolder(folderAt(tree_), provider::ReplaceAny);
        },
        [&] { return isTree(tree_) && isTree(base_ / "copy"); });
}

TEST_F(SwappedLinkTest, MoveNeverLeavesItsTree) {
    whileSwapping(
        [&] {
            folderAt(tree_).moveFolder(folderAt(otherDisk() / "swapped"), provider::MergeFolder);
            folderAt(otherDisk() / "swapped").moveFolder(folderAt(tree_), provider::ReplaceAny);
        },
        [&] { return isTree(tree_) && !fs::exists(otherDisk() / "swapped"); });
}

}  // namespace
}  // namespace korvex::tests
