// The one setting that there is, kept in a scratch folder, and a watch on warnings.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "platform/settings.h"
#include "runtime/configuration/configuration_folder.h"
#include "runtime/interpreter/warnings.h"
#include "runtime/settings/settings_tree.h"
#include "runtime/text/encoding.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::settings_tree {

class SettingsTest : public testing::Test {
protected:
    SettingsTest()
        : earlierReceiver_(interpreter::setWarningReceiver([this](const interpreter::Warning& warning) {
              warnings_.push_back(warning.identifier + ' ' + text::toDisplayBytes(warning.text));
          })) {
        configuration::setConfigurationFolder(folder().u16string());
    }
    ~SettingsTest() override {
        forgetTemporaryValues();
        configuration::setConfigurationFolder(u"");
        interpreter::setWarningReceiver(earlierReceiver_);
        interpreter::clearLastWarning();
    }

    static std::shared_ptr<settings::core::Settings> root() {
        return settings::in_korvex::getSettingsRoot(klutil::contextmgr::ContextRegistry::getKcrID());
    }
    static std::shared_ptr<settings::core::Settings> group() {
        return root()->getSettingsByFullName(u"korvex");
    }
    static bool value(const std::u16string& level = u"") { return group()->get<bool>(key_, level); }
    static void set(bool value, const std::u16string& level = u"user") {
        group()->set<bool>(key_, value, level);
    }

    std::filesystem::path folder() const { return scratch_.path() / "config"; }
    std::filesystem::path file() const { return folder() / "settings.json"; }
    void write(const std::string& content) const { scratch_.writeFile("config/settings.json", content); }
    static std::string contentOf(const std::filesystem::path& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    static inline const std::u16string key_ = u"DeleteFilesPermanently";
    korvex::tests::ScratchFolder scratch_;
    /// "IDENTIFIER TEXT".
    std::vector<std::string> warnings_;

private:
    interpreter::WarningReceiver earlierReceiver_;
};

}  // namespace korvex::runtime::settings_tree
