// Files that change while they are copied: they grow, shrink, and go.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>

#include "tests/safety/own_mounts.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

constexpr int usualRounds = 60;

/// Does the work again and again while somebody changes things.
void whileChanging(const std::function<void()>& change, const std::function<void()>& work) {
    std::atomic<bool> isOver{false};
    std::thread changer([&] {
        while (!isOver.load())
            change();
    });
    for (int round = repetitions("KORVEX_SAFETY_ROUNDS", usualRounds); round > 0; --round) {
        work();
    }
    isOver.store(true);
    changer.join();
}

class ChangingFileTest : public testing::Test {
protected:
    ChangingFileTest() { fs::create_directories(folder_); }
    ~ChangingFileTest() override { fs::remove_all(folder_); }

    const fs::path folder_ = workDisk() / "changing";
    const fs::path source_ = folder_ / "source";
    const fs::path target_ = folder_ / "target";
};

TEST_F(ChangingFileTest, FileThatGrowsAndShrinksIsCopiedAsFarAsItGoes) {
    constexpr off_t sizes[] = {0, 5'000, 300'000, 3'000'000};
    writeContent(source_, std::string(3'000'000, 's'));
    std::size_t next = 0;
    whileChanging([&] { ::truncate(source_.c_str(), sizes[++next % std::size(sizes)]); },
                  [&] {
                      fileAt(source_).copyFile(fileAt(target_), provider::ReplaceAny);
                      EXPECT_LE(fs::file_size(target_), 3'000'000U);
                  });
}

TEST_F(ChangingFileTest, FileThatComesAndGoesIsCopiedWholeOrNotFound) {
    const std::string content(100'000, 'c');
    const fs::path hidden = folder_ / "hidden";
    writeContent(source_, content);

    whileChanging([&] { fs::rename(source_, hidden), fs::rename(hidden, source_); },
                  [&] {
                      const int code = codeRaisedBy(
                          [&] { fileAt(source_).copyFile(fileAt(target_), provider::ReplaceAny); });
                      EXPECT_TRUE(code == -1 || code == vfs::resourceNotFound) << code;
                      EXPECT_TRUE(!fs::exists(target_) || contentOf(target_) == content);
                  });
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), fs::exists(target_) ? 2 : 1);
}

TEST_F(ChangingFileTest, FolderThatIsFilledWhileItIsRemovedGoesOrSaysThatItIsNotEmpty) {
    const fs::path tree = folder_ / "tree";
    int number = 0;
    whileChanging(
        [&] {
            std::error_code ignored;
            fs::create_directory(tree / ("folder" + std::to_string(++number % 7)), ignored);
            writeContent(tree / ("file" + std::to_string(number % 7)), "x");
        },
        [&] {
            std::error_code ignored;
            fs::create_directories(tree / "inner" / "below", ignored);
            const int code = codeRaisedBy([&] { folderAt(tree).removeFolder(vfs::RemoveWithContents); });
            EXPECT_TRUE(code == -1 || code == vfs::folderNotEmpty) << code;
        });
}

}  // namespace
}  // namespace korvex::tests
