// An environment of a test: folders of its own, a configuration folder, and what was announced.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/dispatcher.h"
#include "runtime/configuration/configuration_folder.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/dispatcher/environment_events.h"
#include "runtime/dispatcher/folder_views.h"
#include "runtime/dispatcher/search_path.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::dispatcher {

using Kind = EnvironmentEvent::Kind;
using Texts = std::vector<std::u16string>;

/// The scratch folder is the current one; the search path is empty and kept in "configuration" below it.
class EnvironmentTest : public testing::Test {
protected:
    EnvironmentTest() {
        setCurrentFolderPath(scratch_.text());
        here_ = currentFolderPath();
        configuration::setConfigurationFolder(here_ + u"/configuration");
        forgetFolderViews();
        earlierWatcher_ = watchEvents([this](const EnvironmentEvent& event) { announced_.push_back(event); });
    }
    ~EnvironmentTest() override {
        watchEvents(earlierWatcher_);
        configuration::setConfigurationFolder(u"");
        forgetFolderViews();
        setCurrentFolderPath(u"/");
    }

    static Velquist::PathManagement::IMainSearchPathManager& manager() {
        return Kdispatcher::getDispatcher().GetMainSearchPathManager();
    }

    /// A folder below the scratch folder, made when it is not there; its native path.
    std::u16string folder(const std::string& name) const { return scratch_.makeFolder(name).u16string(); }

    foundation::storage::vfs::AbsoluteIRI location(const std::u16string& path) const {
        return Velquist::PathManagement::GetIRIFromString(path);
    }

    /// The search path as native paths, and texts of other locations.
    static Texts path() {
        Texts texts;
        for (const auto& folder : searchPath())
            texts.push_back(Velquist::PathManagement::GetStringFromIRI(folder));
        return texts;
    }

    /// What a search path has to be that another run reads now.
    Texts pathOfAnotherRun() const {
        configuration::setConfigurationFolder(u"");
        EXPECT_EQ(path(), Texts());
        configuration::setConfigurationFolder(here_ + u"/configuration");
        return path();
    }

    korvex::tests::ScratchFolder scratch_;
    std::u16string here_;
    std::vector<EnvironmentEvent> announced_;

private:
    EventWatcher earlierWatcher_;
};

}  // namespace korvex::runtime::dispatcher
