// platform/settings.h, all of it: the one setting that the commands ask for, kept for this run. The host
// begins with the recycle bin switched on.
#include "platform/settings.h"

#include <stdexcept>

namespace {

class OwnSettings : public settings::core::Settings {
public:
    /// There is one group, and the root stands for it, too.
    std::shared_ptr<Settings> getSettingsByFullName(const std::u16string& name) override;

protected:
    bool getBool(const std::u16string& key, const std::u16string& level) const override {
        require(key, level);
        return deletesPermanently_;
    }
    void setBool(const std::u16string& key, bool value, const std::u16string& level) override {
        require(key, level);
        deletesPermanently_ = value;
    }

private:
    static void require(const std::u16string& key, const std::u16string& level) {
        const bool isOurs = key == u"DeleteFilesPermanently" && (level.empty() || level == u"user");
        if (!isOurs) throw std::runtime_error("this host has no such setting");
    }

    bool deletesPermanently_ = false;
};

std::shared_ptr<OwnSettings> ownSettings() {
    static const auto root = std::make_shared<OwnSettings>();
    return root;
}

std::shared_ptr<settings::core::Settings> OwnSettings::getSettingsByFullName(const std::u16string& name) {
    if (name != u"korvex") throw std::runtime_error("this host has no such group of settings");
    return ownSettings();
}

}  // namespace

klutil::contextmgr::KcrID klutil::contextmgr::ContextRegistry::getKcrID() { return KcrID(1); }

std::shared_ptr<settings::core::Settings> settings::in_korvex::getSettingsRoot(klutil::contextmgr::KcrID) {
    return ownSettings();
}
