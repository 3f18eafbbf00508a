// A scratch folder's subfolder "config" as the configuration folder, not made yet, and a watch on warnings.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "runtime/configuration/configuration_folder.h"
#include "runtime/configuration/stored_document.h"
#include "runtime/interpreter/warnings.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::configuration {

class ConfigurationTest : public testing::Test {
protected:
    ConfigurationTest()
        : earlierReceiver_(interpreter::setWarningReceiver(
              [this](const interpreter::Warning& warning) { warnings_.push_back(warning); })) {
        setConfigurationFolder(folder().u16string());
    }
    ~ConfigurationTest() override {
        setConfigurationFolder(u"");
        interpreter::setWarningReceiver(earlierReceiver_);
        interpreter::clearLastWarning();
    }

    std::filesystem::path folder() const { return scratch_.path() / "config"; }
    std::filesystem::path file() const { return folder() / name_; }

    /// The names in the configuration folder, sorted.
    std::vector<std::string> entries() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder())) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    static std::string contentOf(const std::filesystem::path& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// A document of which any object is valid but one with "shape": "wrong".
    StoredDocument document() const {
        return StoredDocument(
            name_, [](const nlohmann::json& read) { return read.value("shape", "right") != "wrong"; });
    }

    /// A change that sets one member.
    static auto setting(const char* key, const nlohmann::json& value) {
        return [=](nlohmann::json& changed) { changed[key] = value; };
    }

    const std::string name_ = "path.json";
    korvex::tests::ScratchFolder scratch_;
    std::vector<interpreter::Warning> warnings_;

private:
    interpreter::WarningReceiver earlierReceiver_;
};

}  // namespace korvex::runtime::configuration
