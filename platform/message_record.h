// The record that names one text for the user: a catalog entry and its arguments.
//
// Nothing here holds a text in any language; the catalog (message_catalog.h) turns a record into one.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace resource_core {

/// One argument of a message: 16-bit text, narrow UTF-8 text, or nothing.
class MessageArgument {
public:
    /// What an argument holds. The two kinds without content own nothing.
    enum class Tag : std::int8_t { none = -1, empty = 0, narrowText = 1, wideText = 2 };

    MessageArgument() = default;
    explicit MessageArgument(std::string narrow) : value_(std::move(narrow)) {}
    explicit MessageArgument(std::u16string wide) : value_(std::move(wide)) {}

    Tag tag() const noexcept {
        switch (value_.index()) {
            case 1: return Tag::narrowText;
            case 2: return Tag::wideText;
            default: return Tag::empty;
        }
    }
    /// Null unless `tag()` is `narrowText`.
    const std::string* narrowText() const noexcept { return std::get_if<std::string>(&value_); }
    /// Null unless `tag()` is `wideText`.
    const std::u16string* wideText() const noexcept { return std::get_if<std::u16string>(&value_); }

private:
    std::variant<std::monostate, std::string, std::u16string> value_;
};

/// The message record. `component` is the catalog path ("KORVEX:FILE"), `key` the entry ("ReadOnly").
struct BaseMsgID {
    std::vector<MessageArgument> args;
    std::string component;
    std::string key;

    /// The full identifier, "KORVEX:FILE:ReadOnly".
    std::string identifier() const { return component + ':' + key; }
};

}  // namespace resource_core
