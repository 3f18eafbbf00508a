// Trees with more levels than a stack would take: every level is treated as the first one is.
#include "runtime/dispatcher/function_cache.h"
#include "runtime/dispatcher/search_path.h"
#include "tests/support/posix/ordinary_user.h"
#include "tests/unit/filemanip/dir_manip/dir_manip_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace dispatcher = korvex::runtime::dispatcher;
using testing::IsEmpty;

class DirManipDeepTreesTest : public DirManipTest {
protected:
    ~DirManipDeepTreesTest() override {
        for (const dispatcher::CachedFunction& function : dispatcher::cachedFunctions())
            dispatcher::clearFunctionsOf(function.path);
    }

    /// Puts a folder that is there below so many new ones, all of them under its name.
    void sink(const std::string& name, int levels) const {
        // From the bottom up, so that no path gets long.
        for (int level = 0; level < levels; ++level) {
            fs::create_directory(diskPath("above"));
            fs::rename(diskPath(name), diskPath("above/" + name));
            fs::rename(diskPath("above"), diskPath(name));
        }
    }
    /// "d/d/d" with so many names more than one.
    static std::string nested(const std::string& name, int levels) {
        std::string path = name;
        for (int level = 0; level < levels; ++level)
            path += '/' + name;
        return path;
    }
    static std::u16string nested16(const std::string& name, int levels) {
        const std::string path = nested(name, levels);
        return {path.begin(), path.end()};
    }

    /// More than the stack would take, at the cost of a few function calls a level; and some that the system
    /// takes in one path.
    static constexpr int veryDeep = 8000;
    static constexpr int deep = 1000;
};

TEST_F(DirManipDeepTreesTest, NoTreeIsTooDeep) {
    scratch_.writeFile("d/file");
    sink("d", veryDeep);
    EXPECT_EQ(rmdir({u"d", u"s"}), success());
    EXPECT_FALSE(isThere("d"));
    // None of them went with another one.
    EXPECT_EQ(local_->callsOf(Operation::removeFolder).size(), std::size_t{veryDeep} + 1);
}

TEST_F(DirManipDeepTreesTest, SearchPathAndViewsOfItsFoldersDoNotMakeItSlow) {
    dispatcher::addToSearchPath({scratch_.makeFolder("library").u16string()});
    dispatcher::findSourceFile(u"nothing");
    scratch_.makeFolder("d");
    sink("d", deep);
    EXPECT_EQ(rmdir({u"d", u"s"}), success());
    EXPECT_FALSE(isThere("d"));
    // Where a link leads would be a question for each level, and answered level by level.
    EXPECT_THAT(local_->callsOf(Operation::canonicalLocation), testing::SizeIs(testing::Lt(10)));
    dispatcher::removeFromSearchPath({pathOf(u"library")});
}

TEST_F(DirManipDeepTreesTest, NoTreeInMemoryIsTooDeep) {
    box_->createFolderRecursive(boxLocation(nested16("d", deep)));
    EXPECT_EQ(rmdir({u"memory://box/d", u"s"}), success());
    EXPECT_EQ(box_->existence(boxLocation(u"d")), foundation::storage::provider::AsNeither);
    EXPECT_EQ(memory_->callsOf(Operation::removeFolder).size(), std::size_t{deep} + 1);
}

TEST_F(DirManipDeepTreesTest, FailureElsewhereIsNotForgotten) {
    scratch_.makeFolder("a");
    scratch_.makeFolder("d");
    sink("d", deep);
    local_->failAt(Operation::removeFolder, locationOf(u"a"), {.code = vfs::permissionDenied});
    EXPECT_EQ(
        rmdir({u"?", u"s"}),
        failure(KORVEX::RMDIR::SomeDirectoriesNotRemoved(textOf(KORVEX::FileManip::ReadOnly(pathOf(u"a"))))));
    EXPECT_FALSE(isThere("d"));
}

TEST_F(DirManipDeepTreesTest, FailureDeepDownStopsNothingElse) {
    scratch_.writeFile("d/a");
    scratch_.writeFile("d/b");
    sink("d", deep);
    const std::u16string bottom = nested16("d", deep);
    local_->failAt(Operation::removeFile, locationOf(bottom + u"/a"), {.code = vfs::permissionDenied});
    EXPECT_EQ(rmdir({u"d", u"s"}), success());
    const std::vector<Call> removals = local_->callsOf(Operation::removeFile);
    ASSERT_EQ(removals.size(), 2U);
    EXPECT_EQ(removals[1].location, locationOf(bottom + u"/b"));
    // Once more for the folder with the file in it, which goes as a whole.
    EXPECT_EQ(local_->callsOf(Operation::removeFolder).size(), std::size_t{deep} + 2);
}

TEST_F(DirManipDeepTreesTest, ProtectedFolderDeepDownIsMadeWritableAndGoes) {
    fs::permissions(scratch_.path(), fs::perms::all);
    const korvex::tests::OrdinaryUser user;
    scratch_.writeFile("d/file");
    sink("d", deep);
    fs::permissions(diskPath(nested("d", deep)), fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(rmdir({u"d", u"s"}), success());
    EXPECT_FALSE(isThere("d"));
}

TEST_F(DirManipDeepTreesTest, FunctionsOfSourceFilesDeepDownAreCleared) {
    scratch_.writeFile("d/solve.k");
    sink("d", deep);
    dispatcher::cacheFunction(pathOf(nested16("d", deep) + u"/solve.k"));
    ASSERT_EQ(dispatcher::cachedFunctions().size(), 1U);
    EXPECT_EQ(rmdir({u"d", u"s"}), success());
    EXPECT_THAT(dispatcher::cachedFunctions(), IsEmpty());
}

}  // namespace
}  // namespace korvex::filemanip::tests
