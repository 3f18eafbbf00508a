// A process is killed at random moments in the middle of transfers and removals: what stands at the
// destination is whole, nothing is lost, and what was begun can be finished.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <iostream>
#include <new>
#include <random>
#include <vector>

#include "tests/safety/own_mounts.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

constexpr std::size_t fileSize = 3 << 20;
constexpr int usualKills = 20;
constexpr int filesInTree = 40;

std::string patterned(char first, std::size_t size = fileSize) {
    std::string content(size, first);
    for (std::size_t i = 0; i < content.size(); i += 4096) {
        content[i] = static_cast<char>('a' + i / 4096 % 26);
    }
    return content;
}

/// Whether a storage operation is under way in the process that is killed, seen from the one that kills it.
class Window {
public:
    Window()
        : page_(::mmap(nullptr, sizeof(std::atomic<bool>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                       -1, 0)),
          isUnderWay_(*new (page_) std::atomic<bool>(false)) {}
    ~Window() { ::munmap(page_, sizeof(std::atomic<bool>)); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    std::atomic<bool>& isUnderWay() { return isUnderWay_; }

private:
    void* const page_;
    std::atomic<bool>& isUnderWay_;
};

class KillTest : public testing::Test {
protected:
    KillTest() {
        for (const fs::path& folder : {work_, other_})
            fs::create_directories(folder);
    }
    ~KillTest() override {
        for (const fs::path& folder : {work_, other_})
            fs::remove_all(folder);
    }

    /// Kills a process that does the work for ever, again and again, and looks each time at what is there.
    /// Some of the kills have to meet an operation.
    void killOften(const std::function<void(int round)>& work, const std::function<void()>& look) {
        const int kills = repetitions("KORVEX_SAFETY_KILLS", usualKills);
        for (int kill = 0; kill < kills && !HasFatalFailure(); ++kill) {
            // Every other one early in the first operation, where it has made least.
            runAndKill(work, kill % 2 == 0 ? 1'000'000 : 12'000'000);
            look();
        }
        EXPECT_GT(killsUnderWay_, 0) << "every kill came when nothing was going on";
    }

    /// One operation of the storage layer, in the process that is killed.
    template <class Operation>
    void underWay(const Operation& operation) {
        window_.isUnderWay().store(true);
        operation();
        window_.isUnderWay().store(false);
    }

    /// Takes away what an operation could not take back; gives how much that was.
    static int removeLeftovers(const fs::path& folder) {
        std::vector<fs::path> found;
        for (fs::recursive_directory_iterator entry(folder), end; entry != end; ++entry) {
            const std::string name = entry->path().filename();
            if (!name.starts_with(".korvex-") || !name.ends_with(".part")) continue;
            found.push_back(entry->path());
            entry.disable_recursion_pending();
        }
        for (const fs::path& path : found)
            fs::remove_all(path);
        return static_cast<int>(found.size());
    }

    static fs::path fileIn(const fs::path& tree, int number) {
        return tree / ("inner" + std::to_string(number % 4)) / std::to_string(number);
    }
    void makeTree(const fs::path& tree) const {
        for (int file = 0; file < filesInTree; ++file) {
            fs::create_directories(fileIn(tree, file).parent_path());
            writeContent(fileIn(tree, file), smallContent_);
        }
    }
    bool isTreeWhole(const fs::path& tree) const {
        for (int file = 0; file < filesInTree; ++file) {
            if (contentOf(fileIn(tree, file)) != smallContent_) return false;
        }
        return true;
    }
    /// Whatever is there of it is whole.
    void expectWholeFilesIn(const fs::path& tree) const {
        for (int file = 0; file < filesInTree; ++file) {
            const fs::path path = fileIn(tree, file);
            ASSERT_TRUE(!fs::exists(path) || contentOf(path) == smallContent_) << "half a file at " << path;
        }
    }

    const fs::path work_ = workDisk() / "kills";
    const fs::path other_ = otherDisk() / "kills";
    /// Too large to be written with one call, so that its name stands for all of it or for nothing.
    const std::string smallContent_ = patterned('f', 200 << 10);
    /// Whether the last kill met an operation.
    bool wasUnderWay_ = false;

private:
    void runAndKill(const std::function<void(int round)>& work, long mostNanoseconds) {
        window_.isUnderWay().store(false);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) workForEver(work);
        int status = 0;
        while (!window_.isUnderWay().load())
            ASSERT_EQ(::waitpid(child, &status, WNOHANG), 0) << "the work failed by itself";
        // The moment of the kill is what is random here; nothing waits for anything.
        const struct timespec moment { 0, std::uniform_int_distribution<long>(0, mostNanoseconds)(random_) };
        ::nanosleep(&moment, nullptr);
        ::kill(child, SIGKILL);
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the work failed by itself";
        wasUnderWay_ = window_.isUnderWay().load();
        killsUnderWay_ += wasUnderWay_;
    }

    [[noreturn]] static void workForEver(const std::function<void(int round)>& work) {
        try {
            for (int round = 0;; ++round)
                work(round);
        } catch (const std::exception& error) {
            std::cerr << error.what() << std::endl;
            ::_exit(3);
        }
    }

    std::mt19937 random_{1};
    Window window_;
    int killsUnderWay_ = 0;
};

TEST_F(KillTest, FileThatIsCopiedOverIsTheOldOrTheNewOne) {
    const std::string contents[2] = {patterned('0'), patterned('1')};
    writeContent(work_ / "source0", contents[0]);
    writeContent(work_ / "source1", contents[1]);
    writeContent(work_ / "target", contents[0]);
    killOften(
        [&](int round) {
            const fs::path source = work_ / (round % 2 == 0 ? "source1" : "source0");
            underWay([&] { fileAt(source).copyFile(fileAt(work_ / "target"), provider::ReplaceAny); });
        },
        [&] {
            const std::string found = contentOf(work_ / "target");
            ASSERT_TRUE(found == contents[0] || found == contents[1])
                << "half a file of " << found.size() << " bytes";
            ASSERT_EQ(contentOf(work_ / "source0"), contents[0]);
            ASSERT_EQ(contentOf(work_ / "source1"), contents[1]);
            EXPECT_LE(removeLeftovers(work_), 1);
        });
}

TEST_F(KillTest, NewFileIsWholeOrNotThere) {
    const std::string content = patterned('n');
    writeContent(work_ / "source", content);
    killOften(
        [&](int) {
            fs::remove(work_ / "target");
            underWay([&] {
                fileAt(work_ / "source").copyFile(fileAt(work_ / "target"), provider::ReplaceWritable);
            });
        },
        [&] {
            ASSERT_TRUE(!fs::exists(work_ / "target") || contentOf(work_ / "target") == content)
                << "half a file of " << fs::file_size(work_ / "target") << " bytes";
            EXPECT_LE(removeLeftovers(work_), 1);
        });
}

TEST_F(KillTest, FileFromOtherStorageIsWholeOrNotThere) {
    const std::string content = patterned('s');
    writeContent(work_ / "source", content);
    const vfs::File stored(vfs::AbsoluteIRI(u"memory://kills/file"),
                           Velquist::KorvexStorageSystem::GetStorageSystemReference());
    fileAt(work_ / "source").copyFile(stored, provider::ReplaceAny);
    killOften(
        [&](int) {
            fs::remove(work_ / "target");
            underWay([&] { stored.copyFile(fileAt(work_ / "target"), provider::ReplaceWritable); });
        },
        [&] {
            ASSERT_TRUE(!fs::exists(work_ / "target") || contentOf(work_ / "target") == content);
            EXPECT_LE(removeLeftovers(work_), 1);
        });
    stored.removeFile();
}

TEST_F(KillTest, FileThatMovesBetweenDisksIsWholeAtOneOfThem) {
    const fs::path ends[2] = {work_ / "file", other_ / "file"};
    const std::string content = patterned('m');
    writeContent(ends[0], content);
    killOften(
        [&](int round) {
            underWay([&] {
                fileAt(ends[round % 2]).moveFile(fileAt(ends[1 - round % 2]), provider::ReplaceWritable);
            });
        },
        [&] {
            const bool isThere[2] = {fs::exists(ends[0]), fs::exists(ends[1])};
            ASSERT_TRUE(isThere[0] || isThere[1]) << "lost";
            for (int end = 0; end < 2; ++end) {
                ASSERT_TRUE(!isThere[end] || contentOf(ends[end]) == content)
                    << "half a file at " << ends[end];
            }
            EXPECT_LE(removeLeftovers(work_) + removeLeftovers(other_), 1);
            fs::remove(ends[1]);
            writeContent(ends[0], content);
        });
}

TEST_F(KillTest, CopyOfAFolderIsWholeOrNotThereAndCanBeFinished) {
    makeTree(work_ / "tree");
    const auto copy = [&] {
        folderAt(work_ / "tree").copyFolder(folderAt(work_ / "copy"), provider::MergeFolder);
    };
    killOften(
        [&](int round) {
            if (round > 0) fs::remove_all(work_ / "copy");
            underWay(copy);
        },
        [&] {
            expectWholeFilesIn(work_ / "copy");
            // Outside of the operation it was being removed.
            EXPECT_TRUE(!wasUnderWay_ || !fs::exists(work_ / "copy") || isTreeWhole(work_ / "copy"));
            ASSERT_TRUE(isTreeWhole(work_ / "tree"));
            removeLeftovers(work_);
            copy();
            EXPECT_TRUE(isTreeWhole(work_ / "copy"));
            fs::remove_all(work_ / "copy");
        });
}

TEST_F(KillTest, RemovalOfAFolderCanBeFinishedAndTakesNothingElse) {
    makeTree(work_ / "kept");
    killOften(
        [&](int) {
            makeTree(work_ / "tree");
            fs::remove(work_ / "tree" / "link");
            fs::create_directory_symlink(work_ / "kept", work_ / "tree" / "link");
            underWay([&] { folderAt(work_ / "tree").removeFolder(vfs::RemoveWithContents); });
        },
        [&] {
            ASSERT_TRUE(isTreeWhole(work_ / "kept"));
            if (fs::exists(work_ / "tree")) folderAt(work_ / "tree").removeFolder(vfs::RemoveWithContents);
            EXPECT_FALSE(fs::exists(work_ / "tree"));
        });
}

TEST_F(KillTest, FolderThatMovesBetweenDisksIsWholeAtOneOfThem) {
    const fs::path ends[2] = {work_ / "folder", other_ / "folder"};
    makeTree(ends[0]);
    killOften(
        [&](int round) {
            underWay([&] {
                folderAt(ends[round % 2]).moveFolder(folderAt(ends[1 - round % 2]), provider::MergeFolder);
            });
        },
        [&] {
            // A source that is being removed may be in part, but then its copy is whole.
            ASSERT_TRUE(isTreeWhole(ends[0]) || isTreeWhole(ends[1])) << "no whole tree is left";
            EXPECT_LE(removeLeftovers(work_) + removeLeftovers(other_), 1);
            for (const fs::path& end : ends)
                fs::remove_all(end);
            makeTree(ends[0]);
        });
}

TEST_F(KillTest, MergingMoveLosesNothingAndCanBeFinished) {
    for (const fs::path& target : {work_ / "target", other_ / "target"}) {
        const fs::path source = work_ / "tree";
        makeTree(source);
        killOften(
            [&](int) {
                makeTree(source);
                for (int inner = 0; inner < 4; ++inner)
                    fs::create_directories(fileIn(target, inner).parent_path());
                underWay([&] { folderAt(source).moveFolder(folderAt(target), provider::MergeFolder); });
            },
            [&] {
                expectWholeFilesIn(target);
                for (int file = 0; wasUnderWay_ && file < filesInTree; ++file) {
                    ASSERT_TRUE(contentOf(fileIn(source, file)) == smallContent_ ||
                                contentOf(fileIn(target, file)) == smallContent_)
                        << "lost: " << file;
                }
                removeLeftovers(work_);
                removeLeftovers(other_);
                // Otherwise the tree was just in the making.
                if (!wasUnderWay_) makeTree(source);
                fs::create_directories(source);
                fs::create_directories(target);
                folderAt(source).moveFolder(folderAt(target), provider::MergeFolder);
                EXPECT_TRUE(isTreeWhole(target));
                EXPECT_FALSE(fs::exists(source));
                fs::remove_all(target);
            });
    }
}

}  // namespace
}  // namespace korvex::tests
