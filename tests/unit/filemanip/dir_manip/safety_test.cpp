// What `rmdir` must never touch: anything outside of the tree that it removes, whatever is linked there and
// whoever changes the tree meanwhile. And what it does where permissions end.
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <mutex>
#include <stop_token>
#include <thread>

#include "runtime/messages/environment_messages.h"
#include "tests/support/posix/ordinary_user.h"
#include "tests/unit/filemanip/dir_manip/dir_manip_fixture.h"

namespace korvex::filemanip::tests {
namespace {

class DirManipSafetyTest : public DirManipTest {
protected:
    DirManipSafetyTest() {
        for (int file = 0; file < filesInFolder; ++file) {
            scratch_.writeFile("guarded/file" + std::to_string(file), "guarded");
            scratch_.writeFile("guarded/below/file" + std::to_string(file), "guarded");
        }
        fs::permissions(diskPath("guarded/file0"), fs::perms::owner_read);
    }

    bool isGuardedTreeWhole() const {
        for (int file = 0; file < filesInFolder; ++file) {
            for (const std::string folder : {"guarded/", "guarded/below/"}) {
                std::ifstream stream(diskPath(folder + "file" + std::to_string(file)));
                std::string content;
                if (!(stream >> content) || content != "guarded") return false;
            }
        }
        const bool isProtected = fs::status(diskPath("guarded/file0")).permissions() == fs::perms::owner_read;
        return isProtected &&
               std::distance(fs::directory_iterator(diskPath("guarded")), {}) == filesInFolder + 1;
    }

    void makeTree() const {
        std::error_code ignored;
        fs::remove_all(diskPath("tree"), ignored);
        if (!fs::is_symlink(diskPath("link"))) {
            fs::remove_all(diskPath("link"), ignored);
            fs::create_directory_symlink(diskPath("guarded"), diskPath("link"), ignored);
        }
        for (int file = 0; file < filesInFolder; ++file) {
            scratch_.writeFile("tree/inner/file" + std::to_string(file), "tree");
            scratch_.writeFile("tree/inner/below/file" + std::to_string(file), "tree");
        }
    }

    static constexpr int filesInFolder = 20;
};

TEST_F(DirManipSafetyTest, LinksInATreeLeaveWhatTheyLeadToAsItIs) {
    scratch_.makeFolder("tree");
    makeLink("../guarded", "tree/folder");
    makeLink("../guarded/file0", "tree/protected");
    makeLink("folder", "tree/second");
    makeLink("../tree", "tree/loop");
    EXPECT_EQ(rmdir({u"tree", u"s"}), success());
    EXPECT_FALSE(isThere("tree"));
    EXPECT_TRUE(isGuardedTreeWhole());
}

TEST_F(DirManipSafetyTest, LinkThatIsBrokenForAMomentIsNotEntered) {
    /// Looked at, what the link leads to is just being replaced; before and after that it is there.
    class Replaced : public korvex::runtime::storage::LocalProvider {
    public:
        foundation::storage::provider::ExistenceTypeExtended extendedExistence(
            const vfs::AbsoluteIRI& location) override {
            return location.getName() == u"folder" ? foundation::storage::provider::ExtendedBrokenLink
                                                   : LocalProvider::extendedExistence(location);
        }
    };
    const auto system = std::make_shared<vfs::StorageSystem>();
    system->add(u"file", std::make_shared<Replaced>());
    const korvex::runtime::storage::ScopedStorageSystem scope(system);
    scratch_.makeFolder("tree");
    makeLink("../guarded", "tree/folder");
    rmdir({u"tree", u"s"});
    EXPECT_TRUE(isGuardedTreeWhole());
}

TEST_F(DirManipSafetyTest, NamedLinkLeavesWhatItLeadsToAsItIs) {
    makeLink("guarded", "link");
    makeLink("link", "second");
    for (const std::u16string name : {u"link", u"link/", u"second", u"second/", u"lin?", u"./link/."}) {
        rmdir({name});
        rmdir({name, u"s"});
        EXPECT_TRUE(isGuardedTreeWhole());
    }
}

TEST_F(DirManipSafetyTest, ResolvedLinksThatLeadInACircleComeToAnEnd) {
    scratch_.writeFile("tree/inner/file");
    makeLink(".", "tree/inner/a");
    makeLink("..", "tree/inner/b");
    EXPECT_EQ(rmdirResolving(u"tree", true), success());
    EXPECT_FALSE(isThere("tree"));
    EXPECT_TRUE(isGuardedTreeWhole());
}

TEST_F(DirManipSafetyTest, CirclesOfLinksComeToAnEndWhereNothingCanBeRemoved) {
    scratch_.writeFile("tree/inner/file");
    for (int link = 0; link < filesInFolder; ++link)
        makeLink("..", "tree/inner/link" + std::to_string(link));
    const Fault denied{.code = vfs::permissionDenied};
    local_->failAt(Operation::removeFile, locationOf(u"tree/inner/file"), denied);
    local_->takeFoldersApart();
    EXPECT_EQ(rmdirResolving(u"tree", true), failure(KORVEX::RMDIR::NoDirectoriesRemoved()));
    EXPECT_TRUE(isThere("tree/inner/file"));
}

/// A tree of an ordinary user, who runs the command.
class DirManipPermissionTest : public DirManipTest {
protected:
    DirManipPermissionTest() { fs::permissions(scratch_.path(), fs::perms::all); }

