// What the environment is told, in which order, and with which texts.
#include "runtime/dispatcher/environment_events.h"

#include <filesystem>
#include <stdexcept>

#include "platform/kx.h"
#include "runtime/interpreter/functions.h"
#include "tests/unit/dispatcher/environment.h"

namespace korvex::runtime::dispatcher {
namespace {

namespace vfs = foundation::storage::vfs;
using testing::ElementsAre;

using EnvironmentEventsTest = EnvironmentTest;

TEST_F(EnvironmentEventsTest, ComeInTheOrderInWhichTheyHappen) {
    addToSearchPath({folder("a")});
    markFolderOutOfDate(u"/x");
    requestPathRefresh();
    manager().refresh(false);
    removeFromSearchPath({u"a"});
    kdClearFunctionsByName(u"/x/f.k");
    EXPECT_THAT(announced_, ElementsAre(EnvironmentEvent{Kind::folderOutOfDate, {u"/x"}},
                                        EnvironmentEvent{Kind::pathRefreshRequested, {}},
                                        EnvironmentEvent{Kind::searchPathRefreshed, {}},
                                        EnvironmentEvent{Kind::pathEntriesRemoved, {here_ + u"/a"}},
                                        EnvironmentEvent{Kind::functionsCleared, {u"/x/f.k"}}));
}

TEST_F(EnvironmentEventsTest, FollowWhatTheServicesDid) {
    addToSearchPath({folder("a")});
    std::vector<std::size_t> pathLengths;
    const EventWatcher earlier =
        watchEvents([&](const EnvironmentEvent&) { pathLengths.push_back(searchPath().size()); });
    removeFromSearchPath({u"a"});
    watchEvents(earlier);
    EXPECT_THAT(pathLengths, ElementsAre(0U));
}

TEST_F(EnvironmentEventsTest, ShowFoldersAsMessagesDo) {
    for (const char16_t* text : {u"relative", u"file:///a%20b", u"memory://box/a%20b", u"memory://box", u""})
        markFolderOutOfDate(text);
    GetPerKVMEventManager().notifySpecialSubfolderChange(vfs::AbsoluteIRI(u"memory://box/a%20b"));
    std::vector<std::u16string> texts;
    for (const EnvironmentEvent& event : announced_)
        texts.insert(texts.end(), event.texts.begin(), event.texts.end());
    EXPECT_THAT(texts, ElementsAre(u"relative", u"/a b", u"memory://box/a b", u"memory://box", u"",
                                   u"memory://box/a b"));
}

TEST_F(EnvironmentEventsTest, TellOfACallBeforeTheFunctionActs) {
    interpreter::registerFunction("korvex.test", [](int, kxArray*[], int, const kxArray*[]) {
        requestPathRefresh();
        throw std::domain_error("its own");
    });
    EXPECT_THROW(inCallFcn(0, nullptr, 0, nullptr, "korvex.test"), std::domain_error);
    interpreter::registerFunction("korvex.test", {});
    EXPECT_ANY_THROW(inCallFcn(0, nullptr, 0, nullptr, "korvex.test"));
    EXPECT_THAT(announced_, ElementsAre(EnvironmentEvent{Kind::functionCalled, {u"korvex.test"}},
                                        EnvironmentEvent{Kind::pathRefreshRequested, {}}));
}

TEST_F(EnvironmentEventsTest, ReachTheWatcherWhenTheCurrentFolderIsGone) {
    setCurrentFolderPath(folder("gone"));
    std::filesystem::remove(scratch_.path() / "gone");
    markFolderOutOfDate(u"relative");
    kdClearFunctionsByName(u"relative.k");
    EXPECT_EQ(announced_.size(), 2U);
}

}  // namespace
}  // namespace korvex::runtime::dispatcher
