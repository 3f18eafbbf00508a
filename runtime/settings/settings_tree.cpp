// The settings tree: three levels, asked one after the other.
#include "runtime/settings/settings_tree.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/settings.h"
#include "runtime/settings/user_settings.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::settings_tree {

using settings::core::Settings;

namespace {

/// Values that last for this run. Any thread.
class TemporaryValues {
public:
    std::optional<bool> find(const BooleanSetting& setting) const {
        const std::lock_guard lock(guard_);
        const auto found = values_.find(&setting);
        return found == values_.end() ? std::nullopt : std::optional(found->second);
    }
    void set(const BooleanSetting& setting, bool value) {
        const std::lock_guard lock(guard_);
        values_[&setting] = value;
    }
    void forget() {
        const std::lock_guard lock(guard_);
        values_.clear();
    }

private:
    mutable std::mutex guard_;
    std::map<const BooleanSetting*, bool> values_;
};

TemporaryValues& temporaryValues() {
    static TemporaryValues values;
    return values;
}

[[noreturn]] void refuse(const std::string& what, std::u16string_view name) {
    throw std::runtime_error("Settings: " + what + " \"" + text::toDisplayBytes(name) + "\".");
}

/// One group. It holds no value itself: what another process has changed is seen with the next question.
class Group : public Settings {
public:
    explicit Group(std::u16string name) : name_(std::move(name)) {}

    std::shared_ptr<Settings> getSettingsByFullName(const std::u16string& name) override {
        refuse("there is no group", name_ + u'.' + name);
    }

protected:
    bool getBool(const std::u16string& key, const std::u16string& level) const override {
        const BooleanSetting& setting = find(key);
        const auto isAsked = [&](std::u16string_view name) { return level.empty() || level == name; };
        if (isAsked(temporaryLevel)) {
            if (const std::optional<bool> value = temporaryValues().find(setting)) return *value;
        }
        if (isAsked(userLevel)) {
            if (const std::optional<bool> value = userValue(setting)) return *value;
        }
        if (isAsked(factoryLevel)) return setting.asShipped;
        refuse("there is no value at the level", level);
    }

    void setBool(const std::u16string& key, bool value, const std::u16string& level) override {
        const BooleanSetting& setting = find(key);
        if (level == temporaryLevel) return temporaryValues().set(setting, value);
        if (level == userLevel) return setUserValue(setting, value);
        refuse("nothing can be stored at the level", level);
    }

private:
    const BooleanSetting& find(const std::u16string& key) const {
        const auto found = std::ranges::find_if(booleanSettings, [&](const BooleanSetting& setting) {
            return setting.group == name_ && setting.key == key;
        });
        if (found == booleanSettings.end()) refuse("there is no setting", name_ + u'.' + key);
        return *found;
    }

    std::u16string name_;
};

/// Holds groups and no values.
class Root : public Settings {
public:
    std::shared_ptr<Settings> getSettingsByFullName(const std::u16string& name) override {
        if (std::ranges::find(booleanSettings, name, &BooleanSetting::group) == booleanSettings.end()) {
            refuse("there is no group", name);
        }
        return std::make_shared<Group>(name);
    }

protected:
    bool getBool(const std::u16string& key, const std::u16string&) const override {
        refuse("there is no setting", key);
    }
    void setBool(const std::u16string& key, bool, const std::u16string&) override {
        refuse("there is no setting", key);
    }
};

}  // namespace

void forgetTemporaryValues() { temporaryValues().forget(); }

}  // namespace korvex::runtime::settings_tree

namespace klutil::contextmgr {

// One context a process.
KcrID ContextRegistry::getKcrID() { return KcrID(1); }

}  // namespace klutil::contextmgr

namespace settings::in_korvex {

std::shared_ptr<core::Settings> getSettingsRoot(klutil::contextmgr::KcrID) {
    return std::make_shared<korvex::runtime::settings_tree::Root>();
}

}  // namespace settings::in_korvex
