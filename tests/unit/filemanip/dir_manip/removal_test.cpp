// `rmdir` at work: what goes, what stays, which of its outcomes it is, and whom it tells.
#include "runtime/dispatcher/function_cache.h"
#include "runtime/dispatcher/search_path.h"
#include "runtime/packages/package_registry.h"
#include "tests/unit/filemanip/dir_manip/dir_manip_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = EnvironmentEvent::Kind;
namespace dispatcher = korvex::runtime::dispatcher;
namespace provider = foundation::storage::provider;

class DirManipRemovalTest : public DirManipTest {
protected:
    ~DirManipRemovalTest() override {
        for (const runtime::packages::RegisteredPackage& package : runtime::packages::registeredPackages())
            runtime::packages::unregisterPackage(package.name);
        std::vector<std::u16string> onPath;
        for (const vfs::AbsoluteIRI& entry : dispatcher::searchPath())
            onPath.push_back(vfs::fromAbsoluteIRI(entry));
        dispatcher::removeFromSearchPath(onPath);
    }

    static CommandResult notRemoved(const std::u16string& typed) {
        return failure(KORVEX::RMDIR::DirectoryNotRemoved(typed));
    }
    static CommandResult noneRemoved() { return failure(KORVEX::RMDIR::NoDirectoriesRemoved()); }
    static CommandResult noFolder(const std::u16string& typed) {
        return failure(KORVEX::RMDIR::NotADirectory(typed));
    }
    static CommandResult someNotRemoved(const std::u16string& list) {
        return failure(KORVEX::RMDIR::SomeDirectoriesNotRemoved(list));
    }
    std::u16string isNoFolder(const std::u16string& name) const {
        return textOf(KORVEX::FileManip::NotADirectory(pathOf(name)));
    }
    std::vector<Kind> kindsOfEvents() const {
        std::vector<Kind> kinds;
        for (const EnvironmentEvent& event : events_)
            kinds.push_back(event.kind);
        return kinds;
    }
    void protect(const std::string& name) const {
        fs::permissions(diskPath(name), fs::perms::owner_read | fs::perms::owner_exec);
    }
};

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

// ---- links

TEST_F(DirManipRemovalTest, NamedLinkToAFolderIsNotRemoved) {
    scratch_.makeFolder("target");
    makeLink("target", "link");
    EXPECT_EQ(rmdir({u"link"}), noFolder(u"link"));
    EXPECT_EQ(rmdir({u"link", u"s"}), noFolder(u"link"));
    EXPECT_TRUE(isThere("link"));
    EXPECT_TRUE(isThere("target"));
}

TEST_F(DirManipRemovalTest, SeparatorBehindALinkStillNamesTheLink) {
    scratch_.writeFile("target/file");
    makeLink("target", "link");
    EXPECT_EQ(rmdir({u"link/"}), noFolder(u"link"));
    EXPECT_EQ(rmdir({u"link/", u"s"}), noFolder(u"link"));
    EXPECT_TRUE(isThere("target/file"));
}

TEST_F(DirManipRemovalTest, SeparatorBehindAFolderStaysInTheMessage) {
    scratch_.writeFile("a/file");
    EXPECT_EQ(rmdir({u"a/"}), notRemoved(u"a/"));
}

TEST_F(DirManipRemovalTest, NamedLinkIsResolvedOnRequestAndTheTargetGoes) {
    scratch_.makeFolder("target");
    makeLink("target", "link");
    EXPECT_EQ(rmdirResolving(u"link", false), success());
    EXPECT_FALSE(isThere("target"));
    EXPECT_TRUE(isThere("link"));
}

TEST_F(DirManipRemovalTest, ResolvedLinkGoesWithTheContentsOfItsTarget) {
    scratch_.writeFile("target/file");
    makeLink("target", "first");
    makeLink("first", "second");
    EXPECT_EQ(rmdirResolving(u"second", false), noFolder(u"second"));
    EXPECT_EQ(rmdirResolving(u"second", true), success());
    EXPECT_FALSE(isThere("target"));
    EXPECT_TRUE(isThere("first"));
    EXPECT_TRUE(isThere("second"));
}

TEST_F(DirManipRemovalTest, LinkToAFileAndOneThatLeadsNowhereAreNoFolders) {
    scratch_.writeFile("file");
    makeLink("file", "filelink");
    makeLink("nowhere", "broken");
    makeLink("loop", "loop");
    for (const std::u16string name : {u"filelink", u"broken", u"loop"}) {
        EXPECT_EQ(rmdir({name}), noFolder(name));
        EXPECT_EQ(rmdir({name, u"s"}), noFolder(name));
        EXPECT_EQ(rmdirResolving(name, true), noFolder(name));
    }
    EXPECT_TRUE(isThere("filelink") && isThere("broken") && isThere("loop") && isThere("file"));
}

TEST_F(DirManipRemovalTest, LinksInATreeGoAndWhatTheyLeadToStays) {
    scratch_.writeFile("target/file");
    scratch_.writeFile("file");
    scratch_.makeFolder("a");
    makeLink("../target", "a/folderlink");
    makeLink("../file", "a/filelink");
    makeLink("nowhere", "a/broken");
    makeLink("loop", "a/loop");
    EXPECT_EQ(rmdir({u"a", u"s"}), success());
    EXPECT_FALSE(isThere("a"));
    EXPECT_TRUE(isThere("target/file") && isThere("file"));
}

