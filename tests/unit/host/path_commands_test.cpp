// The host's commands for search path, functions and packages, where a session file cannot show it.
#include "host/kwsh/path_commands.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "runtime/configuration/configuration_folder.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/dispatcher/folder_views.h"
#include "runtime/dispatcher/function_cache.h"
#include "runtime/dispatcher/search_path.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/host/host_fixture.h"

namespace korvex::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
namespace environment = runtime::dispatcher;

/// The current folder is a scratch folder, with the configuration in a folder of it.
class PathCommands : public testing::Test {
protected:
    PathCommands() {
        environment::setCurrentFolderPath(scratch.text());
        runtime::configuration::setConfigurationFolder(scratch.text() + u"/configuration");
        environment::forgetFolderViews();
    }
    ~PathCommands() override {
        runtime::configuration::setConfigurationFolder(u"");
        for (const environment::CachedFunction& function : environment::cachedFunctions())
            environment::clearFunctionsOf(function.path);
        environment::setCurrentFolderPath(u"/");
    }

    /// The identifiers of the errors of a run.
    std::vector<std::string> failuresOf(const std::string& text) {
        host.presenter.failures.clear();
        host.run(text);
        std::vector<std::string> identifiers;
        for (const host::Failure& failure : host.presenter.failures)
            identifiers.push_back(failure.identifier);
        return identifiers;
    }

    ScratchFolder scratch;
    HostSession host;
};

TEST_F(PathCommands, TheEmptyPathIsAnEmptyColumn) {
    EXPECT_EQ(host.show("path"), "nothing");
    EXPECT_EQ(host.show("size(path)"), "    0    1");
    EXPECT_EQ(host.show("size(functions)"), "    0    1");
    EXPECT_EQ(host.show("size(package('list'))"), "    0    1");
}

TEST_F(PathCommands, WhatTheShellHasMadeIsFound) {
    scratch.makeFolder("tools");
    EXPECT_THAT(failuresOf("addpath tools\nload solve\n!touch tools/solve.k\nload solve"),
                ElementsAre("KORVEX:host:cannotLoad"));
    EXPECT_EQ(environment::cachedFunctions().size(), 1U);
}

TEST_F(PathCommands, AMissingStringIsNoFolder) {
    EXPECT_THAT(failuresOf("addpath(missing)\nrmpath([\"a\" missing])\naddpath({{'a'}})"),
                ElementsAre("KORVEX:host:badArgument", "KORVEX:host:badArgument", "KORVEX:host:badArgument"));
}

TEST_F(PathCommands, APathThatCannotBeKeptIsAWarningAndHolds) {
    scratch.makeFolder("configuration/path.json");
    EXPECT_THAT(failuresOf("addpath ."), IsEmpty());
    EXPECT_THAT(host.presenter.events, testing::Contains("warned KORVEX:host:searchPathNotWritten"));
    EXPECT_EQ(environment::searchPath().size(), 1U);
}

TEST_F(PathCommands, PackagesThatCannotBeKeptAreAnError) {
    scratch.makeFolder("configuration/packages.json");
    EXPECT_THAT(failuresOf("package add . here"), ElementsAre("KORVEX:host:configuration"));
    EXPECT_FALSE(host.presenter.failures[0].text.empty());
}

TEST_F(PathCommands, RemovingIsToldWithTheStatement) {
    scratch.makeFolder("tools");
    host.run("addpath tools\nrmpath tools\nrmpath tools");
    using environment::EnvironmentEvent;
    EXPECT_THAT(host.presenter.environmentEvents,
                ElementsAre(EnvironmentEvent{EnvironmentEvent::Kind::pathEntriesRemoved,
                                             {scratch.text() + u"/tools"}}));
}

}  // namespace
}  // namespace korvex::tests
