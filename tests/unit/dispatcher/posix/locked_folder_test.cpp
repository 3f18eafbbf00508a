// Folders that the process may not enter, as the environment's current folder.
#include <filesystem>

#include "platform/foundation_filesystem.h"
#include "tests/support/posix/ordinary_user.h"
#include "tests/unit/dispatcher/current_folder.h"

namespace korvex::runtime::dispatcher {
namespace {

namespace vfs = foundation::storage::vfs;
using korvex::tests::OrdinaryUser;
using std::filesystem::perms;

/// The scratch folder may be entered by everybody, whatever the process's mask.
class LockedFolderTest : public CurrentFolderTest {
protected:
    LockedFolderTest() { std::filesystem::permissions(scratch_.path(), perms::all); }

    void lock(const char* name) const { std::filesystem::permissions(scratch_.path() / name, perms::none); }
};

TEST_F(LockedFolderTest, FolderThatMayNotBeEnteredIsRefusedAndNothingChanges) {
    scratch_.makeFolder("locked/inner");
    lock("locked");
    const OrdinaryUser user;
    EXPECT_EQ(refusalOf(u"locked"), vfs::permissionDenied);
    EXPECT_EQ(refusalOf(u"locked/inner"), vfs::permissionDenied);
    EXPECT_EQ(currentFolderPath(), here_);
}

TEST_F(LockedFolderTest, FolderThatCannotBeReachedAnyMoreCountsAsGone) {
    scratch_.makeFolder("locked/inner");
    setCurrentFolderPath(u"locked/inner");
    lock("locked");
    const OrdinaryUser user;
    EXPECT_FALSE(currentFolderExists());
    EXPECT_THROW(given(), fl::filesystem::PathNotFound);
    EXPECT_THROW(fl::filesystem::absolute(u"x", u""), fl::filesystem::PathNotFound);
}

}  // namespace
}  // namespace korvex::runtime::dispatcher
