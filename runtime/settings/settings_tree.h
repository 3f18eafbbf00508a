// The settings of the environment: which there are, and what they are as shipped.
#pragma once

#include <array>
#include <string_view>

namespace korvex::runtime::settings_tree {

/// A setting that holds true or false.
struct BooleanSetting {
    std::u16string_view group;
    std::u16string_view key;
    bool asShipped;
};

inline constexpr std::array<BooleanSetting, 1> booleanSettings{{
    // Recycling is off until somebody switches it on.
    {u"korvex", u"DeleteFilesPermanently", true},
}};

/// The levels at which a value can stand, in the order in which they are asked.
inline constexpr std::u16string_view temporaryLevel = u"temporary";  ///< for this run
inline constexpr std::u16string_view userLevel = u"user";            ///< kept in the configuration folder
inline constexpr std::u16string_view factoryLevel = u"factory";      ///< as shipped; cannot be changed

/// Takes the values of this run back; those that are kept stay.
void forgetTemporaryValues();

}  // namespace korvex::runtime::settings_tree
