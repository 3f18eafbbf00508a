// A process is killed at random moments in the middle of transfers: what stands at the destination is whole.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <functional>
#include <iostream>
#include <random>

#include "tests/safety/own_mounts.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace provider = foundation::storage::provider;

constexpr std::size_t fileSize = 3 << 20;
constexpr int usualKills = 20;

std::string patterned(char first) {
    std::string content(fileSize, first);
    for (std::size_t i = 0; i < content.size(); i += 4096) {
        content[i] = static_cast<char>('a' + i / 4096 % 26);
    }
    return content;
}

/// Runs the work in a process of its own, for ever, and kills it after a random time.
void runAndKill(std::mt19937& random, const std::function<void(int round)>& work) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        try {
            for (int round = 0;; ++round) {
                work(round);
            }
        } catch (const std::exception& error) {
            std::cerr << error.what() << std::endl;
            ::_exit(3);
        }
    }
    // The moment of the kill is what is random here; nothing waits for anything.
    const struct timespec moment { 0, std::uniform_int_distribution<long>(0, 12'000'000)(random) };
    ::nanosleep(&moment, nullptr);
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the work failed by itself";
}

TEST(KillTest, FileThatIsCopiedOverIsTheOldOrTheNewOne) {
    const fs::path folder = workDisk() / "copy-over";
    fs::create_directories(folder);
    const std::string contents[2] = {patterned('0'), patterned('1')};
    writeContent(folder / "source0", contents[0]);
    writeContent(folder / "source1", contents[1]);
    writeContent(folder / "target", contents[0]);

    std::mt19937 random(1);
    const int kills = repetitions("KORVEX_SAFETY_KILLS", usualKills);
    int seen[2] = {0, 0};
    for (int kill = 0; kill < kills; ++kill) {
        runAndKill(random, [&](int round) {
            const fs::path source = folder / (round % 2 == 0 ? "source1" : "source0");
            fileAt(source).copyFile(fileAt(folder / "target"), provider::ReplaceAny);
        });
        const std::string found = contentOf(folder / "target");
        ASSERT_TRUE(found == contents[0] || found == contents[1])
            << "half a file of " << found.size() << " bytes";
        ++seen[found == contents[1]];
        ASSERT_EQ(contentOf(folder / "source0"), contents[0]);
        ASSERT_EQ(contentOf(folder / "source1"), contents[1]);
    }
    EXPECT_EQ(seen[0] + seen[1], kills);
    fs::remove_all(folder);
}

TEST(KillTest, FileThatMovesBetweenDisksIsWholeAtOneOfThem) {
    const fs::path ends[2] = {workDisk() / "moving", otherDisk() / "moving"};
    const std::string content = patterned('m');
    std::mt19937 random(2);
    for (int kill = repetitions("KORVEX_SAFETY_KILLS", usualKills); kill > 0; --kill) {
        fs::remove(ends[1]);
        writeContent(ends[0], content);
        runAndKill(random, [&](int round) {
            fileAt(ends[round % 2]).moveFile(fileAt(ends[1 - round % 2]), provider::ReplaceWritable);
        });
        const bool isThere[2] = {fs::exists(ends[0]), fs::exists(ends[1])};
        ASSERT_TRUE(isThere[0] || isThere[1]) << "lost";
        for (int end = 0; end < 2; ++end) {
            ASSERT_TRUE(!isThere[end] || contentOf(ends[end]) == content) << "half a file at " << ends[end];
        }
    }
    for (const fs::path& end : ends) {
        fs::remove(end);
    }
}

TEST(KillTest, FolderThatMovesBetweenDisksIsWholeAtOneOfThem) {
    const fs::path ends[2] = {workDisk() / "folder", otherDisk() / "folder"};
    const std::string content = patterned('f').substr(0, 64 << 10);
    constexpr int files = 40;
    const auto isWhole = [&](const fs::path& folder) {
        for (int file = 0; file < files; ++file) {
            if (contentOf(folder / ("inner" + std::to_string(file % 4)) / std::to_string(file)) != content)
                return false;
        }
        return true;
    };
    std::mt19937 random(3);
    for (int kill = repetitions("KORVEX_SAFETY_KILLS", usualKills); kill > 0; --kill) {
        for (const fs::path& end : ends) {
            fs::remove_all(end);
        }
        for (int file = 0; file < files; ++file) {
            const fs::path inner = ends[0] / ("inner" + std::to_string(file % 4));
            fs::create_directories(inner);
            writeContent(inner / std::to_string(file), content);
        }
        runAndKill(random, [&](int round) {
            folderAt(ends[round % 2]).moveFolder(folderAt(ends[1 - round % 2]), provider::MergeFolder);
        });
        // A source that is being removed may be in part, but then its copy is whole.
        const bool first = fs::exists(ends[0]) && isWhole(ends[0]);
        const bool second = fs::exists(ends[1]) && isWhole(ends[1]);
        ASSERT_TRUE(first || second) << "no whole tree is left";
    }
    for (const fs::path& end : ends) {
        fs::remove_all(end);
    }
}

}  // namespace
}  // namespace korvex::tests
