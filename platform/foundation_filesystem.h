// fl::filesystem: native paths as 16-bit text.
#pragma once

#include <filesystem>
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

/// The system does not let the process look at, or change, what stands at a path.
class AccessDenied : public foundation::core::except::Exception<KORVEX::virtualfilesystem::permissionDenied> {
public:
    explicit AccessDenied(const std::u16string& path)
        : Exception(KORVEX::virtualfilesystem::permissionDenied(path)) {}
    std::unique_ptr<foundation::core::except::IException> copyToHeap() const override {
        return std::make_unique<AccessDenied>(*this);
    }
    [[noreturn]] void throwCopy() const override { throw AccessDenied(*this); }
};

/// The environment's current folder as a native path. Not checked for existence.
std::u16string get_current_path();

/// `path` itself when it is absolute. Otherwise `path` behind `base`, or behind the current folder when
/// `base` is empty; an empty path gives the base. Neither dots nor doubled separators are touched. Raises
/// `PathNotFound` when the current folder is needed and is gone.
std::u16string absolute(std::u16string path, const std::u16string& base);

/// The absolute form of a native path (as `absolute`) with its links resolved and its dots gone, in the
/// platform's own form. Raises what `absolute` raises, and `vfs::Exception`: `resourceNotFound` when nothing
/// is there.
std::u16string canonical(const std::u16string& path, const std::u16string& base);

/// Whether something stands at a native path, links followed; a relative one is taken against the current
/// folder, and nothing stands at the empty one. Raises `AccessDenied`, `PathNotFound` as `absolute`, and
/// `vfs::Exception` when the storage fails in another way.
bool exists(const std::u16string& path);

/// An absolute native path in the form of the standard library, every byte of a name kept. Empty, which is
/// the path of nothing, for a text that is not absolute, holds a NUL, or has no bytes.
std::filesystem::path system_path(const std::u16string& path);

namespace upath_constant {
/// The separator that the platform writes.
extern const char16_t PATHNAME_SEPARATOR;
}  // namespace upath_constant

namespace detail {

/// By the platform's path style. An empty path is not absolute.
bool is_absolute(const std::u16string& path);

/// The path with the platform's own separators. `keepTrailing` keeps a separator at the end.
std::u16string make_native_form(const std::u16string& path, bool keepTrailing);

/// `name` behind `base`, with one separator between them. An absolute name, and any name behind an empty
/// base, stays alone; an empty name gives the base. `inNativeForm` writes the whole with the platform's own
/// separators.
std::u16string concatenate_pathname(const std::u16string& base, const std::u16string& name,
                                    bool inNativeForm);

/// What stands behind the last separator; empty for a path that ends in one.
std::u16string extract_filename(const std::u16string& path);

/// The file name without its last dot and what stands behind it: "a.b" of "/d/a.b.c", nothing of ".k".
std::u16string extract_stem(const std::u16string& path);

/// What stands behind the last dot of the file name, without the dot: "c" of "/d/a.b.c", "k" of ".k". Empty
/// without a dot, and for "." and "..".
std::u16string extract_extension(const std::u16string& path);

}  // namespace detail
}  // namespace fl::filesystem
