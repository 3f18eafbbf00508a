// `rmdir` in storage that is not local: protected folders, and a storage that fails in a way of its own.
#include <new>

#include "tests/unit/filemanip/dir_manip/removal_fixture.h"

namespace korvex::filemanip::tests {
namespace {

TEST_F(DirManipRemovalTest, ProtectedFolderOfAnotherSchemeIsDeniedByItsLocation) {
    box_->putFolder(boxLocation(u"a1"));
    box_->putFolder(boxLocation(u"a2"));
    box_->setWritable(boxLocation(u"a2"), false);
    EXPECT_EQ(rmdir({u"memory://box/a*"}),
              someNotRemoved(textOf(KORVEX::virtualfilesystem::permissionDenied(u"memory://box/a2"))));
    EXPECT_EQ(box_->existence(boxLocation(u"a1")), provider::AsNeither);
    EXPECT_EQ(box_->existence(boxLocation(u"a2")), provider::AsFolder);
}

/// Runs out of memory where it is asked for the contents of one folder.
class ScarceMemory : public runtime::storage::MemoryProvider {
public:
    std::vector<runtime::storage::ListedEntry> list(const vfs::AbsoluteIRI& folder,
                                                    std::u16string_view pattern) override {
        if (isScarce && folder.getName() == u"inmost") throw std::bad_alloc();
        return MemoryProvider::list(folder, pattern);
    }

    bool isScarce = true;
};

TEST_F(DirManipRemovalTest, LackOfMemoryInAnInnerFolderLeavesTheWholeTree) {
    const auto scarce = std::make_shared<ScarceMemory>();
    auto system = std::make_shared<vfs::StorageSystem>();
    system->add(u"memory", scarce);
    const runtime::storage::ScopedStorageSystem scope(system);
    scarce->putFile(boxLocation(u"a/b/inmost/file"), "");
    EXPECT_THROW(rmdir({u"memory://box/a", u"s"}), std::bad_alloc);
    EXPECT_EQ(scarce->existence(boxLocation(u"a/b/inmost/file")), provider::AsFile);
    scarce->isScarce = false;
    EXPECT_EQ(rmdir({u"memory://box/a", u"s"}), success());
    EXPECT_EQ(scarce->existence(boxLocation(u"a")), provider::AsNeither);
}

}  // namespace
}  // namespace korvex::filemanip::tests
