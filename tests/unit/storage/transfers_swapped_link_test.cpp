// Transfers between the local disk and another storage, while somebody puts links in the place of folders:
// what the links lead to stays as it is.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdio.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <mutex>
#include <string>

#include "platform/path_management.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "tests/support/posix/few_open_files.h"
#include "tests/support/posix/ordinary_user.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/storage/memory_boxes.h"

namespace korvex::runtime::storage {
namespace {

namespace fs = std::filesystem;
using ::testing::Pair;

/// Storage in memory that lets something happen on the way.
class Accompanied : public MemoryProvider {
public:
    std::unique_ptr<InputStream> read(const AbsoluteIRI& file) override {
        if (whenRead && file.getName() == awaited) std::exchange(whenRead, nullptr)();
        return MemoryProvider::read(file);
    }
    std::unique_ptr<OutputStream> write(const AbsoluteIRI& file, ReplacementPolicy policy) override {
        if (whenWritten && file.getName() == awaited) std::exchange(whenWritten, nullptr)();
        return MemoryProvider::write(file, policy);
    }
    void makeDurable(const AbsoluteIRI&) override {
        if (whenAllIsCopied) whenAllIsCopied();
    }

    /// The name of the file that the first two are about.
    std::u16string awaited;
    std::function<void()> whenRead;
    std::function<void()> whenWritten;
    std::function<void()> whenAllIsCopied;
};

class TransfersWithDisk : public ::testing::Test {
protected:
    AbsoluteIRI onDisk(const std::string& path) const {
        return Velquist::PathManagement::GetIRIFromString((scratch_.path() / path).u16string());
    }
    std::string textOf(const std::string& path) const {
        return text::toDisplayBytes(onDisk(path).toString());
    }
    ServedLocation disk(const std::string& path) { return {disk_, onDisk(path)}; }
    ServedLocation memory(const std::u16string& path) { return {memory_, MemoryBox::at(path)}; }

    void put(const std::string& path, const std::string& content = "content") const {
        scratch_.writeFile(path, content);
    }
    std::string contentOf(const std::string& path) const {
        std::ifstream stream(scratch_.path() / path, std::ios::binary);
        return stream ? std::string(std::istreambuf_iterator<char>(stream), {}) : "nothing";
    }
    std::string contentInMemory(const std::u16string& path) {
        const auto stream = memory_.read(MemoryBox::at(path));
        std::array<char, 100> buffer{};
        return {buffer.data(), stream->read(std::as_writable_bytes(std::span(buffer)))};
    }
    long entriesIn(const std::string& path) const {
        return std::distance(fs::directory_iterator(scratch_.path() / path), {});
    }
    void link(const std::string& target, const std::string& path) const {
        fs::create_directory_symlink(scratch_.path() / target, scratch_.path() / path);
    }
    /// Takes a folder or file away and puts a link in its place.
    void swap(const std::string& path, const std::string& takenTo, const std::string& target) const {
        fs::rename(scratch_.path() / path, scratch_.path() / takenTo);
        link(target, path);
    }