TEST_F(DirManipRemovalTest, LinkInATreeLeavesThePathOfItsTargetAlone) {
    dispatcher::addToSearchPath({scratch_.makeFolder("target").u16string()});
    scratch_.makeFolder("a");
    makeLink("../target", "a/link");
    EXPECT_EQ(rmdir({u"a", u"s"}), success());
    EXPECT_THAT(dispatcher::searchPath(), ElementsAre(locationOf(u"target")));
}

TEST_F(DirManipRemovalTest, LinksInATreeAreResolvedOnRequestAndTheirTargetsGo) {
    scratch_.writeFile("target/file");
    scratch_.writeFile("file");
    scratch_.makeFolder("a");
    makeLink("../target", "a/folderlink");
    makeLink("../file", "a/filelink");
    EXPECT_EQ(rmdirResolving(u"a", true), success());
    EXPECT_FALSE(isThere("a") || isThere("target") || isThere("file"));
}

// ---- wildcards

TEST_F(DirManipRemovalTest, EveryFolderThatMatchesGoes) {
    scratch_.makeFolder("a1");
    scratch_.makeFolder("a2");
    scratch_.makeFolder("b");
    EXPECT_EQ(rmdir({u"a?"}), success());
    EXPECT_FALSE(isThere("a1") || isThere("a2"));
    EXPECT_TRUE(isThere("b"));
}

TEST_F(DirManipRemovalTest, FileThatMatchesStaysAndIsNamed) {
    scratch_.makeFolder("a1");
    scratch_.writeFile("a2");
    scratch_.writeFile("a3");
    EXPECT_EQ(rmdir({u"a*"}), someNotRemoved(isNoFolder(u"a2") + u"\n" + isNoFolder(u"a3")));
    EXPECT_FALSE(isThere("a1"));
    EXPECT_TRUE(isThere("a2") && isThere("a3"));
    EXPECT_THAT(events_, testing::Not(testing::Contains(EnvironmentEvent{Kind::searchPathRefreshed, {}})));
}

TEST_F(DirManipRemovalTest, LocationThatMatchesIsNamedDecoded) {
    box_->putFolder(boxLocation(u"a1"));
    box_->putFile(boxLocation(u"a 2"), "");
    EXPECT_EQ(rmdir({u"memory://box/a*"}),
              someNotRemoved(textOf(KORVEX::FileManip::NotADirectory(u"memory://box/a 2"))));
}

TEST_F(DirManipRemovalTest, MatchesOfWhichNoneCouldGoAreSilent) {
    scratch_.writeFile("a1");
    scratch_.writeFile("a2/file");
    EXPECT_EQ(rmdir({u"a*"}), success());
    EXPECT_TRUE(isThere("a1") && isThere("a2/file"));
    EXPECT_THAT(events_, IsEmpty());
}

TEST_F(DirManipRemovalTest, WildcardThatMatchesNothingIsNoFolder) {
    EXPECT_EQ(rmdir({u"x*"}), noFolder(pathOf(u"x*")));
    EXPECT_EQ(rmdir({u"memory://box/x*"}),
              failure(KORVEX::virtualfilesystem::resourceNotFound(u"memory://box/x*")));
}

TEST_F(DirManipRemovalTest, WildcardInAFolderThatIsNotThereIsNoFolder) {
    const std::u16string name = u"nothing/x*";
    EXPECT_EQ(rmdir({name}), failure(KORVEX::FileManip::NotADirectory(name), "KORVEX:RMDIR:NotADirectory"));
    EXPECT_EQ(rmdir({u"memory://box/nothing/x*"}),
              failure(KORVEX::virtualfilesystem::resourceNotFound(u"memory://box/nothing/x*")));
}

TEST_F(DirManipRemovalTest, FolderWhoseNameIsAWildcardIsMeantByItself) {
    scratch_.makeFolder("a*");
    scratch_.makeFolder("ab");
    EXPECT_EQ(rmdir({u"a*"}), success());
    EXPECT_FALSE(isThere("a*"));
    EXPECT_TRUE(isThere("ab"));
}

TEST_F(DirManipRemovalTest, MatchingLinkIsPassedOver) {
    scratch_.makeFolder("a1");
    scratch_.makeFolder("target");
    makeLink("target", "a2");
    EXPECT_EQ(rmdir({u"a*"}), success());
    EXPECT_TRUE(isThere("a2") && isThere("target"));
}

TEST_F(DirManipRemovalTest, ListOfFailuresStopsGrowingAndTheRestIsStillDone) {
    for (int file = 0; file < 200; ++file)
        scratch_.writeFile("a" + std::to_string(1000 + file));
    scratch_.makeFolder("az");
    const CommandResult result = rmdir({u"a*"});
    EXPECT_EQ(result.identifier, "KORVEX:RMDIR:SomeDirectoriesNotRemoved");
    EXPECT_GE(result.text.size(), 4096U);
    EXPECT_LT(result.text.size(), 4096U + 500U);
    EXPECT_FALSE(isThere("az"));
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
