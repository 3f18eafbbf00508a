// What the interpreter is told when folders and source files have gone.
#include "io/filesystem/filemanip/DirManip_search_path.h"

#include "runtime/dispatcher/function_cache.h"
#include "runtime/dispatcher/search_path.h"
#include "runtime/storage/location.h"
#include "tests/unit/filemanip/dir_manip/dir_manip_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = EnvironmentEvent::Kind;
namespace dispatcher = korvex::runtime::dispatcher;

constexpr const char* removedFromPath = "KORVEX:RMDIR:RemovedFromPath";

class DirManipSearchPathTest : public DirManipTest {
protected:
    ~DirManipSearchPathTest() override { dispatcher::removeFromSearchPath(shownPath()); }

    /// Makes folders and puts them on the path, in this order.
    void putOnPath(const std::vector<std::string>& names) {
        std::vector<std::u16string> folders;
        for (const std::string& name : names)
            folders.push_back(scratch_.makeFolder(name).u16string());
        ASSERT_TRUE(dispatcher::addToSearchPath(folders).empty());
        events_.clear();
    }
    static std::vector<std::u16string> shownPath() {
        std::vector<std::u16string> folders;
        for (const vfs::AbsoluteIRI& entry : dispatcher::searchPath())
            folders.push_back(vfs::fromAbsoluteIRI(entry));
        return folders;
    }
    EnvironmentEvent removed(const std::vector<std::u16string>& names) const {
        EnvironmentEvent event{Kind::pathEntriesRemoved, {}};
        for (const std::u16string& name : names)
            event.texts.push_back(pathOf(name));
        return event;
    }
    EnvironmentEvent notifiedAbove(const std::u16string& name) const {
        return {Kind::upstreamEntriesNotified, {pathOf(name)}};
    }
};

TEST_F(DirManipSearchPathTest, FunctionsOfSourceFilesAreCleared) {
    for (const std::u16string name : {u"x.k", u"x.K", u"x.klx", u"x.KLX", u"x.y.Klx"}) {
        events_.clear();
        clearKFunction(locationOf(name));
        EXPECT_THAT(events_, ElementsAre(EnvironmentEvent{Kind::functionsCleared, {pathOf(name)}}));
    }
}

TEST_F(DirManipSearchPathTest, OtherFilesAndOtherSchemesClearNothing) {
    for (const std::u16string name : {u"x.txt", u"x", u"k", u"x.kl", u"x.klxx", u"x.k.txt", u"x.k~"})
        clearKFunction(locationOf(name));
    clearKFunction(boxLocation(u"x.k"));
    EXPECT_THAT(events_, IsEmpty());
}

TEST_F(DirManipSearchPathTest, FolderLeavesThePathWithAWarning) {
    putOnPath({"a", "b"});
    updateWindowsPath(locationOf(u"a"));
    EXPECT_THAT(shownPath(), ElementsAre(pathOf(u"b")));
    EXPECT_THAT(warnings_, ElementsAre(removedFromPath));
    EXPECT_EQ(runtime::interpreter::lastWarning().text, textOf(KORVEX::RMDIR::RemovedFromPath(pathOf(u"a"))));
    EXPECT_THAT(events_, ElementsAre(removed({u"a"}), notifiedAbove(u"a")));
}

TEST_F(DirManipSearchPathTest, FolderThatWasNotOnThePathGivesNoWarning) {
    putOnPath({"a"});
    updateWindowsPath(locationOf(u"b"));
    EXPECT_THAT(shownPath(), ElementsAre(pathOf(u"a")));
    EXPECT_THAT(warnings_, IsEmpty());
    EXPECT_THAT(events_, ElementsAre(notifiedAbove(u"b")));
}

TEST_F(DirManipSearchPathTest, FolderOnANetworkShareHasThePathReadAgain) {
    const vfs::AbsoluteIRI onShare = runtime::storage::makeLocation(u"file", u"", uR"(\\host\share\dir)");
    const vfs::AbsoluteIRI onDrive = runtime::storage::makeLocation(u"file", u"", uR"(C:\share\dir)");
    updateWindowsPath(onDrive);
    EXPECT_THAT(events_, testing::SizeIs(1));
    updateWindowsPath(onShare);
    EXPECT_EQ(events_.back().kind, Kind::searchPathRefreshed);
}

TEST_F(DirManipSearchPathTest, AfterAWholeCommandNothingIsLeftToDo) {
    putOnPath({"a"});
    updateUnixPath({locationOf(u"a")});
    EXPECT_THAT(shownPath(), ElementsAre(pathOf(u"a")));
    EXPECT_THAT(events_, IsEmpty());
}

TEST_F(DirManipSearchPathTest, TreeLeavesThePathInOneStepAndInThePathsOrder) {
    putOnPath({"a/z", "other", "a", "a/b/c"});
    const auto entries = removeFolderTreeFromPath(locationOf(u"a"), false);
    EXPECT_THAT(entries, ElementsAre(locationOf(u"a/z"), locationOf(u"a"), locationOf(u"a/b/c")));
    EXPECT_THAT(shownPath(), ElementsAre(pathOf(u"other")));
    EXPECT_THAT(warnings_, IsEmpty());
    EXPECT_THAT(events_, ElementsAre(notifiedAbove(u"a/z"), notifiedAbove(u"a"), notifiedAbove(u"a/b/c"),
                                     removed({u"a/z", u"a", u"a/b/c"})));
}

TEST_F(DirManipSearchPathTest, TreeWarnsOfEachEntryWhereItIsAskedTo) {
    putOnPath({"a/b", "a"});
    removeFolderTreeFromPath(locationOf(u"a"), true);
    EXPECT_THAT(warnings_, ElementsAre(removedFromPath, removedFromPath));
    EXPECT_EQ(runtime::interpreter::lastWarning().text, textOf(KORVEX::RMDIR::RemovedFromPath(pathOf(u"a"))));
}

TEST_F(DirManipSearchPathTest, PrefixIsComparedByCharactersWithoutRegardForSeparators) {
    putOnPath({"a/bc", "a/b", "a/c", "a"});
    const auto entries = removeFolderTreeFromPath(locationOf(u"a/b"), false);
    EXPECT_THAT(entries, ElementsAre(locationOf(u"a/bc"), locationOf(u"a/b")));
    EXPECT_THAT(shownPath(), ElementsAre(pathOf(u"a/c"), pathOf(u"a")));
}

TEST_F(DirManipSearchPathTest, TreeThatIsNotOnThePathChangesNothing) {
    putOnPath({"a"});
    EXPECT_THAT(removeFolderTreeFromPath(locationOf(u"b"), true), IsEmpty());
    EXPECT_THAT(shownPath(), ElementsAre(pathOf(u"a")));
    EXPECT_THAT(events_, IsEmpty());
    EXPECT_THAT(warnings_, IsEmpty());
}

}  // namespace
}  // namespace korvex::filemanip::tests
