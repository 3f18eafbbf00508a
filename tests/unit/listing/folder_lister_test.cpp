// The lister of one folder.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/storage_vfs.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/storage_system.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/listing/lister_calls.h"

namespace korvex::tests {
namespace {

namespace vfs = foundation::storage::vfs;
using testing::ElementsAre;
using testing::IsEmpty;

class FolderListerTest : public testing::Test {
protected:
    Texts names(std::u16string_view pattern) const {
        std::vector<FileNameWithStatLight> found;
        ioGetDirListVFS(scratch_.text(), pattern, found);
        Texts names;
        for (const FileNameWithStatLight& entry : found)
            names.push_back(pathOf(entry, scratch_.text()));
        return names;
    }

    ScratchFolder scratch_;
};

TEST_F(FolderListerTest, StarGivesAllEntriesInOrderAndNothingBelow) {
    for (const char* file : {"b", "A", ".hidden", "folder/inner"})
        scratch_.writeFile(file);
    EXPECT_THAT(names(u"*"), ElementsAre(".hidden", "A", "b", "folder"));
    EXPECT_THAT(names(u""), ElementsAre(".hidden", "A", "b", "folder"));
}

TEST_F(FolderListerTest, NamePicksThatEntryAndOpensNothing) {
    for (const char* file : {"b", "folder/inner"})
        scratch_.writeFile(file);
    EXPECT_THAT(names(u"folder"), ElementsAre("folder"));
    EXPECT_THAT(names(u"nothing"), IsEmpty());
}

TEST_F(FolderListerTest, EntriesHaveTheirKindAndTheirFolder) {
    scratch_.writeFile("file", "12345");
    scratch_.makeFolder("folder");
    std::filesystem::create_symlink("folder", scratch_.path() / "link");
    std::filesystem::create_symlink("file", scratch_.path() / "link to file");
    std::filesystem::create_symlink("nowhere", scratch_.path() / "link to nothing");
    std::vector<FileNameWithStatLight> found;
    ioGetDirListVFS(scratch_.text() + u"/", u"*", found);
    ASSERT_EQ(found.size(), 5U);
    EXPECT_FALSE(found[0].isDirectory);
    EXPECT_TRUE(found[1].isDirectory);
    EXPECT_TRUE(found[2].isDirectory);
    EXPECT_FALSE(found[3].isDirectory);
    EXPECT_FALSE(found[4].isDirectory);
    EXPECT_EQ(*found[0].folder, scratch_.text());
    EXPECT_EQ(found[0].folder, found[2].folder);
}

TEST_F(FolderListerTest, NoEntryIsAskedForMoreThanItsKind) {
    scratch_.writeFile("file", "12345");
    scratch_.makeFolder("folder");
    std::filesystem::create_symlink("folder", scratch_.path() / "link");
    std::filesystem::create_symlink("file", scratch_.path() / "link to file");
    std::vector<FileNameWithStatLight> found;
    ioGetDirListVFS(scratch_.text(), u"*", found);
    ASSERT_EQ(found.size(), 4U);
    for (const FileNameWithStatLight& entry : found) {
        EXPECT_FALSE(entry.sizeKnown);
        EXPECT_TRUE(entry.modified.is_not_a_date_time());
    }
}

TEST_F(FolderListerTest, EmptyFolderGivesNothing) { EXPECT_THAT(names(u"*"), IsEmpty()); }

TEST_F(FolderListerTest, MissingFolderIsAnError) {
    std::vector<FileNameWithStatLight> found;
    try {
        ioGetDirListVFS(scratch_.text() + u"/gone", u"*", found);
        FAIL() << "nothing was raised";
    } catch (const vfs::Exception& error) {
        EXPECT_EQ(error.getErrorCode(), vfs::resourceNotFound);
    }
}

TEST_F(FolderListerTest, LocationIsListedThroughItsProvider) {
    auto system = std::make_shared<vfs::StorageSystem>();
    const auto memory = std::make_shared<korvex::runtime::storage::MemoryProvider>();
    system->add(u"memory", memory);
    memory->createFolderRecursive(vfs::AbsoluteIRI(u"memory://box/a/b"));
    const korvex::runtime::storage::ScopedStorageSystem scope(system);
    std::vector<FileNameWithStatLight> found;
    ioGetDirListVFS(u"memory://box/a", u"*", found);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].name, u"b");
    EXPECT_EQ(*found[0].folder, u"memory://box/a");
}

TEST_F(FolderListerTest, TextThatIsNoLocationIsRaised) {
    std::vector<FileNameWithStatLight> found;
    EXPECT_THROW(ioGetDirListVFS(u"memory://box", u"*", found), vfs::InvalidIRIException);
    EXPECT_THROW(ioGetDirListVFS(u"gopher://host/a", u"*", found), vfs::UnsupportedIRISchemeException);
}

}  // namespace
}  // namespace korvex::tests
