// What `delete` tells the environment: cached functions, path entries above, packages.
#include "platform/dispatcher.h"
#include "runtime/dispatcher/folder_views.h"
#include "runtime/dispatcher/function_cache.h"
#include "runtime/packages/package_registry.h"
#include "tests/unit/filemanip/delete/delete_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace dispatching = korvex::runtime::dispatcher;
using testing::ElementsAre;
using testing::IsEmpty;

class DeleteEnvironmentTest : public DeleteTest {
protected:
    std::string upstream(const std::u16string& name) const {
        return "upstreamEntriesNotified " + runtime::text::toDisplayBytes(pathOf(name));
    }
    std::string cleared(const std::u16string& name) const {
        return "functionsCleared " + runtime::text::toDisplayBytes(pathOf(name));
    }
    std::vector<std::string> eventsOf(const Texts& names) {
        environment_.takeEvents();
        deleteNames(names);
        return environment_.takeEvents();
    }
};

TEST_F(DeleteEnvironmentTest, PathEntriesAboveEachLocalFileAreTold) {
    make({"a", "d/b1", "d/b2"});
    EXPECT_THAT(eventsOf({u"a", u"d/b*", u"nothing"}),
                ElementsAre(upstream(u"a"), upstream(u"d/b1"), upstream(u"d/b2")));
}

TEST_F(DeleteEnvironmentTest, NothingIsToldOfOtherStorageAndOfFolders) {
    make({"d/"});
    makeInBox({u"a", u"f.k"});
    EXPECT_THAT(eventsOf({u"memory://box/a", u"memory://box/f.k", u"d", u"d*", u"nothing*", u""}), IsEmpty());
}

TEST_F(DeleteEnvironmentTest, NothingIsToldOfARemovalThatFails) {
    make({"a"});
    local_->failAt(Operation::removeFile, locationOf(u"a"), {.code = vfs::ioError});
    EXPECT_THAT(eventsOf({u"a"}), IsEmpty());
}

TEST_F(DeleteEnvironmentTest, FolderViewsAboveAreForgotten) {
    make({"d/f.k"});
    const vfs::CanonicalAbsoluteIRI folder(locationOf(u"d"));
    EXPECT_THAT(dispatching::folderView(folder)->sourceFiles, ElementsAre(u"f.k"));
    deleteNames({u"d/f.k"});
    EXPECT_THAT(dispatching::folderView(folder)->sourceFiles, IsEmpty());
}

// ------------------------------------------------------------------------------------- cached functions

TEST_F(DeleteEnvironmentTest, FunctionsOfSourceFilesAreCleared) {
    make({"f.k", "g.klx", "h.K"});
    dispatching::cacheFunction(u"f.k");
    dispatching::cacheFunction(u"g.klx");
    EXPECT_THAT(eventsOf({u"f.k", u"*.klx", u"h.K"}),
                ElementsAre(cleared(u"f.k"), upstream(u"f.k"), cleared(u"g.klx"), upstream(u"g.klx"),
                            cleared(u"h.K"), upstream(u"h.K")));
    EXPECT_THAT(dispatching::cachedFunctions(), IsEmpty());
}

TEST_F(DeleteEnvironmentTest, FilesThatAreNotExecutedClearNothing) {
    make({"a.txt", "k", "a.", "a.kk", "a.k.txt", ".klxx"});
    for (const std::string& event : eventsOf({u"a.txt", u"k", u"a.", u"a.kk", u"a.k.txt", u".klxx"}))
        EXPECT_TRUE(event.starts_with("upstreamEntriesNotified")) << event;
    EXPECT_EQ(left(), Names{});
}

TEST_F(DeleteEnvironmentTest, FunctionsAreClearedAheadOfTheRemovalAlsoOfOneThatFails) {
    make({"f.k"});
    dispatching::cacheFunction(u"f.k");
    local_->failAt(Operation::removeFile, locationOf(u"f.k"), {.code = vfs::ioError});
    EXPECT_THAT(eventsOf({u"f.k"}), ElementsAre(cleared(u"f.k")));
    EXPECT_THAT(dispatching::cachedFunctions(), IsEmpty());
}

TEST_F(DeleteEnvironmentTest, NoProtectedFunctionIsLoadedMeanwhile) {
    make({"f.k", "g.k"});
    std::vector<bool> allowed;
    const auto watcher = dispatching::watchEvents([&](const dispatching::EnvironmentEvent&) {
        allowed.push_back(Kdispatcher::getDispatcher().loadLmBuiltinAllowed);
    });
    deleteNames({u"f.k"});
    EXPECT_THAT(allowed, ElementsAre(false, true)) << "while functions are cleared, and behind that";
    Kdispatcher::getDispatcher().loadLmBuiltinAllowed = false;
    deleteNames({u"g.k"});
    EXPECT_FALSE(Kdispatcher::getDispatcher().loadLmBuiltinAllowed) << "it is as it was before";
    Kdispatcher::getDispatcher().loadLmBuiltinAllowed = true;
    dispatching::watchEvents(watcher);
}

TEST_F(DeleteEnvironmentTest, TheFlagComesBackWhenClearingFails) {
    make({"f.k"});
    const auto watcher = dispatching::watchEvents(
        [](const dispatching::EnvironmentEvent&) { throw std::runtime_error("the watcher fails"); });
    EXPECT_THROW(outcomeOfArrays(text(u"f.k")), std::runtime_error);
    dispatching::watchEvents(watcher);
    EXPECT_TRUE(Kdispatcher::getDispatcher().loadLmBuiltinAllowed);
}