    void lock(const std::string& name) const { fs::permissions(diskPath(name), fs::perms::none); }
    void protect(const std::string& name) const {
        fs::permissions(diskPath(name), fs::perms::owner_read | fs::perms::owner_exec);
    }
};

TEST_F(DirManipPermissionTest, FolderThatMayNotBeReadStaysAndTheRestGoes) {
    const korvex::tests::OrdinaryUser user;
    scratch_.writeFile("tree/a/file");
    scratch_.writeFile("tree/locked/file");
    scratch_.writeFile("tree/z/file");
    lock("tree/locked");
    const std::u16string line = textOf(KORVEX::FileManip::ReadOnly(pathOf(u"tree/locked")));
    // Once for itself, and once when the whole could not go.
    EXPECT_EQ(rmdir({u"tree", u"s"}), failure(KORVEX::RMDIR::SomeDirectoriesNotRemoved(line + u"\n" + line)));
    EXPECT_FALSE(isThere("tree/a") || isThere("tree/z"));
    fs::permissions(diskPath("tree/locked"), fs::perms::owner_all);
    EXPECT_TRUE(isThere("tree/locked/file"));
}

TEST_F(DirManipPermissionTest, EmptyFolderThatMayNotBeReadGoesWithTheWhole) {
    const korvex::tests::OrdinaryUser user;
    scratch_.makeFolder("tree/locked");
    lock("tree/locked");
    EXPECT_EQ(rmdir({u"tree", u"s"}), success());
    EXPECT_FALSE(isThere("tree"));
}

TEST_F(DirManipPermissionTest, ProtectedFolderIsMadeWritableAndGoes) {
    const korvex::tests::OrdinaryUser user;
    scratch_.writeFile("tree/protected/file");
    protect("tree/protected");
    EXPECT_EQ(rmdir({u"tree", u"s"}), success());
    EXPECT_FALSE(isThere("tree"));
}

TEST_F(DirManipPermissionTest, FolderOfSomebodyElseStaysWithWhatItHolds) {
    scratch_.writeFile("tree/theirs/file");
    fs::permissions(diskPath("tree"), fs::perms::all);
    fs::permissions(diskPath("tree/theirs"),
                    fs::perms::owner_all | fs::perms::others_read | fs::perms::others_exec);
    // Only root can act as somebody else than the owner; for anybody else the storage says what it would.
    if (::geteuid() != 0) {
        local_->failAt(locationOf(u"tree/theirs/file"), {.code = vfs::permissionDenied});
        local_->failAt(Operation::setWritable, locationOf(u"tree/theirs"), {.code = vfs::permissionDenied});
        local_->takeFoldersApart();
    }
    {
        const korvex::tests::OrdinaryUser user;
        EXPECT_EQ(rmdir({u"tree", u"s"}), failure(KORVEX::RMDIR::NoDirectoriesRemoved()));
    }
    EXPECT_TRUE(isThere("tree/theirs/file"));
}

TEST_F(DirManipPermissionTest, NothingIsMadeInAFolderThatIsProtected) {
    const korvex::tests::OrdinaryUser user;
    scratch_.makeFolder("protected");
    protect("protected");
    EXPECT_EQ(mkdir({u"protected/a"}),
              failure(KORVEX::FileManip::OSErrorWithReason(u"Permission denied"), "KORVEX:MKDIR:OSError"));
    EXPECT_TRUE(fs::is_empty(diskPath("protected")));
}

TEST_F(DirManipPermissionTest, FolderThatMayNotBeEnteredHidesWhatIsInIt) {
    const korvex::tests::OrdinaryUser user;
    scratch_.makeFolder("locked/a");
    lock("locked");
    EXPECT_EQ(mkdir({u"locked/a"}),
              failure(KORVEX::FileManip::OSErrorWithReason(u"Permission denied"), "KORVEX:MKDIR:OSError"));
    std::vector<Array> arrays;
    arrays.push_back(text(u"locked/a"));
    EXPECT_THROW(outcomeOf(removeDir, 3, arrays), vfs::Exception);
    fs::permissions(diskPath("locked"), fs::perms::owner_all);
    EXPECT_TRUE(isThere("locked/a"));
}

TEST_F(DirManipSafetyTest, FolderThatIsSwappedForALinkMeanwhileLeadsNowhere) {
    std::mutex swapping;
    const std::jthread swapper([&](const std::stop_token& isOver) {
        while (!isOver.stop_requested()) {
            const std::lock_guard lock(swapping);
            ::renameat2(AT_FDCWD, diskPath("tree/inner").c_str(), AT_FDCWD, diskPath("link").c_str(),
                        RENAME_EXCHANGE);
        }
    });
    constexpr int rounds = 40;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        {
            const std::lock_guard lock(swapping);
            makeTree();
        }
        rmdir({u"tree", u"s"});
        EXPECT_TRUE(isGuardedTreeWhole()) << "in round " << round;
        local_->forgetCalls();  // they hold what was listed
    }
}

}  // namespace
}  // namespace korvex::filemanip::tests
