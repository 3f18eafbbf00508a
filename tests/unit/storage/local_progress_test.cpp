// How far local transfers tell that they are.
#include <gtest/gtest.h>

#include <vector>

#include "platform/path_management.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/transfer_progress.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::storage {
namespace {

namespace fs = std::filesystem;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

class LocalProgressTest : public testing::Test, private ProgressObserver {
protected:
    LocalProgressTest() : earlier_(setProgressObserver(this)) {}
    ~LocalProgressTest() override {
        setProgressObserver(earlier_);
        interpreter::takeInterrupt();
    }

    vfs::AbsoluteIRI at(const char* name) const {
        return Velquist::PathManagement::GetIRIFromString((scratch_.path() / name).u16string());
    }
    vfs::File file(const char* name) const {
        return {at(name), Velquist::KorvexStorageSystem::GetStorageSystemReference()};
    }
    vfs::Folder folder(const char* name) const {
        return {at(name), Velquist::KorvexStorageSystem::GetStorageSystemReference()};
    }

    void expectOneItem(const vfs::AbsoluteIRI& location) {
        ASSERT_EQ(reports_.size(), 1U);
        EXPECT_EQ(reports_[0].itemsDone, 1U);
        EXPECT_EQ(reports_[0].itemsKnown, 1U);
        EXPECT_EQ(reports_[0].location, location);
        reports_.clear();
    }

    static constexpr std::size_t size = (std::size_t{40} << 20) + 7;
    tests::ScratchFolder scratch_;
    std::vector<Progress> reports_;
    bool interruptsAtOnce_ = false;

private:
    void progressed(const Progress& progress) override {
        EXPECT_LE(progress.bytesDone, progress.bytesKnown);
        reports_.push_back(progress);
        if (interruptsAtOnce_) interpreter::raiseInterrupt();
    }

    ProgressObserver* earlier_;
};

TEST_F(LocalProgressTest, ALargeFileIsToldOnItsWay) {
    scratch_.writeFile("tree/file", std::string(size, 'x'));
    for (const bool isTree : {false, true}) {
        reports_.clear();
        isTree ? folder("tree").copyFolder(folder("copy"), provider::ReplaceWritable)
               : file("tree/file").copyFile(file("single"), provider::ReplaceWritable);
        ASSERT_GE(reports_.size(), 2U);
        EXPECT_EQ(reports_.front().itemsDone, 0U);
        EXPECT_LE(reports_.front().bytesDone, size);
        EXPECT_EQ(reports_.front().bytesKnown, size);
        EXPECT_EQ(reports_.front().location, at("tree/file"));
        EXPECT_EQ(reports_.back().itemsDone, 1U);
        EXPECT_EQ(reports_.back().bytesDone, size);
    }
}

TEST_F(LocalProgressTest, ALargeFileUnderWayIsGivenUpWhenTheUserInterrupts) {
    scratch_.writeFile("file", std::string(size, 'x'));
    interruptsAtOnce_ = true;
    try {
        file("file").copyFile(file("copy"), provider::ReplaceWritable);
        ADD_FAILURE() << "it went on";
    } catch (const vfs::Exception& error) {
        EXPECT_EQ(error.getErrorCode(), vfs::unknownError);
        EXPECT_EQ(error.getExceptionContextsString(), interruptedContext);
    }
    EXPECT_FALSE(fs::exists(scratch_.path() / "copy"));
    EXPECT_TRUE(interpreter::isInterruptPending());
}

TEST_F(LocalProgressTest, WhatIsRenamedIsOneItem) {
    scratch_.writeFile("folder/one");
    scratch_.writeFile("folder/two");
    folder("folder").moveFolder(folder("moved"), provider::ReplaceWritable);
    expectOneItem(at("folder"));
    file("moved/one").moveFile(file("one"), provider::ReplaceWritable);
    expectOneItem(at("moved/one"));
}

TEST_F(LocalProgressTest, WhatIsRemovedByItselfIsOneItem) {
    scratch_.writeFile("folder/file");
    file("folder/file").removeFile();
    expectOneItem(at("folder/file"));
    folder("folder").removeFolder(vfs::RemoveEmptyFolder);
    expectOneItem(at("folder"));
}

TEST_F(LocalProgressTest, AnEmptyFolderOrALinkRemovedWithItsContentsIsOneItem) {
    scratch_.makeFolder("folder");
    fs::create_directory_symlink("folder", scratch_.path() / "link");
    for (const char* name : {"link", "folder"}) {
        folder(name).removeFolder(vfs::RemoveWithContents);
        expectOneItem(at(name));
    }
}

TEST_F(LocalProgressTest, AFolderInMemoryIsToldOnceWhenItIsRemoved) {
    const vfs::StorageSystemReference storage = Velquist::KorvexStorageSystem::GetStorageSystemReference();
    const vfs::Folder inMemory(vfs::AbsoluteIRI(u"memory://progress/folder"), storage);
    for (const vfs::FolderRemovalPolicy policy : {vfs::RemoveEmptyFolder, vfs::RemoveWithContents}) {
        inMemory.createFolder();
        inMemory.removeFolder(policy);
        expectOneItem(inMemory.getLocation());
    }
}

TEST_F(LocalProgressTest, AFolderThatMovesAsAWholeInAMergeIsOneItem) {
    scratch_.writeFile("source/inner/one");
    scratch_.makeFolder("target");
    folder("source").moveFolder(folder("target"), provider::MergeFolder);
    expectOneItem(at("source/inner"));
}

}  // namespace
}  // namespace korvex::runtime::storage
