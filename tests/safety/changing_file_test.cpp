// Files that change while they are copied: they grow, shrink, and go.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
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

TEST_F(ChangingFileTest, FileWithHolesThatGrowsAndShrinksIsCopiedAsFarAsItGoes) {
    constexpr off_t sizes[] = {0, 5'000, 40'000'000, 90'000'000};
    writeContent(source_, std::string(5'000, 's'));
    std::size_t next = 0;
    const auto change = [&] {
        const off_t size = sizes[++next % std::size(sizes)];
        ::truncate(source_.c_str(), size);
        if (size > 5'000) std::fstream(source_).seekp(size / 2).write("data", 4);
    };
    whileChanging(change, [&] {
        fileAt(source_).copyFile(fileAt(target_), provider::ReplaceAny);
        EXPECT_LE(fs::file_size(target_), 90'000'000U);
    });
    ::truncate(source_.c_str(), 90'000'000);
    fileAt(source_).copyFile(fileAt(target_), provider::ReplaceAny);
    EXPECT_EQ(contentOf(target_), contentOf(source_));
}

/// Of a file that only grows a copy is what it was at some moment: the same bytes as far as they go, no
/// others.
class GrowingFileTest : public ChangingFileTest {
protected:
    static constexpr std::size_t most = 3'000'000;
    static constexpr std::size_t piece = 7'919;

    /// Appends with a hole of `hole` bytes in front of each piece; a new file takes the place of a large one.
    void copyWhileAppending(off_t hole) {
        writeContent(source_, "");
        off_t size = 0;
        std::atomic<int> appended{0};
        const auto append = [&] {
            if (size > static_cast<off_t>(most)) {
                writeContent(folder_ / "next", "");
                fs::rename(folder_ / "next", source_);
                size = 0;
            }
            std::fstream(source_, std::ios::in | std::ios::out | std::ios::binary).seekp(size + hole)
                << std::string(piece, 'a');
            size += hole + static_cast<off_t>(piece);
            ++appended;
        };
        whileChanging(append, [&] {
            for (const int seen = appended.load(); appended.load() == seen;)
                std::this_thread::yield();
            fileAt(source_).copyFile(fileAt(target_), provider::ReplaceAny);
            expectPrefix(static_cast<std::size_t>(hole));
        });
    }

    void expectPrefix(std::size_t hole) const {
        const std::string copied = contentOf(target_);
        std::string expected;
        while (expected.size() < copied.size())
            expected.append(hole, '\0').append(piece, 'a');
        expected.resize(copied.size());
        // Without the contents, which are megabytes.
        EXPECT_TRUE(copied == expected) << copied.size() << " bytes";
    }
};

TEST_F(GrowingFileTest, CopyOfAFileThatIsAppendedToIsABeginningOfIt) { copyWhileAppending(0); }

TEST_F(GrowingFileTest, CopyOfAFileWithHolesThatIsAppendedToIsABeginningOfIt) {
    copyWhileAppending(64 << 10);
}

TEST_F(ChangingFileTest, MovedFileThatIsWrittenToIsNeverLost) {
    const fs::path moved = otherDisk() / "moved";
    const std::string content(300'000, 'm');
    // Somebody who replaces the file as a whole wherever it still is.
    const auto change = [&] {
        writeContent(folder_ / "next", content);
        std::error_code ignored;
        if (fs::exists(source_)) fs::rename(folder_ / "next", source_, ignored);
    };
    writeContent(source_, content);
    whileChanging(change, [&] {
        const int code = codeRaisedBy([&] { fileAt(source_).moveFile(fileAt(moved), provider::ReplaceAny); });
        EXPECT_TRUE(code == -1 || code == vfs::resourceInUse) << code;
        EXPECT_EQ(contentOf(moved), content);
        if (!fs::exists(source_)) writeContent(source_, content);
    });
    fs::remove(moved);
}

TEST_F(ChangingFileTest, TreeThatTwoRemoveAtATimeIsGone) {
    const fs::path tree = folder_ / "tree";
    for (int round = repetitions("KORVEX_SAFETY_ROUNDS", usualRounds); round > 0; --round) {
        for (int file = 0; file < 300; ++file) {
            const fs::path inner = tree / std::to_string(file % 7) / std::to_string(file % 3);
            fs::create_directories(inner);
            writeContent(inner / std::to_string(file), "x");
        }
        int codes[2] = {};
        const auto remove = [&](int& code) {
            code = codeRaisedBy([&] { folderAt(tree).removeFolder(vfs::RemoveWithContents); });
        };
        std::thread other([&] { remove(codes[1]); });
        remove(codes[0]);
        other.join();
        EXPECT_FALSE(fs::exists(tree));
        EXPECT_TRUE(codes[0] == -1 || codes[1] == -1);
        for (const int code : codes) {
            EXPECT_TRUE(code == -1 || code == vfs::resourceNotFound) << code;
        }
    }
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