    tests::ScratchFolder scratch_;
    LocalProvider disk_;
    Accompanied memory_;
};

TEST_F(TransfersWithDisk, AMoveRemovesNothingBehindALinkThatCameInPlaceOfAFolder) {
    put("source/sub/file");
    memory_.whenAllIsCopied = [&] { swap("source/sub", "elsewhere", "elsewhere"); };
    EXPECT_THAT(
        errorOf([&] { moveFolderBetween(disk("source"), memory(u"moved"), provider::ReplaceWritable); }),
        Pair(vfs::resourceInUse, textOf("source/sub")));
    EXPECT_EQ(contentOf("elsewhere/file"), "content");
    EXPECT_TRUE(fs::is_symlink(scratch_.path() / "source/sub"));
    EXPECT_EQ(contentInMemory(u"moved/sub/file"), "content");
}

TEST_F(TransfersWithDisk, AMoveRemovesNothingBehindALinkInPlaceOfTheWholeSource) {
    put("source/file");
    memory_.whenAllIsCopied = [&] { swap("source", "elsewhere", "elsewhere"); };
    EXPECT_THAT(
        errorOf([&] { moveFolderBetween(disk("source"), memory(u"moved"), provider::ReplaceWritable); }),
        Pair(vfs::resourceInUse, textOf("source")));
    EXPECT_EQ(contentOf("elsewhere/file"), "content");
    EXPECT_TRUE(fs::is_symlink(scratch_.path() / "source"));
}

TEST_F(TransfersWithDisk, AMoveLeavesALinkThatCameInPlaceOfAFile) {
    put("source/file");
    put("single");
    memory_.whenAllIsCopied = [&] { swap("source/file", "taken", "taken"); };
    EXPECT_THAT(
        errorOf([&] { moveFolderBetween(disk("source"), memory(u"moved"), provider::ReplaceWritable); }),
        Pair(vfs::resourceInUse, textOf("source/file")));
    EXPECT_TRUE(fs::is_symlink(scratch_.path() / "source/file"));

    memory_.whenAllIsCopied = [&] { swap("single", "takenToo", "takenToo"); };
    EXPECT_THAT(
        errorOf([&] { moveFileBetween(disk("single"), memory(u"single"), provider::ReplaceWritable); }),
        Pair(vfs::resourceInUse, textOf("single")));
    EXPECT_TRUE(fs::is_symlink(scratch_.path() / "single"));
    EXPECT_EQ(contentOf("takenToo"), "content");
}

TEST_F(TransfersWithDisk, WhatWentFromAMovedFolderMeanwhileNeedNotBeRemoved) {
    put("source/a/inner/file");
    put("source/b");
    put("source/c");
    memory_.whenAllIsCopied = [&] {
        fs::remove_all(scratch_.path() / "source/a");
        fs::remove(scratch_.path() / "source/b");
    };
    moveFolderBetween(disk("source"), memory(u"moved"), provider::ReplaceWritable);
    EXPECT_FALSE(fs::exists(scratch_.path() / "source"));
    EXPECT_EQ(contentInMemory(u"moved/a/inner/file"), "content");
}

TEST_F(TransfersWithDisk, AFolderIsCopiedFromWhereItWasListed) {
    put("source/sub/a");
    put("source/sub/b");
    put("elsewhere/b", "guarded");
    memory_.awaited = u"a";
    memory_.whenWritten = [&] { swap("source/sub", "taken", "elsewhere"); };
    copyFolderBetween(disk("source"), memory(u"copy"), provider::ReplaceWritable);
    EXPECT_EQ(contentInMemory(u"copy/sub/b"), "content");
}

TEST_F(TransfersWithDisk, AMergeDoesNotGoThroughALinkThatStandsInTheDestination) {
    memory_.putFile(MemoryBox::at(u"source/sub/file"), "new");
    put("elsewhere/file", "guarded");
    put("target/other");
    link("elsewhere", "target/sub");
    for (const ReplacementPolicy policy : {provider::MergeFolder, provider::ReplaceAny}) {
        EXPECT_THAT(errorOf([&] { copyFolderBetween(memory(u"source"), disk("target"), policy); }),
                    Pair(vfs::resourceAlreadyExists, textOf("target/sub")));
    }
    EXPECT_EQ(contentOf("elsewhere/file"), "guarded");
}

TEST_F(TransfersWithDisk, AFileInAFolderReplacesALinkAndNotWhatItLeadsTo) {
    memory_.putFile(MemoryBox::at(u"source/file"), "new");
    memory_.putFile(MemoryBox::at(u"source/other"), "new");
    put("guarded", "guarded");
    fs::permissions(scratch_.path() / "guarded", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_directory(scratch_.path() / "target");
    link("guarded", "target/file");
    copyFolderBetween(memory(u"source"), disk("target"), provider::MergeFolder);
    EXPECT_EQ(contentOf("guarded"), "guarded");
    EXPECT_EQ(contentOf("target/file"), "new");
    EXPECT_FALSE(fs::is_symlink(scratch_.path() / "target/file"));
    EXPECT_EQ(fs::status(scratch_.path() / "target/file").permissions(),
              fs::status(scratch_.path() / "target/other").permissions());
}

TEST_F(TransfersWithDisk, TheDestinationItselfMayBeNamedByALink) {
    memory_.putFile(MemoryBox::at(u"source/sub/file"), "new");
    put("elsewhere/file", "old");
    put("elsewhere/sub/other", "old");
    link("elsewhere", "target");
    copyFolderBetween(memory(u"source"), disk("target"), provider::MergeFolder);
    copyFileBetween(memory(u"source/sub/file"), disk("target/file"), provider::ReplaceWritable);
    EXPECT_EQ(contentOf("elsewhere/sub/file"), "new");
    EXPECT_EQ(contentOf("elsewhere/file"), "new");
}

TEST_F(TransfersWithDisk, AMergeStaysInTheFolderThatItBeganWith) {
    memory_.putFile(MemoryBox::at(u"source/sub/a"), "new");
    memory_.putFile(MemoryBox::at(u"source/sub/b/inner"), "new");
    put("target/sub/there");
    put("target/sub/b/there");
    put("elsewhere/a", "guarded");
    put("elsewhere/b/inner", "guarded");
    memory_.awaited = u"a";
    memory_.whenRead = [&] { swap("target/sub", "taken", "elsewhere"); };
    copyFolderBetween(memory(u"source"), disk("target"), provider::ReplaceAny);
    EXPECT_EQ(contentOf("elsewhere/a"), "guarded");
    EXPECT_EQ(contentOf("elsewhere/b/inner"), "guarded");
    EXPECT_EQ(contentOf("taken/a"), "new");
    EXPECT_EQ(contentOf("taken/b/inner"), "new");
}

TEST_F(TransfersWithDisk, ACopyStaysInTheFolderThatItHasMade) {
    memory_.putFile(MemoryBox::at(u"source/sub/a"), "new");
    memory_.putFile(MemoryBox::at(u"source/sub/b"), "new");
    put("elsewhere/a", "guarded");
    put("elsewhere/b", "guarded");
    for (const char16_t* const name : {u"a", u"b"}) {
        memory_.awaited = name;
        memory_.whenRead = [&] { swap("target/sub", "taken", "elsewhere"); };
        copyFolderBetween(memory(u"source"), disk("target"), provider::ReplaceAny);
        EXPECT_EQ(contentOf("elsewhere/a"), "guarded");
        EXPECT_EQ(contentOf("elsewhere/b"), "guarded");
        EXPECT_EQ(contentOf("taken/a"), "new");
        EXPECT_EQ(contentOf("taken/b"), "new");
        fs::remove_all(scratch_.path() / "target");
        fs::remove_all(scratch_.path() / "taken");
    }
}

TEST_F(TransfersWithDisk, NewFoldersBelowOneThatWasSwappedGoWhereItIs) {
    memory_.putFile(MemoryBox::at(u"source/sub/a"), "new");
    memory_.putFile(MemoryBox::at(u"source/sub/b/inner"), "new");
    put("elsewhere/b/inner", "guarded");
    memory_.awaited = u"a";
    memory_.whenRead = [&] { swap("target/sub", "taken", "elsewhere"); };
    copyFolderBetween(memory(u"source"), disk("target"), provider::ReplaceAny);
    EXPECT_EQ(contentOf("elsewhere/b/inner"), "guarded");
    EXPECT_EQ(entriesIn("elsewhere/b"), 1);
    EXPECT_EQ(contentOf("taken/a"), "new");
    EXPECT_EQ(contentOf("taken/b/inner"), "new");
}

TEST_F(TransfersWithDisk, NoFolderIsFilledThroughALinkThatComesAtOnce) {
    /// Lets a link come right after a folder was made, or before the first file of it.
    class Disturbed : public LocalProvider {
    public:
        void createFolder(const AbsoluteIRI& folder) override {
            LocalProvider::createFolder(folder);
            if (whenMade && folder.getName() == u"sub") whenMade();
        }
        std::unique_ptr<OutputStream> write(const AbsoluteIRI& file, ReplacementPolicy policy) override {
            if (whenWritten && file.getParent().getName() == u"sub") std::exchange(whenWritten, nullptr)();
            return LocalProvider::write(file, policy);
        }
        std::function<void()> whenMade;
        std::function<void()> whenWritten;
    };
    memory_.putFile(MemoryBox::at(u"source/sub/a"), "new");
    put("elsewhere/a", "guarded");
    const auto swapped = [&] { swap("target/sub", "taken", "elsewhere"); };
    for (std::function<void()> Disturbed::*const moment : {&Disturbed::whenMade, &Disturbed::whenWritten}) {
        Disturbed disk;
        disk.*moment = swapped;
        const auto copy = [&] {
            copyFolderBetween(memory(u"source"), {disk, onDisk("target")}, provider::ReplaceWritable);
        };
        if (moment == &Disturbed::whenMade) {
            EXPECT_THAT(errorOf(copy), Pair(vfs::resourceInUse, textOf("target/sub")));
        } else {
            copy();
            EXPECT_EQ(contentOf("taken/a"), "new");
        }
        EXPECT_EQ(contentOf("elsewhere/a"), "guarded");
        EXPECT_EQ(entriesIn("elsewhere"), 1);
        fs::remove_all(scratch_.path() / "target");
        fs::remove_all(scratch_.path() / "taken");
    }
}

TEST_F(TransfersWithDisk, AFileIsWrittenWhereItWasBegun) {
    put("folder/file", "old");
    put("elsewhere/file", "guarded");
    const std::string content = "new";
    {
        const auto givenUp = disk_.write(onDisk("folder/file"), provider::ReplaceWritable);
        swap("folder", "taken", "elsewhere");
    }
    EXPECT_EQ(entriesIn("taken"), 1);
    fs::remove(scratch_.path() / "folder");
    fs::rename(scratch_.path() / "taken", scratch_.path() / "folder");

    const auto stream = disk_.write(onDisk("folder/file"), provider::ReplaceWritable);
    swap("folder", "taken", "elsewhere");
    stream->write(std::as_bytes(std::span(content)));
    stream->commit();
    EXPECT_EQ(contentOf("taken/file"), "new");
    EXPECT_EQ(contentOf("elsewhere/file"), "guarded");
    EXPECT_EQ(entriesIn("taken") + entriesIn("elsewhere"), 2);
}

TEST_F(TransfersWithDisk, AnEmptyFolderIsFilledAndLeftWithoutATrace) {
    memory_.putFile(MemoryBox::at(u"source/a"), "new");
    memory_.putFolder(MemoryBox::at(u"source/empty"));
    memory_.putFile(MemoryBox::at(u"source/sub/b/c"), "new");
    scratch_.makeFolder("target/sub");
    copyFolderBetween(memory(u"source"), disk("target"), provider::MergeFolder);
    EXPECT_EQ(contentOf("target/a"), "new");
    EXPECT_EQ(contentOf("target/sub/b/c"), "new");
    EXPECT_EQ(entriesIn("target"), 3);
    EXPECT_EQ(entriesIn("target/empty"), 0);
    EXPECT_EQ(entriesIn("target/sub"), 1);
    EXPECT_EQ(entriesIn("target/sub/b"), 1);
}

TEST_F(TransfersWithDisk, ANameThatThisDiskCannotHaveIsNotCutShort) {
    memory_.putFile(MemoryBox::at(u"source/" + std::u16string(u"file\0rest", 9)), "new");
    put("target/file", "old");
    EXPECT_EQ(
        errorOf([&] { copyFolderBetween(memory(u"source"), disk("target"), provider::ReplaceAny); }).first,
        vfs::invalidLocation);
    EXPECT_EQ(contentOf("target/file"), "old");
}

TEST_F(TransfersWithDisk, AFolderThatMayNotBeListedIsNotCopiedInto) {
    memory_.putFile(MemoryBox::at(u"source/file"), "new");
    fs::permissions(scratch_.path(), fs::perms::all);
    {
        const tests::OrdinaryUser user;
        fs::create_directory(scratch_.path() / "letterbox");
        fs::permissions(scratch_.path() / "letterbox", fs::perms::owner_write | fs::perms::owner_exec);
        EXPECT_THAT(
            errorOf([&] { copyFolderBetween(memory(u"source"), disk("letterbox"), provider::MergeFolder); }),
            Pair(vfs::permissionDenied, textOf("letterbox")));
        fs::permissions(scratch_.path() / "letterbox", fs::perms::owner_all);
    }
    EXPECT_EQ(entriesIn("letterbox"), 0);
}

/// A folder of a tree and a link to a guarded one change places all the time.
class TransfersWhileSwapping : public TransfersWithDisk {
protected:
    static constexpr int files = 20;
    static constexpr int rounds = 60;
    enum class Tree { isThere, isMissing };

    TransfersWhileSwapping() {
        fill("guarded", "guarded");
        link("guarded", "link");
    }

    void fill(const std::string& folder, const std::string& content) const {
        for (int file = 0; file < files; ++file) {
            const std::string name = "file" + std::to_string(file);
            put(folder + "/" + name, content);
            put(folder + "/below/" + name, content);
        }
    }
    void fillMemory() {
        fill("source/inner", "new");
        copyFolderBetween(disk("source"), memory(u"source"), provider::ReplaceWritable);
    }
    bool isWhole(const std::string& folder, const std::string& content) const {
        for (int file = 0; file < files; ++file) {
            const std::string name = "file" + std::to_string(file);
            if (contentOf(folder + "/" + name) != content) return false;
            if (contentOf(folder + "/below/" + name) != content) return false;
        }
        return entriesIn(folder) == files + 1 && entriesIn(folder + "/below") == files;
    }

    /// In every fourth round nobody swaps anything, and the work has to succeed.
    void whileSwapping(Tree tree, const std::function<void()>& work) {
        std::mutex swapping;
        std::atomic<bool> isOver{false};
        const auto swapper = std::async(std::launch::async, [&] {
            while (!isOver) {
                const std::lock_guard lock(swapping);
                ::renameat2(AT_FDCWD, (scratch_.path() / "tree/inner").c_str(), AT_FDCWD,
                            (scratch_.path() / "link").c_str(), RENAME_EXCHANGE);
            }
        });
        for (int round = 0; round < rounds && !HasFailure(); ++round) {
            std::unique_lock<std::mutex> undisturbed(swapping);
            makeTree(tree);
            const bool isDisturbed = round % 4 != 0;
            if (isDisturbed) undisturbed.unlock();
            try {
                work();
            } catch (const vfs::Exception& failure) {
                // That it is noticed is as good as that it is done.
                EXPECT_TRUE(isDisturbed) << failure.what();
            }
            EXPECT_TRUE(isWhole("guarded", "guarded")) << "in round " << round;
        }
        isOver = true;
        swapper.wait();
    }

private:
    void makeTree(Tree tree) const {
        fs::remove_all(scratch_.path() / "tree");
        if (!fs::is_symlink(scratch_.path() / "link")) {
            fs::remove_all(scratch_.path() / "link");
            link("guarded", "link");
        }
        if (tree == Tree::isThere) fill("tree/inner", "tree");
    }
};

TEST_F(TransfersWhileSwapping, AMoveRemovesNothingOutsideOfItsTree) {
    whileSwapping(Tree::isThere, [&] {
        MemoryProvider storage;
        moveFolderBetween(disk("tree"), {storage, MemoryBox::at(u"moved")}, provider::ReplaceWritable);
    });
}

TEST_F(TransfersWhileSwapping, AMergeWritesNothingOutsideOfItsTree) {
    fillMemory();
    whileSwapping(Tree::isThere,
                  [&] { copyFolderBetween(memory(u"source"), disk("tree"), provider::ReplaceAny); });
}

TEST_F(TransfersWhileSwapping, ACopyIntoNewFoldersWritesNothingOutsideOfItsTree) {
    fillMemory();
    whileSwapping(Tree::isMissing,
                  [&] { copyFolderBetween(memory(u"source"), disk("tree"), provider::ReplaceWritable); });
}

TEST_F(TransfersWithDisk, DepthNeedsFewHandles) {
    constexpr int levels = 90;
    std::string path = "source";
    std::u16string pathInMemory = u"copy";
    for (int level = 0; level < levels; ++level) {
        put(path + "/file");
        path += "/d";
        pathInMemory += u"/d";
    }
    put(path + "/last", "at the end");
    const korvex::tests::FewOpenFiles few(64);
    copyFolderBetween(disk("source"), memory(u"copy"), provider::ReplaceWritable);
    EXPECT_EQ(contentInMemory(pathInMemory + u"/last"), "at the end");
    moveFolderBetween(memory(u"copy"), disk("moved"), provider::ReplaceWritable);
    EXPECT_EQ(contentOf(path.replace(0, 6, "moved") + "/last"), "at the end");
    moveFolderBetween(disk("source"), memory(u"copy"), provider::ReplaceWritable);
    EXPECT_FALSE(fs::exists(scratch_.path() / "source"));
}

}  // namespace
}  // namespace korvex::runtime::storage
