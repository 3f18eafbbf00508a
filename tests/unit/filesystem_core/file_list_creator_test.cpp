// Names and what they expand to.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "platform/filesystem_core.h"
#include "platform/foundation_filesystem.h"
#include "platform/path_management.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/paths/path_style.h"
#include "runtime/storage/provider.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/storage_system.h"
#include "tests/support/scratch_folder.h"

namespace korvex::io::filesystem::core {
namespace {

namespace dispatcher = korvex::runtime::dispatcher;
namespace storage = korvex::runtime::storage;
namespace vfs = foundation::storage::vfs;
using korvex::tests::ScratchFolder;
using testing::ElementsAre;
using testing::IsEmpty;

/// Works in a scratch folder with a small tree.
class FileListCreatorTest : public testing::Test {
protected:
    FileListCreatorTest() {
        scratch.writeFile("tree/b/deep.txt");
        scratch.writeFile("tree/b.txt");
        scratch.writeFile("tree/a.txt");
        scratch.writeFile("single.txt");
        dispatcher::setCurrentFolderPath(scratch.text());
    }
    ~FileListCreatorTest() override { dispatcher::setCurrentFolderPath(u"/"); }

    /// The list, each path without the scratch folder in front, as narrow text with "/".
    std::vector<std::string> expand(const std::u16string& name, bool followsLinks = false,
                                    bool includesFolders = true, bool failsWithoutMatch = false) {
        FileListCreator creator;
        creator.AddFiles(name, boost::none, followsLinks, includesFolders, failsWithoutMatch);
        status = creator.GetStatus();
        return below(creator.GetFiles());
    }
    std::vector<std::string> below(const std::vector<std::u16string>& files) const {
        std::vector<std::string> names;
        for (const std::u16string& file : files) {
            EXPECT_TRUE(fl::filesystem::detail::is_absolute(file));
            names.push_back(std::filesystem::path(file).lexically_relative(scratch.path()).generic_string());
        }
        return names;
    }

