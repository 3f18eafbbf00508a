// A new folder: its copy has its name when all of it is there, and what others do meanwhile is left to them.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>

#include "runtime/interpreter/interrupts.h"
#include "tests/safety/own_mounts.h"
#include "tests/safety/system_calls.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
namespace interpreter = korvex::runtime::interpreter;

class NewFolderTest : public testing::Test {
protected:
    NewFolderTest() {
        fs::create_directories(source_ / "inner");
        writeContent(source_ / "first", std::string(100'000, 'x'));
        writeContent(source_ / "inner" / "second", std::string(200'000, 'y'));
    }
    ~NewFolderTest() override {
        fs::remove_all(folder_);
        interpreter::takeInterrupt();
    }

    void copy(provider::ReplacementPolicy policy = provider::ReplaceWritable) const {
        folderAt(source_).copyFolder(folderAt(target_), policy);
    }
    static bool isWhole(const fs::path& tree) {
        return contentOf(tree / "first") == std::string(100'000, 'x') &&
               contentOf(tree / "inner" / "second") == std::string(200'000, 'y');
    }
    /// Beside the source, and what is told.
    void expectEntries(int others) const {
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1 + others);
    }

    const fs::path folder_ = workDisk() / "new-folder";
    const fs::path source_ = folder_ / "source";
    const fs::path target_ = folder_ / "target";
};

TEST_F(NewFolderTest, CopyHasItsNameOnlyWhenItIsWhole) {
    bool isSeen = true;
    WatchedCalls watched;
    watched.before(SystemCall::read, [&] { isSeen = fs::exists(target_); });
    copy();
    EXPECT_FALSE(isSeen);
    EXPECT_TRUE(isWhole(target_));
    expectEntries(1);
}

TEST_F(NewFolderTest, WhereAFolderCannotBeRenamedItIsFilledWhereItIs) {
    WatchedCalls watched;
    watched.fail(SystemCall::renameOntoNothing, EPERM);
    copy();
    EXPECT_TRUE(isWhole(target_));
    expectEntries(1);
}

TEST_F(NewFolderTest, WhatFailsLeavesTheWholeFilesThatItHasCopied) {
    writeContent(source_ / "inner" / "second", "");
    for (const bool isInterrupt : {false, true}) {
        WatchedCalls watched;
        watched.after(SystemCall::changeTimes, [&] {
            isInterrupt ? interpreter::raiseInterrupt() : watched.fail(SystemCall::changeTimes, EIO);
        });
        EXPECT_EQ(codeRaisedBy([&] { copy(); }), isInterrupt ? vfs::unknownError : vfs::ioError);
        EXPECT_TRUE(fs::is_directory(target_));
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(target_)) {
            if (!entry.is_regular_file()) continue;
            EXPECT_EQ(contentOf(entry), contentOf(source_ / fs::relative(entry, target_)));
        }
        expectEntries(1);
        fs::remove_all(target_);
        interpreter::takeInterrupt();
    }
}

TEST_F(NewFolderTest, FolderThatSomebodyMakesMeanwhileStaysTheirs) {
    WatchedCalls watched;
    watched.before(SystemCall::read, [&] {
        fs::create_directory(target_);
        writeContent(target_ / "first", "theirs");
    });
    fs::path where;
    EXPECT_EQ(codeRaisedBy([&] { copy(); }, &where), vfs::resourceAlreadyExists);
    EXPECT_EQ(where, target_);
    EXPECT_EQ(contentOf(target_ / "first"), "theirs");
    EXPECT_FALSE(fs::exists(target_ / "inner"));
    expectEntries(1);
}

TEST_F(NewFolderTest, FolderThatSomebodyMakesMeanwhileTakesTheCopyInAsThePolicyAllows) {
    for (const auto policy : {provider::MergeFolder, provider::ReplaceAny}) {
        for (const bool isProtected : {false, true}) {
            {
                WatchedCalls watched;
                watched.before(SystemCall::read, [&] {
                    fs::create_directory(target_);
                    writeContent(target_ / "first", "theirs");
                    writeContent(target_ / "other", "kept");
                    if (isProtected) ::chmod((target_ / "first").c_str(), 0444);
                });
                const bool isRefused = isProtected && policy == provider::MergeFolder;
                EXPECT_EQ(codeRaisedBy([&] { copy(policy); }), isRefused ? int{vfs::permissionDenied} : -1);
                EXPECT_EQ(contentOf(target_ / "first") == "theirs", isRefused);
                EXPECT_EQ(isWhole(target_), !isRefused);
            }
            EXPECT_EQ(contentOf(target_ / "other"), "kept");
            expectEntries(1);
            fs::remove_all(target_);
        }
    }
}

TEST_F(NewFolderTest, LinkThatSomebodyPutsThereMeanwhileIsNotFollowed) {
    fs::create_directory(folder_ / "guarded");
    WatchedCalls watched;
    watched.before(SystemCall::read, [&] { fs::create_directory_symlink("guarded", target_); });
    EXPECT_EQ(codeRaisedBy([&] { copy(provider::ReplaceAny); }), vfs::resourceAlreadyExists);
    EXPECT_TRUE(fs::is_symlink(target_));
    EXPECT_TRUE(fs::is_empty(folder_ / "guarded"));
    expectEntries(2);
}

TEST_F(NewFolderTest, WhatFailsTakesNothingFromAFolderThatSomebodyMadeMeanwhile) {
    WatchedCalls watched;
    watched.before(SystemCall::changeTimes, [&] {
        fs::create_directory(target_);
        writeContent(target_ / "theirs", "theirs");
        watched.fail(SystemCall::changeTimes, EIO);
    });
    EXPECT_EQ(codeRaisedBy([&] { copy(); }), vfs::ioError);
    EXPECT_EQ(contentOf(target_ / "theirs"), "theirs");
    EXPECT_EQ(std::distance(fs::directory_iterator(target_), {}), 1);
    expectEntries(1);
}

TEST_F(NewFolderTest, FoldersOfOthersOnThePathAreNotTouchedWhenALinkIsSwapped) {
    fs::create_directories(folder_ / "ours");
    fs::create_directories(folder_ / "theirs" / "target");
    writeContent(folder_ / "theirs" / "target" / "precious", "theirs");
    fs::create_directory_symlink("ours", folder_ / "way");
    for (const SystemCall moment :
         {SystemCall::makeFolder, SystemCall::read, SystemCall::renameOntoNothing}) {
        WatchedCalls watched;
        watched.after(moment, [&] {
            fs::remove(folder_ / "way");
            fs::create_directory_symlink("theirs", folder_ / "way");
        });
        folderAt(source_).copyFolder(folderAt(folder_ / "way" / "target"), provider::ReplaceWritable);
        EXPECT_TRUE(isWhole(folder_ / "ours" / "target"));
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "ours"), {}), 1);
        EXPECT_EQ(contentOf(folder_ / "theirs" / "target" / "precious"), "theirs");
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "theirs" / "target"), {}), 1);
        fs::remove_all(folder_ / "ours" / "target");
        fs::remove(folder_ / "way");
        fs::create_directory_symlink("ours", folder_ / "way");
    }
}

