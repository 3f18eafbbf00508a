// What is the memory provider's own: its roots, its hosts, and trees that no disk would hold.
#include "runtime/storage/providers/memory/memory_provider.h"

#include <gmock/gmock.h>

#include <future>
#include <thread>

#include "tests/unit/storage/memory_boxes.h"

namespace korvex::runtime::storage {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class Memory : public ::testing::Test {
protected:
    static AbsoluteIRI at(const std::u16string& text) { return AbsoluteIRI(u"memory://" + text); }

    MemoryBox box_;
    MemoryProvider& memory_ = *box_.memory;
};

TEST_F(Memory, ARootIsNeitherRemovedNorMovedNorMade) {
    box_.put(u"file");
    for (const vfs::FolderRemovalPolicy policy : {vfs::RemoveEmptyFolder, vfs::RemoveWithContents}) {
        EXPECT_THAT(errorOf([&] { memory_.removeFolder(at(u"box/"), policy); }),
                    Pair(vfs::invalidLocation, "memory://box/"));
    }
    EXPECT_EQ(errorOf([&] { memory_.moveFolder(at(u"box/"), at(u"crate/new"), provider::ReplaceAny); }).first,
              vfs::invalidLocation);
    EXPECT_EQ(errorOf([&] { memory_.createFolder(at(u"fresh/")); }).first, vfs::resourceAlreadyExists);
    EXPECT_EQ(errorOf([&] { memory_.createFolderRecursive(at(u"fresh/")); }).first,
              vfs::resourceAlreadyExists);
    EXPECT_THAT(box_.namesIn(u""), ElementsAre("file"));
}

TEST_F(Memory, AWholeRootMayBeCopiedAndMergedInto) {
    box_.put(u"folder/file", "content");
    memory_.copyFolder(at(u"box/"), at(u"crate/"), provider::MergeFolder);
    memory_.copyFolder(at(u"box/"), at(u"crate/box"), provider::ReplaceWritable);
    EXPECT_EQ(memory_.existence(at(u"crate/folder/file")), provider::AsFile);
    EXPECT_EQ(memory_.existence(at(u"crate/box/folder/file")), provider::AsFile);
}

TEST_F(Memory, AnUntouchedRootCanBeProtected) {
    memory_.setWritable(at(u"fresh/"), false);
    EXPECT_FALSE(memory_.isWritable(at(u"fresh/")));
    EXPECT_THAT(errorOf([&] { memory_.createFolder(at(u"fresh/new")); }),
                Pair(vfs::permissionDenied, "memory://fresh/new"));
}

TEST_F(Memory, HostsAreTransferredBetween) {
    box_.put(u"file", "content");
    memory_.moveFile(at(u"box/file"), at(u"crate/file"), provider::ReplaceWritable);
    EXPECT_EQ(memory_.existence(at(u"crate/file")), provider::AsFile);
    EXPECT_THAT(box_.namesIn(u""), IsEmpty());
}

TEST_F(Memory, ThePresentFolderCannotBeTakenAwayByItsDots) {
    box_.put(u"folder/inner/file");
    for (const std::u16string path : {u"box/folder/.", u"box/folder/inner/.."}) {
        EXPECT_EQ(errorOf([&] { memory_.removeFolder(at(path), vfs::RemoveWithContents); }).first,
                  vfs::invalidLocation);
        EXPECT_EQ(errorOf([&] { memory_.moveFolder(at(path), at(u"box/new"), provider::ReplaceAny); }).first,
                  vfs::invalidLocation);
    }
    EXPECT_TRUE(box_.isThere(u"folder/inner/file"));
}

TEST_F(Memory, DotsDoNotHideThatAFolderGoesIntoItself) {
    box_.put(u"folder/inner/file");
    EXPECT_EQ(errorOf([&] {
                  memory_.moveFolder(at(u"box/folder"), at(u"box/folder/inner/../new"), provider::ReplaceAny);
              }).first,
              vfs::invalidLocation);
    EXPECT_EQ(errorOf([&] {
                  memory_.copyFolder(at(u"box/./folder"), at(u"box/folder/inner"), provider::ReplaceAny);
              }).first,
              vfs::invalidLocation);
}

TEST_F(Memory, ACopyDoesNotChangeWithItsSource) {
    box_.put(u"file", "first");
    memory_.copyFile(at(u"box/file"), at(u"box/copy"), provider::ReplaceWritable);
    box_.put(u"file", "second");
    EXPECT_EQ(box_.contentOf(u"copy"), "first");
}

TEST_F(Memory, AStreamReadsWhatWasThereWhenItWasOpened) {
    box_.put(u"file", "first");
    const auto stream = memory_.read(at(u"box/file"));
    memory_.removeFile(at(u"box/file"));
    std::array<char, 10> buffer{};
    EXPECT_EQ(stream->read(std::as_writable_bytes(std::span(buffer))), 5U);
    EXPECT_STREQ(buffer.data(), "first");
}

TEST_F(Memory, DepthCostsNoStack) {
    std::u16string path = u"folder";
    for (int level = 0; level < 100'000; ++level)
        path += u"/d";
    box_.put(path + u"/file");
    memory_.copyFolder(at(u"box/folder"), at(u"box/copy"), provider::ReplaceWritable);
    memory_.removeFolder(at(u"box/folder"), vfs::RemoveWithContents);
    EXPECT_THAT(box_.namesIn(u""), ElementsAre("copy"));
}

TEST_F(Memory, ThreadsSeeAMoveWholeOrNotAtAll) {
    box_.put(u"here/a");
    box_.put(u"here/b");
    const auto mover = std::async(std::launch::async, [&] {
        for (int round = 0; round < 200; ++round) {
            memory_.moveFolder(at(u"box/here"), at(u"box/there"), provider::ReplaceWritable);
            memory_.moveFolder(at(u"box/there"), at(u"box/here"), provider::ReplaceWritable);
        }
    });
    for (int look = 0; look < 500; ++look) {
        EXPECT_EQ(memory_.list(at(u"box/"), u"").size(), 1U);
    }
    mover.wait();
    EXPECT_THAT(box_.namesIn(u"here"), ElementsAre("a", "b"));
}

}  // namespace
}  // namespace korvex::runtime::storage