    ScratchFolder scratch;
    Status status;
};

TEST_F(FileListCreatorTest, AFileStandsForItself) {
    EXPECT_THAT(expand(u"single.txt"), ElementsAre("single.txt"));
    EXPECT_THAT(expand(scratch.text() + u"/single.txt"), ElementsAre("single.txt"));
    EXPECT_EQ(status.code, Status::success);
}

TEST_F(FileListCreatorTest, AFolderStandsForItselfAndAllBelowEachFolderBeforeItsContents) {
    EXPECT_THAT(expand(u"tree"),
                ElementsAre("tree", "tree/a.txt", "tree/b", "tree/b/deep.txt", "tree/b.txt"));
}

TEST_F(FileListCreatorTest, WithoutFoldersOnlyFilesAreListed) {
    EXPECT_THAT(expand(u"tree", false, false), ElementsAre("tree/a.txt", "tree/b/deep.txt", "tree/b.txt"));
    EXPECT_THAT(expand(u"tree/*", false, false), ElementsAre("tree/a.txt", "tree/b.txt"));
}

TEST_F(FileListCreatorTest, AWildcardStandsForItsMatchesAndNothingBelowThem) {
    EXPECT_THAT(expand(u"tree/*"), ElementsAre("tree/a.txt", "tree/b", "tree/b.txt"));
    EXPECT_THAT(expand(u"tree/?.txt"), ElementsAre("tree/a.txt", "tree/b.txt"));
    EXPECT_THAT(expand(u"*.txt"), ElementsAre("single.txt"));
}

TEST_F(FileListCreatorTest, ANameThatHoldsAStarAndIsThereIsNoWildcard) {
    if constexpr (korvex::runtime::paths::nativeStyle == korvex::runtime::paths::PathStyle::posix) {
        scratch.writeFile("*.txt");
        EXPECT_THAT(expand(u"*.txt"), ElementsAre("*.txt"));
    }
    EXPECT_THAT(expand(u"tree/a.tx*"), ElementsAre("tree/a.txt"));
}

TEST_F(FileListCreatorTest, WhatIsNotThereStandsForNothing) {
    for (const char16_t* name : {u"nothing", u"no*", u"no/such/*", u"single.txt/*", u""}) {
        EXPECT_THAT(expand(name), IsEmpty());
        EXPECT_EQ(status.code, Status::success);
    }
}

TEST_F(FileListCreatorTest, NothingIsAFailureWhenAskedFor) {
    EXPECT_THAT(expand(u"no*", false, true, true), IsEmpty());
    EXPECT_EQ(status.code, Status::failure);
    EXPECT_EQ(detail::GetID(status.exception), "KORVEX:FILEATTRIB:CannotFindFile");
    expand(u"tree/*", false, true, true);
    EXPECT_EQ(status.code, Status::success);
}

TEST_F(FileListCreatorTest, LinksAreListedAndNotWalkedInto) {
    std::filesystem::create_directory_symlink("b", scratch.path() / "tree/link");
    std::filesystem::create_symlink("nothing", scratch.path() / "tree/b/broken");
    EXPECT_THAT(expand(u"tree"), ElementsAre("tree", "tree/a.txt", "tree/b", "tree/b/broken",
                                             "tree/b/deep.txt", "tree/b.txt", "tree/link"));
    EXPECT_THAT(expand(u"tree/link"), ElementsAre("tree/link"));
}

TEST_F(FileListCreatorTest, FollowedLinksAreWalkedIntoOnce) {
    std::filesystem::create_directory_symlink("..", scratch.path() / "tree/b/up");
    EXPECT_THAT(expand(u"tree/b", true), ElementsAre("tree/b", "tree/b/deep.txt", "tree/b/up",
                                                     "tree/b/up/a.txt", "tree/b/up/b", "tree/b/up/b.txt"));
}

TEST_F(FileListCreatorTest, ARelativeNameMayBeTakenAgainstAnotherFolder) {
    const vfs::Folder tree(Velquist::PathManagement::GetIRIFromString(scratch.text() + u"/tree"),
                           Velquist::KorvexStorageSystem::GetStorageSystemReference());
    FileListCreator creator;
    creator.AddFiles(u"?.txt", tree.getCanonicalLocation(), false, true, false);
    creator.AddFiles(u"single.txt", boost::none, false, true, false);
    EXPECT_THAT(below(creator.GetFiles()), ElementsAre("tree/a.txt", "tree/b.txt", "single.txt"));
}

TEST_F(FileListCreatorTest, ARelativeNameNeedsTheCurrentFolder) {
    dispatcher::setCurrentFolderPath(scratch.makeFolder("gone").u16string());
    std::filesystem::remove(scratch.path() / "gone");
    EXPECT_THROW(expand(u"a"), fl::filesystem::PathNotFound);
}

TEST_F(FileListCreatorTest, APendingInterruptStopsTheWayThroughATree) {
    korvex::runtime::interpreter::raiseInterrupt();
    EXPECT_THROW(expand(u"tree"), vfs::Exception);
    EXPECT_TRUE(korvex::runtime::interpreter::takeInterrupt());
}

/// A tree in memory, and nothing else in reach.
class RemoteBase : public testing::Test {
protected:
    RemoteBase() {
        for (const char16_t* file : {u"tree/b/deep.txt", u"tree/b.txt", u"tree/a b.txt", u"single.txt"})
            memory->putFile(vfs::AbsoluteIRI(vfs::AbsoluteIRI(u"memory://box/"), file), "");
    }

    static std::shared_ptr<const vfs::StorageSystem> only(std::shared_ptr<storage::Provider> provider) {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"memory", std::move(provider));
        return system;
    }
    std::vector<std::u16string> expand(const std::u16string& name, bool failsWithoutMatch = false) {
        const vfs::Folder base(vfs::AbsoluteIRI(u"memory://box/tree"),
                               Velquist::KorvexStorageSystem::GetStorageSystemReference());
        FileListCreator creator;
        creator.AddFiles(name, base.getCanonicalLocation(), false, true, failsWithoutMatch);
        status = creator.GetStatus();
        return creator.GetFiles();
    }

