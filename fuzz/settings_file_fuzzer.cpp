// The settings file with whatever stands in it: what is read, what is kept, and what a change writes.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <vector>

#include "fuzz/support/fuzz_input.h"
#include "platform/settings.h"
#include "runtime/configuration/configuration_folder.h"
#include "runtime/interpreter/warnings.h"
#include "tests/support/scratch_folder.h"

namespace korvex::fuzz {

namespace fs = std::filesystem;
namespace configuration = korvex::runtime::configuration;
namespace interpreter = korvex::runtime::interpreter;
using nlohmann::json;

namespace {

constexpr const char* group = "korvex";
constexpr const char* key = "DeleteFilesPermanently";
const std::u16string userLevel = u"user";

std::string contentOf(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// A configuration folder with one settings file, and the warnings that came.
class Configuration {
public:
    explicit Configuration(std::string_view content) {
        scratch_.writeFile("settings.json", content);
        configuration::setConfigurationFolder(scratch_.text());
        interpreter::setWarningReceiver(
            [this](const interpreter::Warning& warning) { warnings.push_back(warning.identifier); });
    }
    ~Configuration() {
        interpreter::setWarningReceiver({});
        configuration::setConfigurationFolder(u"");
    }
    Configuration(const Configuration&) = delete;
    Configuration& operator=(const Configuration&) = delete;

    static std::shared_ptr<settings::core::Settings> settings() {
        const auto context = klutil::contextmgr::ContextRegistry::getKcrID();
        return settings::in_korvex::getSettingsRoot(context)->getSettingsByFullName(u"korvex");
    }
    static bool value() { return settings()->get<bool>(u"DeleteFilesPermanently", u""); }
    static void setValue(bool value) { settings()->set<bool>(u"DeleteFilesPermanently", value, userLevel); }

    fs::path file() const { return scratch_.path() / "settings.json"; }
    fs::path damagedFile() const { return scratch_.path() / "settings.json.damaged-1"; }

    std::vector<std::string> warnings;

private:
    korvex::tests::ScratchFolder scratch_;
};

/// Deeper files count as damaged.
constexpr std::size_t deepestNesting = 100;

std::size_t depthOf(const json& document) {
    std::size_t deepest = 0;
    if (document.is_structured())
        for (const json& element : document)
            deepest = std::max(deepest, 1 + depthOf(element));
    return deepest;
}

/// An object of objects, in which the one setting, where it is there, is true or false.
bool isSettingsDocument(const json& document) {
    if (!document.is_object() || depthOf(document) > deepestNesting) return false;
    for (const json& member : document)
        if (!member.is_object()) return false;
    return !document.contains(group) || !document[group].contains(key) || document[group][key].is_boolean();
}

void examineWhole(const Configuration& configuration, const json& document, std::string_view input) {
    const bool asShipped = true;
    const bool isSet = document.contains(group) && document[group].contains(key);
    require(Configuration::value() == (isSet ? document[group][key].get<bool>() : asShipped),
            "the value is the one in the file");
    require(contentOf(configuration.file()) == input, "reading changes nothing");
    require(configuration.warnings.empty(), "reading warns of nothing");
}

void examineDamaged(const Configuration& configuration, std::string_view input) {
    require(Configuration::value(), "where the file is damaged the value is as shipped");
    require(!fs::exists(configuration.file()), "a damaged file is set aside");
    require(contentOf(configuration.damagedFile()) == input, "with every byte of it");
    require(configuration.warnings == std::vector<std::string>{"KORVEX:host:damagedConfiguration"},
            "and one warning tells so");
}

void examineChange(const Configuration& configuration, json document) {
    const bool changed = !Configuration::value();
    Configuration::setValue(changed);
    require(Configuration::value() == changed, "a value that was written is read");
    document[group][key] = changed;
    require(json::parse(contentOf(configuration.file())) == document, "everything else stays as it was");
}

}  // namespace

void examine(std::string_view input) {
    Configuration configuration(input);
    const json document = json::parse(input, nullptr, false);
    const bool isWhole = isSettingsDocument(document);
    if (isWhole) {
        examineWhole(configuration, document, input);
    } else {
        examineDamaged(configuration, input);
    }
    examineChange(configuration, isWhole ? document : json::object());
}

}  // namespace korvex::fuzz