// --------------------------------------------------------------------------------------------- packages

class DeletePackagesTest : public DeleteEnvironmentTest {
protected:
    DeletePackagesTest() {
        runtime::configuration::setConfigurationFolder((configuration_.path() / "korvex").u16string());
        make({"fixed/kpackage.json", "fixed/a1", "fixed/a2", "fixed/d/b", "open/kpackage.json", "open/a",
              "out"});
        runtime::packages::registerPackage(pathOf(u"fixed"), u"Fixed", false);
        runtime::packages::registerPackage(pathOf(u"open"), u"Open", true);
    }

    std::string notice(const std::u16string& name, const std::u16string& package) const {
        return warning(KORVEX::DELETE::DeletedFileFromPackage(pathOf(name), package));
    }

    korvex::tests::ScratchFolder configuration_;
};

TEST_F(DeletePackagesTest, FileOfAPackageIsToldAndGoes) {
    EXPECT_THAT(deleteNames({u"fixed/a1", u"fixed/d/b"}),
                ElementsAre(notice(u"fixed/a1", u"Fixed"), notice(u"fixed/d/b", u"Fixed")));
    EXPECT_FALSE(fs::exists(diskPath("fixed/a1")));
    EXPECT_FALSE(fs::exists(diskPath("fixed/d/b")));
}

TEST_F(DeletePackagesTest, EachMatchIsToldAheadOfItsRemoval) {
    local_->failAt(Operation::removeFile, locationOf(u"fixed/a2"), {.code = vfs::ioError});
    EXPECT_THAT(deleteNames({u"fixed/a*"}),
                ElementsAre(notice(u"fixed/a1", u"Fixed"), notice(u"fixed/a2", u"Fixed"),
                            warning(KORVEX::DELETE::Permission())));
}

TEST_F(DeletePackagesTest, MatchThatLeadsIntoAPackageIsToldOfWhenLinksAreResolved) {
    make({"links/"});
    makeLink("../fixed/a1", "links/toA");
    EXPECT_THAT(deleteResolving(u"links/*"), ElementsAre(notice(u"fixed/a1", u"Fixed")));
    EXPECT_FALSE(fs::exists(diskPath("fixed/a1")));
}

TEST_F(DeletePackagesTest, NoticeStandsBetweenTheUnprotectionAndTheRemoval) {
    std::vector<Operation> steps;
    const auto receiver = runtime::interpreter::setWarningReceiver([&](const runtime::interpreter::Warning&) {
        for (const storage::Call& call : local_->calls())
            steps.push_back(call.operation);
    });
    EXPECT_EQ(outcomeOfArrays(text(u"fixed/a1")).errorIdentifier, "");
    runtime::interpreter::setWarningReceiver(receiver);
    EXPECT_THAT(steps, testing::Contains(Operation::setWritable));
    EXPECT_THAT(steps, testing::Not(testing::Contains(Operation::removeFile)));
    EXPECT_EQ(local_->callsOf(Operation::setWritable).size(), 1U);
    EXPECT_EQ(local_->callsOf(Operation::removeFile).size(), 1U);
}

TEST_F(DeletePackagesTest, OfAnEditablePackageOnlyTheDefinitionIsToldOf) {
    EXPECT_THAT(deleteNames({u"open/a", u"open/kpackage.json"}),
                ElementsAre(notice(u"open/kpackage.json", u"Open")));
}

TEST_F(DeletePackagesTest, NothingIsSaidOutsideOfPackagesAndWhileTheyAreOff) {
    EXPECT_THAT(deleteNames({u"out"}), IsEmpty());
    runtime::packages::setPackageManagerEnabled(false);
    EXPECT_THAT(deleteNames({u"fixed/a1"}), IsEmpty());
}

TEST_F(DeletePackagesTest, LocationsAreToldOfToo) {
    makeInBox({u"p/a"});
    runtime::packages::registerPackage(u"memory://box/p", u"Boxed", false);
    EXPECT_THAT(deleteNames({u"memory://box/p/a"}),
                ElementsAre(warning(KORVEX::DELETE::DeletedFileFromPackage(u"memory://box/p/a", u"Boxed"))));
}

TEST_F(DeletePackagesTest, RegistryThatCannotBeReadStopsTheRemovalWithAWarning) {
    fs::remove(configuration_.path() / "korvex" / "packages.json");
    fs::create_directory(configuration_.path() / "korvex" / "packages.json");
    EXPECT_THAT(deleteNames({u"fixed/a1"}), ElementsAre(warning(KORVEX::DELETE::Permission())));
    EXPECT_TRUE(fs::exists(diskPath("fixed/a1")));
    make({"fixed/a0/"});
    EXPECT_THAT(deleteNames({u"fixed/a*"}),
                ElementsAre(warning(KORVEX::DELETE::DirectoryDeletion(pathOf(u"fixed/a0"))),
                            warning(KORVEX::DELETE::Permission())))
        << "folders are passed over, the first file tells";
    EXPECT_TRUE(fs::exists(diskPath("fixed/a1")) && fs::exists(diskPath("fixed/a2")));
}

}  // namespace
}  // namespace korvex::filemanip::tests
