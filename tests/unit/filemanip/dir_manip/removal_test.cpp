// `rmdir` at work on folders: what goes, what stays, which of its outcomes it is, and whom it tells. (Links
// and wildcards: removal_of_links_test.cpp.)
#include "runtime/configuration/configuration_folder.h"
#include "runtime/dispatcher/function_cache.h"
#include "runtime/interpreter/interrupts.h"
#include "tests/unit/filemanip/dir_manip/removal_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// ---- one folder

TEST_F(DirManipRemovalTest, EmptyFolderGoesAndThePathIsReadAgain) {
    scratch_.makeFolder("a");
    EXPECT_EQ(rmdir({u"a"}), success());
    EXPECT_FALSE(isThere("a"));
    EXPECT_THAT(kindsOfEvents(), ElementsAre(Kind::upstreamEntriesNotified, Kind::searchPathRefreshed));
    EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(DirManipRemovalTest, EmptyFolderOfAnotherSchemeGoes) {
    box_->putFolder(boxLocation(u"a"));
    EXPECT_EQ(rmdir({u"memory://box/a"}), success());
    EXPECT_EQ(box_->existence(boxLocation(u"a")), provider::AsNeither);
    EXPECT_THAT(kindsOfEvents(), ElementsAre(Kind::searchPathRefreshed));
}

TEST_F(DirManipRemovalTest, FolderThatHoldsSomethingStays) {
    scratch_.writeFile("a/file");
    EXPECT_EQ(rmdir({u"a"}), notRemoved(u"a"));
    EXPECT_TRUE(isThere("a/file"));
    EXPECT_THAT(events_, IsEmpty());
}

TEST_F(DirManipRemovalTest, FolderThatIsNotWritableIsRefusedUntried) {
    scratch_.makeFolder("a");
    protect("a");
    EXPECT_EQ(rmdir({u"a"}), notRemoved(u"a"));
    EXPECT_TRUE(isThere("a"));
    EXPECT_THAT(local_->callsOf(Operation::removeFolder), IsEmpty());
}

TEST_F(DirManipRemovalTest, WhatIsNotThereIsNoFolder) {
    EXPECT_EQ(rmdir({u"nothing"}), noFolder(pathOf(u"nothing")));
    EXPECT_EQ(rmdir({u"nothing", u"s"}), noFolder(pathOf(u"nothing")));
    EXPECT_EQ(rmdir({u"memory://box/nothing"}),
              failure(KORVEX::virtualfilesystem::resourceNotFound(u"memory://box/nothing")));
}

TEST_F(DirManipRemovalTest, RootThatIsNotThereIsNoFolder) {
    EXPECT_EQ(rmdir({u"file://host/"}),
              failure(KORVEX::virtualfilesystem::resourceNotFound(u"file://host/")));
}

TEST_F(DirManipRemovalTest, FileIsRefusedAndStays) {
    scratch_.writeFile("file");
    EXPECT_EQ(rmdir({u"file"}), notRemoved(u"file"));
    EXPECT_EQ(rmdir({u"file", u"s"}), noneRemoved());
    EXPECT_TRUE(isThere("file"));
    EXPECT_THAT(local_->callsOf(Operation::removeFile), IsEmpty());
}

// ---- with contents

TEST_F(DirManipRemovalTest, TreeGoesItemByItemInTheOrderOfNames) {
    scratch_.writeFile("a/b/file");
    scratch_.writeFile("a/c");
    EXPECT_EQ(rmdir({u"a", u"s"}), success());
    EXPECT_FALSE(isThere("a"));
    std::vector<Call> removals = local_->callsOf(Operation::removeFile);
    EXPECT_THAT(removals, ElementsAre(Call{Operation::removeFile, locationOf(u"a/b/file")},
                                      Call{Operation::removeFile, locationOf(u"a/c")}));
    EXPECT_THAT(local_->callsOf(Operation::removeFolder),
                ElementsAre(Call{Operation::removeFolder, locationOf(u"a/b")},
                            Call{Operation::removeFolder, locationOf(u"a")}));
}

TEST_F(DirManipRemovalTest, EmptyFolderGoesWithContentsToo) {
    scratch_.makeFolder("a");
    EXPECT_EQ(rmdir({u"a", u"S"}), success());
    EXPECT_FALSE(isThere("a"));
}

TEST_F(DirManipRemovalTest, TreeOfAnotherSchemeGoes) {
    box_->putFile(boxLocation(u"a/b/file"), "content");
    EXPECT_EQ(rmdir({u"memory://box/a", u"s"}), success());
    EXPECT_EQ(box_->existence(boxLocation(u"a")), provider::AsNeither);
}

TEST_F(DirManipRemovalTest, ProtectedFilesAndFoldersInATreeAreMadeWritableFirst) {
    scratch_.writeFile("a/b/file");
    protect("a/b/file");
    protect("a/b");
    local_->forgetCalls();
    EXPECT_EQ(rmdir({u"a", u"s"}), success());
    EXPECT_FALSE(isThere("a"));
    EXPECT_THAT(local_->callsOf(Operation::setWritable),
                ElementsAre(Call{Operation::setWritable, locationOf(u"a/b/file")},
                            Call{Operation::setWritable, locationOf(u"a/b")},
                            Call{Operation::setWritable, locationOf(u"a")}));
}

TEST_F(DirManipRemovalTest, MemberThatWouldNotGoGoesWithTheWhole) {
    scratch_.writeFile("a/file");
    scratch_.writeFile("a/other");
    local_->failCall(Operation::removeFile, 1, {.code = vfs::permissionDenied});
    EXPECT_EQ(rmdir({u"a", u"s"}), success());
    EXPECT_FALSE(isThere("a"));
}

TEST_F(DirManipRemovalTest, SomethingThatFailedElsewhereIsForgottenByAWholeRemoval) {
    scratch_.makeFolder("a1");
    scratch_.writeFile("a2/file");
    local_->failCall(Operation::removeFolder, 1, {.code = vfs::permissionDenied});
    local_->failCall(Operation::removeFile, 1, {.code = vfs::permissionDenied});
    EXPECT_EQ(rmdir({u"a*", u"s"}), success());
    EXPECT_TRUE(isThere("a1"));
    EXPECT_FALSE(isThere("a2"));
}

TEST_F(DirManipRemovalTest, FunctionsOfRemovedSourceFilesAreCleared) {
    scratch_.writeFile("a/x.k");
    scratch_.writeFile("a/x.txt");
    dispatcher::cacheFunction(pathOf(u"a/x.k"));
    events_.clear();
    rmdir({u"a", u"s"});
    EXPECT_THAT(events_, testing::Contains(EnvironmentEvent{Kind::functionsCleared, {pathOf(u"a/x.k")}}));
    EXPECT_THAT(kindsOfEvents(), testing::Contains(Kind::functionsCleared).Times(1));
    EXPECT_THAT(dispatcher::cachedFunctions(), IsEmpty());
}

TEST_F(DirManipRemovalTest, FoldersLeaveThePathOneByOne) {
    dispatcher::addToSearchPath(
        {scratch_.makeFolder("a/b").u16string(), scratch_.makeFolder("a").u16string()});
    rmdir({u"a", u"s"});
    EXPECT_THAT(warnings_, ElementsAre("KORVEX:RMDIR:RemovedFromPath", "KORVEX:RMDIR:RemovedFromPath"));
    EXPECT_EQ(runtime::interpreter::lastWarning().text, textOf(KORVEX::RMDIR::RemovedFromPath(pathOf(u"a"))));
    EXPECT_THAT(dispatcher::searchPath(), IsEmpty());
}

TEST_F(DirManipRemovalTest, FolderThatLeftThePathStaysOffItWhenALaterItemFails) {
    dispatcher::addToSearchPath({scratch_.makeFolder("a1").u16string()});
    scratch_.writeFile("a2/file");
    EXPECT_EQ(rmdir({u"a*"}), someNotRemoved(textOf(KORVEX::FileManip::CouldNotRemove(pathOf(u"a2")))));
    EXPECT_THAT(dispatcher::searchPath(), IsEmpty());
}

TEST_F(DirManipRemovalTest, WholeRemovalTakesTheTreeOffThePath) {
    dispatcher::addToSearchPath(
        {scratch_.makeFolder("a/b").u16string(), scratch_.makeFolder("ab").u16string()});
    local_->failCall(Operation::removeFolder, 1, {.code = vfs::permissionDenied});
    EXPECT_EQ(rmdir({u"a", u"s"}), success());
    // "ab" leaves the path too: the tree's text is compared by characters.
    EXPECT_THAT(dispatcher::searchPath(), IsEmpty());
    EXPECT_THAT(warnings_, ElementsAre("KORVEX:RMDIR:RemovedFromPath", "KORVEX:RMDIR:RemovedFromPath"));
    EXPECT_TRUE(isThere("ab"));
}

TEST_F(DirManipRemovalTest, PathThatCannotBeWrittenIsWarnedOfAndTheFolderIsOffItAllTheSame) {
    runtime::configuration::setConfigurationFolder(scratch_.makeFolder("configuration").u16string());
    dispatcher::addToSearchPath({scratch_.makeFolder("a").u16string()});
    protect("configuration/path.json");
    EXPECT_EQ(rmdir({u"a"}), success());
    EXPECT_THAT(dispatcher::searchPath(), IsEmpty());
    EXPECT_THAT(warnings_, ElementsAre("KORVEX:host:searchPathNotWritten", "KORVEX:RMDIR:RemovedFromPath"));
    runtime::configuration::setConfigurationFolder(u"");
}

TEST_F(DirManipRemovalTest, SourceFileThatWentIsNotFoundAlthoughSomethingElseStayed) {
    scratch_.writeFile("a1/solve.k");
    scratch_.writeFile("a2");
    dispatcher::addToSearchPath({pathOf(u"a1")});
    EXPECT_EQ(dispatcher::findSourceFile(u"solve").size(), 1U);
    // The folder itself stays on the path, and nothing reads that again.
    local_->failAt(Operation::removeFolder, locationOf(u"a1"), {.code = vfs::permissionDenied});
    EXPECT_EQ(rmdir({u"a*", u"s"}).identifier, "KORVEX:RMDIR:SomeDirectoriesNotRemoved");
    EXPECT_THAT(dispatcher::findSourceFile(u"solve"), IsEmpty());
}

// ---- interrupts

/// A user who has seen enough when the first file has gone.
class InterruptedDisk : public runtime::storage::LocalProvider {
public:
    ~InterruptedDisk() override { runtime::interpreter::takeInterrupt(); }
    void removeFile(const vfs::AbsoluteIRI& file) override {
        LocalProvider::removeFile(file);
        runtime::interpreter::raiseInterrupt();
    }
};

TEST_F(DirManipRemovalTest, InterruptLeavesTheRestOfTheTreeAndStaysPending) {
    for (const char* file : {"a/1", "a/2", "a/b/3"})
        scratch_.writeFile(file);
    auto system = std::make_shared<vfs::StorageSystem>();
    system->add(u"file", std::make_shared<InterruptedDisk>());
    const runtime::storage::ScopedStorageSystem interrupted(system);
    rmdir({u"a", u"s"});
    EXPECT_FALSE(isThere("a/1"));
    EXPECT_TRUE(isThere("a/2") && isThere("a/b/3"));
    EXPECT_TRUE(runtime::interpreter::isInterruptPending());
}

TEST_F(DirManipRemovalTest, InterruptThatIsPendingLeavesTheWholeTree) {
    scratch_.writeFile("a/b/file");
    box_->putFile(boxLocation(u"a/b/file"), "");
    runtime::interpreter::raiseInterrupt();
    EXPECT_EQ(rmdir({u"a", u"s"}), noneRemoved());
    EXPECT_EQ(rmdir({u"memory://box/a", u"s"}), noneRemoved());
    EXPECT_TRUE(runtime::interpreter::takeInterrupt());
    EXPECT_TRUE(isThere("a/b/file"));
    EXPECT_EQ(box_->existence(boxLocation(u"a/b/file")), provider::AsFile);
}

// ---- packages

TEST_F(DirManipRemovalTest, EachItemOfAPackageIsTold) {
    scratch_.writeFile("package/a/file");
    scratch_.makeFolder("package/b");
    runtime::packages::registerPackage(pathOf(u"package"), u"Tools", false);
    rmdir({u"package/a", u"s"});
    EXPECT_THAT(warnings_,
                ElementsAre("KORVEX:RMDIR:RemovedFileFromPackage", "KORVEX:RMDIR:RemovedFolderFromPackage"));
    rmdir({u"package/b"});
    EXPECT_EQ(runtime::interpreter::lastWarning().text,
              textOf(KORVEX::RMDIR::RemovedFolderFromPackage(pathOf(u"package/b"), u"Tools")));
}

TEST_F(DirManipRemovalTest, OfAnEditablePackageTheFoldersAreTold) {
    scratch_.writeFile("package/a/file");
    runtime::packages::registerPackage(pathOf(u"package"), u"Tools", true);
    rmdir({u"package/a", u"s"});
    EXPECT_THAT(warnings_, ElementsAre("KORVEX:RMDIR:RemovedFolderFromEditablePackage"));
}

TEST_F(DirManipRemovalTest, WhatIsNotTriedIsNotTold) {
    scratch_.writeFile("package/a/file");
    scratch_.writeFile("package/file");
    scratch_.makeFolder("package/protected");
    protect("package/protected");
    runtime::packages::registerPackage(pathOf(u"package"), u"Tools", false);
    rmdir({u"package/file"});
    rmdir({u"package/protected"});
    EXPECT_THAT(warnings_, IsEmpty());
    rmdir({u"package/a"});
    EXPECT_THAT(warnings_, ElementsAre("KORVEX:RMDIR:RemovedFolderFromPackage"));
}

}  // namespace
}  // namespace korvex::filemanip::tests
