// What the move of a tree takes from its source: what was copied, as it was copied, and nothing else.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <functional>
#include <utility>

#include "runtime/interpreter/interrupts.h"
#include "runtime/process/posix/file_descriptor.h"
#include "runtime/storage/providers/local/tree_listing.h"
#include "tests/safety/own_mounts.h"
#include "tests/safety/system_calls.h"
#include "tests/support/posix/ordinary_user.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
using runtime::process::FileDescriptor;

std::ptrdiff_t entriesIn(const fs::path& folder) { return std::distance(fs::directory_iterator(folder), {}); }

/// Other bytes in the same file, which has the same size and time of last change afterwards.
void rewriteInPlace(const fs::path& file, const std::string& content) {
    struct ::stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    ASSERT_EQ(static_cast<std::size_t>(status.st_size), content.size());
    std::fstream(file, std::ios::in | std::ios::out | std::ios::binary) << content;
    const struct timespec times[2] = {{0, UTIME_OMIT}, status.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
}

class MovedTreeTest : public testing::Test {
protected:
    MovedTreeTest() { makeSource(); }
    ~MovedTreeTest() override {
        fs::remove_all(source_);
        for (const fs::directory_entry& entry : fs::directory_iterator(otherDisk()))
            fs::remove_all(entry);
    }

    void makeSource() const {
        fs::create_directories(source_ / "inner");
        writeContent(source_ / "file", "content");
        writeContent(source_ / "inner" / "file", "content");
        fs::create_symlink("file", source_ / "link");
    }
    int move(fs::path* where = nullptr) const {
        return codeRaisedBy([&] { folderAt(source_).moveFolder(folderAt(target_), provider::MergeFolder); },
                            where);
    }
    /// Moves to another disk, onto nothing and into a folder that exists, while `change` happens to what has
    /// been copied; expects that the move names that place of the source and leaves it there.
    void expectStays(const fs::path& place, const std::function<void()>& change) const {
        for (const bool isMerge : {false, true}) {
            fs::remove_all(source_);
            fs::remove_all(target_);
            makeSource();
            if (isMerge) fs::create_directory(target_);
            WatchedCalls watched;
            watched.before(SystemCall::syncFileSystem, change);
            fs::path where;
            EXPECT_EQ(move(&where), vfs::resourceInUse);
            EXPECT_EQ(where, place);
            EXPECT_TRUE(fs::exists(fs::symlink_status(place)));
        }
    }

    const fs::path source_ = workDisk() / "moved-tree";
    const fs::path target_ = otherDisk() / "target";
};

TEST_F(MovedTreeTest, FileThatIsRewrittenAfterItWasCopiedStays) {
    const fs::path file = source_ / "inner" / "file";
    expectStays(file, [&] { rewriteInPlace(file, "CONTENT"); });
    EXPECT_EQ(contentOf(file), "CONTENT");
}

TEST_F(MovedTreeTest, LinkThatLeadsElsewhereAfterItWasCopiedStays) {
    const fs::path link = source_ / "link";
    expectStays(link, [&] {
        struct ::stat status {};
        ASSERT_EQ(::lstat(link.c_str(), &status), 0);
        fs::remove(link);
        fs::create_symlink("FILE", link);
        const struct timespec times[2] = {{0, UTIME_OMIT}, status.st_mtim};
        ASSERT_EQ(::utimensat(AT_FDCWD, link.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
    });
    EXPECT_EQ(fs::read_symlink(link), "FILE");
}

TEST_F(MovedTreeTest, FileThatWasNeverCopiedStaysWhateverStandsAtTheDestination) {
    const fs::path late = source_ / "late";
    expectStays(late, [&] {
        writeContent(late, "late");
        if (fs::exists(target_)) writeContent(target_ / "late", "late");
    });
    EXPECT_EQ(contentOf(late), "late");
}

TEST_F(MovedTreeTest, EmptyFolderThatComesMeanwhileStays) {
    expectStays(source_ / "late", [&] { fs::create_directory(source_ / "late"); });
}

TEST_F(MovedTreeTest, WhatComesWhileTheRestGoesIsNamed) {
    WatchedCalls watched;
    watched.before(SystemCall::syncFileSystem, [&] {
        watched.before(SystemCall::remove, [&] { writeContent(source_ / "inner" / "late", "late"); });
    });
    fs::path where;
    EXPECT_EQ(move(&where), vfs::resourceInUse);
    EXPECT_EQ(where, source_ / "inner" / "late");
    EXPECT_EQ(contentOf(where), "late");
}

TEST_F(MovedTreeTest, WhatGoesByItselfIsNotMissed) {
    for (const bool isMerge : {false, true}) {
        fs::remove_all(target_);
        if (isMerge) makeSource(), fs::create_directory(target_);
        WatchedCalls watched;
        // Somebody else is faster with everything that this move is about to remove.
        watched.before(SystemCall::remove, [&] {
            fs::remove(source_ / "file");
            fs::remove(source_ / "link");
            fs::remove(source_ / "inner" / "file");
            fs::remove(source_ / "inner");
        });
        EXPECT_EQ(move(), -1);
        EXPECT_FALSE(fs::exists(source_));
        EXPECT_EQ(contentOf(target_ / "inner" / "file"), "content");
    }
}

TEST_F(MovedTreeTest, FileWithSeveralNamesGoesUnderAllOfThem) {
    fs::create_hard_link(source_ / "file", source_ / "name");
    fs::create_hard_link(source_ / "file", source_ / "inner" / "name");
    EXPECT_EQ(move(), -1);
    EXPECT_FALSE(fs::exists(source_));
    for (const fs::path& name : {target_ / "file", target_ / "name", target_ / "inner" / "name"})
        EXPECT_EQ(contentOf(name), "content");
}

TEST_F(MovedTreeTest, LinkInPlaceOfACopiedFolderLeadsNobodyAstray) {
    const fs::path guarded = workDisk() / "guarded-tree";
    fs::create_directories(guarded);
    writeContent(guarded / "file", "guarded");
    expectStays(source_ / "inner", [&] {
        fs::remove_all(source_ / "inner");
        fs::create_directory_symlink(guarded, source_ / "inner");
    });
    EXPECT_EQ(contentOf(guarded / "file"), "guarded");
    fs::remove_all(guarded);
}

TEST_F(MovedTreeTest, LinkInPlaceOfANewFolderIsNotFollowed) {
    const fs::path guarded = workDisk() / "guarded-tree";
    fs::create_directories(guarded);
    WatchedCalls watched;
    watched.after(SystemCall::makeFolder, [&] {
        fs::remove(target_);
        fs::create_directory_symlink(guarded, target_);
    });
    EXPECT_EQ(
        codeRaisedBy([&] { folderAt(source_).copyFolder(folderAt(target_), provider::ReplaceWritable); }),
        vfs::resourceAlreadyExists);
    EXPECT_EQ(entriesIn(guarded), 0);
    fs::remove_all(guarded);
}

TEST_F(MovedTreeTest, WhatComesLateIntoAMergedFolderIsMovedToo) {
    const fs::path target = workDisk() / "merged-into";
    fs::create_directories(target / "inner");
    {
        WatchedCalls watched;
        watched.before(SystemCall::remove, [&] { writeContent(source_ / "late", "late"); });
        folderAt(source_).moveFolder(folderAt(target), provider::MergeFolder);
    }
    EXPECT_FALSE(fs::exists(source_));
    EXPECT_EQ(contentOf(target / "late"), "late");
    fs::remove_all(target);
}

TEST_F(MovedTreeTest, MergeWhoseDestinationGoesSaysSo) {
    const fs::path target = workDisk() / "merged-into";
    fs::create_directories(target);
    fs::remove_all(source_ / "inner");
    fs::remove(source_ / "link");
    WatchedCalls watched;
    watched.before(SystemCall::renameOntoNothing, [&] { fs::remove(target); });
    fs::path where;
    EXPECT_EQ(
        codeRaisedBy([&] { folderAt(source_).moveFolder(folderAt(target), provider::MergeFolder); }, &where),
        vfs::resourceNotFound);
    EXPECT_EQ(where, target / "file");
    EXPECT_EQ(contentOf(source_ / "file"), "content");
}

TEST_F(MovedTreeTest, FileThatGoesByItselfDoesNotStopAMerge) {
    const fs::path target = workDisk() / "merged-into";
    fs::create_directories(target);
    fs::remove_all(source_ / "inner");
    fs::remove(source_ / "link");
    {
        WatchedCalls watched;
        watched.before(SystemCall::renameOntoNothing, [&] { fs::remove(source_ / "file"); });
        folderAt(source_).moveFolder(folderAt(target), provider::MergeFolder);
    }
    EXPECT_FALSE(fs::exists(source_));
    EXPECT_EQ(entriesIn(target), 0);
    fs::remove_all(target);
}

TEST_F(MovedTreeTest, DepthHasNoLimitBetweenDisks) {
    constexpr int levels = 5000;
    FileDescriptor level(::open(source_.c_str(), O_PATH | O_DIRECTORY));
    for (int i = 0; i < levels; ++i) {
        ASSERT_EQ(::mkdirat(level.get(), "down", 0777), 0);
        level = FileDescriptor(::openat(level.get(), "down", O_PATH | O_DIRECTORY));
        FileDescriptor(::openat(level.get(), "file", O_CREAT | O_WRONLY, 0666));
    }
    EXPECT_EQ(move(), -1);
    EXPECT_FALSE(fs::exists(source_));
    std::size_t entries = 0;
    runtime::storage::listLocalTree(folderAt(target_).getLocation(),
                                    [&](const auto&, auto&& found) { entries += found.size(); });
    EXPECT_EQ(entries, 2 * std::size_t{levels} + 4);
    folderAt(target_).removeFolder(vfs::RemoveWithContents);
}

TEST_F(MovedTreeTest, MoveThatFailsTakesItsCopyBackOutOfProtectedFolders) {
    fs::permissions(workDisk().parent_path(), fs::perms(0711));
    fs::permissions(otherDisk(), fs::perms(0777));
    const fs::path home = workDisk() / "home";
    fs::create_directory(home);
    fs::permissions(home, fs::perms(0777));
    const fs::path tree = home / "tree";
    {
        const OrdinaryUser user;
        fs::create_directories(tree / "protected" / "closed");
        writeContent(tree / "protected" / "file", "content");
        writeContent(tree / "protected" / "closed" / "file", "content");
        fs::permissions(tree / "protected" / "closed", fs::perms(0500));
        fs::permissions(tree / "protected", fs::perms(0555));
        WatchedCalls watched;
        watched.fail(SystemCall::syncFileSystem, EIO);
        EXPECT_EQ(
            codeRaisedBy([&] { folderAt(tree).moveFolder(folderAt(target_), provider::ReplaceWritable); }),
            vfs::ioError);
        EXPECT_EQ(contentOf(tree / "protected" / "closed" / "file"), "content");
        EXPECT_EQ(entriesIn(otherDisk()), 0);
    }
    fs::permissions(tree / "protected", fs::perms(0755));
    fs::remove_all(home);
}

/// Folders alone: nothing in them is ever copied or removed by itself.
class FoldersOnlyTest : public testing::Test {
protected:
    FoldersOnlyTest() {
        for (const fs::path& top : {source_, sameDisk_})
            for (int number = 0; number < folders; ++number)
                fs::create_directories(top / std::to_string(number));
    }
    ~FoldersOnlyTest() override {
        for (const fs::path& top : {source_, sameDisk_, target_})
            fs::remove_all(top);
    }

    template <class Work>
    static void expectInterrupted(SystemCall moment, const Work& work) {
        int code = -1;
        {
            WatchedCalls watched;
            watched.before(moment, [] { runtime::interpreter::raiseInterrupt(); });
            code = codeRaisedBy(work);
        }
        runtime::interpreter::takeInterrupt();
        EXPECT_EQ(code, vfs::unknownError);
    }

    static constexpr int folders = 1000;
    const fs::path source_ = workDisk() / "folders";
    const fs::path sameDisk_ = workDisk() / "more-folders";
    const fs::path target_ = otherDisk() / "folders";
};

TEST_F(FoldersOnlyTest, CopyIsInterrupted) {
    expectInterrupted(SystemCall::makeFolder,
                      [&] { folderAt(source_).copyFolder(folderAt(target_), provider::ReplaceWritable); });
    EXPECT_LT(entriesIn(target_), folders);
}

TEST_F(FoldersOnlyTest, RemovalIsInterrupted) {
    expectInterrupted(SystemCall::remove, [&] { folderAt(source_).removeFolder(vfs::RemoveWithContents); });
    EXPECT_GT(entriesIn(source_), 0);
}

TEST_F(FoldersOnlyTest, MergeIsInterrupted) {
    expectInterrupted(SystemCall::remove,
                      [&] { folderAt(source_).moveFolder(folderAt(sameDisk_), provider::MergeFolder); });
    EXPECT_GT(entriesIn(source_), 0);
}

TEST_F(FoldersOnlyTest, EndOfAMoveToAnotherDiskIsInterruptedAndNothingIsLost) {
    expectInterrupted(SystemCall::remove,
                      [&] { folderAt(source_).moveFolder(folderAt(target_), provider::ReplaceWritable); });
    EXPECT_GT(entriesIn(source_), 0);
    EXPECT_EQ(entriesIn(target_), folders);
}

TEST_F(FoldersOnlyTest, FoldersOfACopyThatWasStoppedHaveTheirBits) {
    ASSERT_EQ(::chmod(source_.c_str(), 0550), 0);
    expectInterrupted(SystemCall::makeFolder,
                      [&] { folderAt(source_).copyFolder(folderAt(target_), provider::ReplaceWritable); });
    struct ::stat status {};
    ASSERT_EQ(::stat(target_.c_str(), &status), 0);
    // And its owner may go on with it.
    EXPECT_EQ(status.st_mode & 07777, 0750U);
    folderAt(source_).copyFolder(folderAt(target_), provider::MergeFolder);
    EXPECT_EQ(entriesIn(target_), folders);
}

TEST_F(MovedTreeTest, LinkIsNotReplacedByOneWhoseWayLeadsThroughIt) {
    const fs::path into = source_ / "into";
    fs::create_directories(into / "real");
    writeContent(into / "real" / "file", "content");
    fs::create_directory_symlink("real", into / "link");
    fs::create_directory(source_ / "from");
    for (const auto& [target, isMove] : {std::pair("../into/link/file", false),
                                         {"../into/link/file", true},
                                         {"../into/way/file", false},
                                         {"../into/way/file", true}}) {
        fs::remove(source_ / "from" / "link");
        fs::remove(into / "way");
        fs::create_directory_symlink("link", into / "way");
        fs::create_symlink(target, source_ / "from" / "link");
        const auto merge = [&] {
            const vfs::Folder from = folderAt(source_ / "from");
            isMove ? from.moveFolder(folderAt(into), provider::ReplaceAny)
                   : from.copyFolder(folderAt(into), provider::ReplaceAny);
        };
        EXPECT_EQ(codeRaisedBy(merge), vfs::resourceAlreadyExists);
        EXPECT_EQ(fs::read_symlink(into / "link"), "real");
        EXPECT_EQ(contentOf(source_ / "from" / "link"), "content");
    }
}

TEST_F(MovedTreeTest, FolderThatALinkOnTheWayLeadsToByNowIsLeftAlone) {
    const fs::path theirs = source_ / "theirs" / "into";
    fs::create_directories(theirs);
    writeContent(theirs / "file", "theirs");
    fs::create_directories(source_ / "into");
    fs::create_directories(source_ / "store" / "into");
    // What is moved takes the place of a link on its own way.
    fs::create_directory_symlink("../store", source_ / "into" / "way");
    fs::create_directory_symlink(source_ / "theirs", source_ / "store" / "into" / "way");
    const vfs::Folder moved = folderAt(source_ / "into" / "way" / "into");
    EXPECT_EQ(codeRaisedBy([&] { moved.moveFolder(folderAt(source_ / "into"), provider::MergeFolder); }),
              vfs::resourceInUse);
    EXPECT_EQ(contentOf(theirs / "file"), "theirs");
    EXPECT_EQ(fs::read_symlink(source_ / "into" / "way"), source_ / "theirs");
    EXPECT_EQ(entriesIn(source_ / "store" / "into"), 0);
}

}  // namespace
}  // namespace korvex::tests