    std::shared_ptr<storage::MemoryProvider> memory = std::make_shared<storage::MemoryProvider>();
    storage::ScopedStorageSystem scoped{only(memory)};
    Status status;
};

TEST_F(RemoteBase, NamesAndWildcardsAreTakenAgainstItAndListedAsTextsOfLocations) {
    EXPECT_THAT(expand(u"b.txt"), ElementsAre(u"memory://box/tree/b.txt"));
    EXPECT_THAT(expand(u"../single.txt"), ElementsAre(u"memory://box/tree/../single.txt"));
    EXPECT_THAT(expand(u"*.txt"), ElementsAre(u"memory://box/tree/a%20b.txt", u"memory://box/tree/b.txt"));
    EXPECT_THAT(expand(u"b/*"), ElementsAre(u"memory://box/tree/b/deep.txt"));
    EXPECT_EQ(status.code, Status::success);
}

TEST_F(RemoteBase, AFolderStandsForItselfAndAllBelow) {
    EXPECT_THAT(expand(u"b"), ElementsAre(u"memory://box/tree/b", u"memory://box/tree/b/deep.txt"));
}

TEST_F(RemoteBase, WhatIsNotThereStandsForNothing) {
    EXPECT_THAT(expand(u"no*"), IsEmpty());
    EXPECT_EQ(status.code, Status::success);
    EXPECT_THAT(expand(u"no/such", true), IsEmpty());
    EXPECT_EQ(detail::GetID(status.exception), "KORVEX:FILEATTRIB:CannotFindFile");
}

TEST_F(FileListCreatorTest, AnAbsoluteNameStaysLocalWhateverTheBase) {
    const vfs::Folder box(vfs::AbsoluteIRI(u"memory://box/"),
                          Velquist::KorvexStorageSystem::GetStorageSystemReference());
    FileListCreator creator;
    creator.AddFiles(scratch.text() + u"/single.txt", box.getCanonicalLocation(), false, true, false);
    EXPECT_THAT(below(creator.GetFiles()), ElementsAre("single.txt"));
}

/// Cannot list one folder; all else is the real provider's.
class OneLockedFolder : public storage::Provider {
public:
    OneLockedFolder(std::shared_ptr<const vfs::StorageSystem> real, std::u16string lockedName)
        : real_(std::move(real)), lockedName_(std::move(lockedName)) {}

    storage::ExistenceType existence(const vfs::AbsoluteIRI& location) override {
        return real_->provider(location).existence(location);
    }
    storage::ExistenceTypeExtended extendedExistence(const vfs::AbsoluteIRI& location) override {
        return real_->provider(location).extendedExistence(location);
    }
    vfs::CanonicalAbsoluteIRI canonicalLocation(const vfs::AbsoluteIRI& location) override {
        return real_->provider(location).canonicalLocation(location);
    }
    std::vector<storage::ListedEntry> list(const vfs::AbsoluteIRI& folder,
                                           std::u16string_view pattern) override {
        if (folder.getName() == lockedName_) throw vfs::Exception(vfs::permissionDenied, folder);
        return real_->provider(folder).list(folder, pattern);
    }

private:
    std::shared_ptr<const vfs::StorageSystem> real_;
    std::u16string lockedName_;
};

TEST_F(FileListCreatorTest, AFolderThatCannotBeListedIsAFailureAndTheRestIsThereAllTheSame) {
    auto system = std::make_shared<vfs::StorageSystem>();
    system->add(u"file", std::make_shared<OneLockedFolder>(storage::currentStorageSystem(), u"b"));
    const storage::ScopedStorageSystem locked(std::move(system));
    EXPECT_THAT(expand(u"tree"), ElementsAre("tree", "tree/a.txt", "tree/b", "tree/b.txt"));
    EXPECT_EQ(status.code, Status::failure);
    EXPECT_EQ(detail::GetID(status.exception), "KORVEX:virtualfilesystem:permissionDenied");
    EXPECT_THAT(expand(u"tree/b/*", false, true, true), IsEmpty());
    EXPECT_EQ(detail::GetID(status.exception), "KORVEX:virtualfilesystem:permissionDenied");
}

}  // namespace
}  // namespace korvex::io::filesystem::core
