// The settings tree: values that outlive the process, by group, key and level.
#pragma once

#include <memory>
#include <string>

namespace klutil::contextmgr {

/// The identity of a running context of the environment.
class KcrID {
public:
    explicit KcrID(int number) noexcept : number_(number) {}
    int number() const noexcept { return number_; }

private:
    int number_;
};

class ContextRegistry {
public:
    /// The context that runs now.
    static KcrID getKcrID();
};

}  // namespace klutil::contextmgr

namespace settings::core {

/// A group of settings. A value is looked for at the levels "temporary", "user" and "factory", in this order:
/// for this run only, for this user, as shipped.
class Settings {
public:
    virtual ~Settings() = default;

    /// The group below this one by its full name, as "korvex". Raises `std::runtime_error` when there is
    /// none.
    virtual std::shared_ptr<Settings> getSettingsByFullName(const std::u16string& name) = 0;

    /// The value of a key; with the empty level, that of the first level that has one. Raises
    /// `std::runtime_error` when no level that was asked has a value of this type, or when the settings
    /// cannot be read.
    template <class Value>
    Value get(const std::u16string& key, const std::u16string& level) const;

    /// Stores the value at a level: at "user" it is on disk when this returns. Raises `std::runtime_error`
    /// for a level that cannot be written, for a value of another type than the setting has, and when the
    /// settings cannot be written; the old value stays then.
    template <class Value>
    void set(const std::u16string& key, Value value, const std::u16string& level);

protected:
    virtual bool getBool(const std::u16string& key, const std::u16string& level) const = 0;
    virtual void setBool(const std::u16string& key, bool value, const std::u16string& level) = 0;
};

template <>
inline bool Settings::get<bool>(const std::u16string& key, const std::u16string& level) const {
    return getBool(key, level);
}

template <>
inline void Settings::set<bool>(const std::u16string& key, bool value, const std::u16string& level) {
    setBool(key, value, level);
}

}  // namespace settings::core

namespace settings::in_korvex {

/// The root of the settings tree of a context; never null.
std::shared_ptr<settings::core::Settings> getSettingsRoot(klutil::contextmgr::KcrID context);

}  // namespace settings::in_korvex
