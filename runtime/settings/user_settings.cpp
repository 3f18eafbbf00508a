// The user's values: members of groups in a JSON document.
#include "runtime/settings/user_settings.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

#include "runtime/configuration/stored_document.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::settings_tree {

using nlohmann::json;

namespace {

std::string keyIn(std::u16string_view name) { return text::toDisplayBytes(name); }

/// Null when nobody has set it.
const json* find(const json& document, const BooleanSetting& setting) {
    const auto group = document.find(keyIn(setting.group));
    if (group == document.end()) return nullptr;
    const auto value = group->find(keyIn(setting.key));
    return value == group->end() ? nullptr : &*value;
}

bool isSettingsDocument(const json& document) {
    const bool hasGroupsOnly =
        std::all_of(document.begin(), document.end(), [](const json& group) { return group.is_object(); });
    return hasGroupsOnly && std::ranges::all_of(booleanSettings, [&](const BooleanSetting& setting) {
               const json* const value = find(document, setting);
               return value == nullptr || value->is_boolean();
           });
}

configuration::StoredDocument& userSettings() {
    static configuration::StoredDocument document("settings.json", isSettingsDocument);
    return document;
}

}  // namespace

std::optional<bool> userValue(const BooleanSetting& setting) {
    const json document = userSettings().read();
    const json* const value = find(document, setting);
    return value == nullptr ? std::nullopt : std::optional(value->get<bool>());
}

void setUserValue(const BooleanSetting& setting, bool value) {
    userSettings().update(
        [&](json& document) { document[keyIn(setting.group)][keyIn(setting.key)] = value; });
}

}  // namespace korvex::runtime::settings_tree