TEST_F(NewFolderTest, FolderAboveIsRenamedMeanwhileAndTheCopyGoesWithIt) {
    fs::create_directories(folder_ / "above");
    WatchedCalls watched;
    watched.before(SystemCall::read, [&] { fs::rename(folder_ / "above", folder_ / "renamed"); });
    folderAt(source_).copyFolder(folderAt(folder_ / "above" / "target"), provider::ReplaceWritable);
    EXPECT_TRUE(isWhole(folder_ / "renamed" / "target"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "renamed"), {}), 1);
    expectEntries(1);
}

TEST_F(NewFolderTest, InterruptBehindTheLastFileLeavesAWholeCopy) {
    WatchedCalls watched;
    watched.before(SystemCall::renameOntoNothing, interpreter::raiseInterrupt);
    copy();
    EXPECT_TRUE(interpreter::takeInterrupt());
    EXPECT_TRUE(isWhole(target_));
    expectEntries(1);
}

TEST_F(NewFolderTest, FileThatFailsIsRemovedAlsoWhereItsLikesAreKnown) {
    for (int file = 0; file < 8; ++file)
        writeContent(source_ / ("file" + std::to_string(file)), std::string(50'000, 'z'));
    WatchedCalls watched;
    // Behind the first few, what a new file is like is no longer asked.
    int reads = 0;
    std::function<void()> countDown = [&] {
        if (++reads == 6) return watched.fail(SystemCall::read, EIO);
        watched.before(SystemCall::read, countDown);
    };
    watched.before(SystemCall::read, countDown);
    EXPECT_EQ(codeRaisedBy([&] { copy(); }), vfs::ioError);
    int copies = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(target_)) {
        if (!entry.is_regular_file()) continue;
        EXPECT_EQ(contentOf(entry), contentOf(source_ / fs::relative(entry, target_)));
        ++copies;
    }
    EXPECT_GT(copies, 0);
    EXPECT_LT(copies, 10);
}

TEST_F(NewFolderTest, GroupThatTheFolderAboveHandsOnReachesEveryEntry) {
    fs::create_directory(folder_ / "shared");
    // Where the process may not give a group away, it hands on its own one.
    [[maybe_unused]] const int result = ::chown((folder_ / "shared").c_str(), static_cast<uid_t>(-1), 1);
    ASSERT_EQ(::chmod((folder_ / "shared").c_str(), 02775), 0);
    struct ::stat above {};
    ASSERT_EQ(::stat((folder_ / "shared").c_str(), &above), 0);
    folderAt(source_).copyFolder(folderAt(folder_ / "shared" / "copy"), provider::ReplaceWritable);
    for (const char* entry : {"", "first", "inner", "inner/second"}) {
        struct ::stat status {};
        ASSERT_EQ(::stat((folder_ / "shared" / "copy" / entry).c_str(), &status), 0);
        EXPECT_EQ(status.st_gid, above.st_gid) << entry;
    }
}

TEST_F(NewFolderTest, EveryEntryHasTheBitsOfItsSourceWhateverTheMaskIs) {
    const std::map<std::string, mode_t> files = {{"a", 0666},  {"b", 0644}, {"c", 0640},  {"d", 0600},
                                                 {"e", 0444},  {"f", 0777}, {"g", 04755}, {"h", 02711},
                                                 {"i", 01644}, {"j", 0666}, {"k", 0464},  {"l", 0004}};
    for (const auto& [name, bits] : files) {
        writeContent(source_ / name, name);
        ASSERT_EQ(::chmod((source_ / name).c_str(), bits), 0);
        fs::create_directory(source_ / ("folder" + name));
        ASSERT_EQ(::chmod((source_ / ("folder" + name)).c_str(), bits), 0);
    }
    for (const mode_t mask : {0U, 022U, 027U, 077U}) {
        const mode_t earlier = ::umask(mask);
        copy();
        ::umask(earlier);
        for (const auto& [name, bits] : files) {
            for (const std::string& entry : {name, "folder" + name}) {
                struct ::stat status {};
                ASSERT_EQ(::stat((target_ / entry).c_str(), &status), 0);
                EXPECT_EQ(status.st_mode & 07777U, bits) << entry << " under " << mask;
            }
        }
        fs::remove_all(target_);
    }
}

}  // namespace
}  // namespace korvex::tests
