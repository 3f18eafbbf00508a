// fl::filesystem: native paths as 16-bit text.
#pragma once

#include <string>

#include "platform/message_identifiers.h"
#include "platform/user_exceptions.h"

namespace fl::filesystem {

/// The current folder is needed and does not exist any more.
class PathNotFound : public foundation::core::except::Exception<KORVEX::services::cwdIsInvalid> {
public:
    PathNotFound() : Exception(KORVEX::services::cwdIsInvalid()) {}
    std::unique_ptr<foundation::core::except::IException> copyToHeap() const override {
        return std::make_unique<PathNotFound>(*this);
    }
    [[noreturn]] void throwCopy() const override { throw PathNotFound(*this); }
};

/// The environment's current folder as a native path. Not checked for existence.
std::u16string get_current_path();

/// `path` itself when it is absolute. Otherwise `path` behind `base`, or behind the current folder when
/// `base` is empty; an empty path gives the base. Neither dots nor doubled separators are touched. Raises
/// `PathNotFound` when the current folder is needed and is gone.
std::u16string absolute(std::u16string path, const std::u16string& base);

namespace upath_constant {
/// The separator that the platform writes.
extern const char16_t PATHNAME_SEPARATOR;
}  // namespace upath_constant

namespace detail {

/// By the platform's path style. An empty path is not absolute.
bool is_absolute(const std::u16string& path);

/// The path with the platform's own separators. `keepTrailing` keeps a separator at the end.
std::u16string make_native_form(const std::u16string& path, bool keepTrailing);

}  // namespace detail
}  // namespace fl::filesystem
