// fl::filesystem: native paths as 16-bit text.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

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

/// What `status` tells of a file or folder, and what `permissions` changes.
class file_status {
public:
    enum perms : std::uint32_t {
        no_perms = 0,
        archive_file = 0x0001,
        hidden_file = 0x0002,
        system_file = 0x0004,
        owner_write = 0x0080,
        /// In a mask: what becomes of the attributes that stand beside it.
        perms_add = 0x1000,
        perms_remove = 0x2000,
    };

    file_status(perms permissions, bool isDirectory) noexcept
        : permissions_(permissions), isDirectory_(isDirectory) {}

    perms permissions() const noexcept { return permissions_; }
    bool is_directory() const noexcept { return isDirectory_; }

private:
    perms permissions_;
    bool isDirectory_;
};

constexpr file_status::perms operator|(file_status::perms a, file_status::perms b) noexcept {
    return static_cast<file_status::perms>(std::uint32_t{a} | std::uint32_t{b});
}

/// The attributes of what stands at a native path, links followed; of a link that leads nowhere, its own. A
/// relative path is taken against the current folder.
///
/// On Windows these are the file's own attributes. Elsewhere archive, hidden and system are read from the
/// extended attribute "user.DOSATTRIB", as Samba and Wine do: all three are clear where there is none and
/// where it may not be read. A name that begins with a dot is hidden too. `owner_write` is the owner's write
/// bit, whoever asks.
///
/// Raises `PathNotFound` as `absolute`, `AccessDenied`, and `vfs::Exception`: `resourceNotFound` when nothing
/// is there.
file_status status(const std::u16string& path);

/// Sets (`perms_add`) or clears (`perms_remove`) the attributes of the mask at a native path, links followed;
/// all others stay. What stands already as it shall is not written again. A name that begins with a dot
/// stays hidden: what is changed is the attribute that is stored.
///
/// Raises as `status`; `AccessDenied` also for what may be looked at and not changed, and `vfs::Exception`
/// with `unsupportedOperation` where the storage keeps no such attribute. Some of the attributes of the mask
/// may be changed by then.
void permissions(const std::u16string& path, file_status::perms mask);

/// Changes the attributes of the files of a list, one after the other. What is opened for one path serves the
/// next ones, so a list goes fastest folder by folder, each folder before what is in it.
///
/// Only `named`, the path that the user wrote, is followed where it is a link. Of the other paths a link is
/// left alone, and folders below `named` are entered without following a link, even one that somebody puts
/// there meanwhile. Trees may be of any depth.
class ListedFiles {
public:
    /// `named` is absolute, or empty where the list has no such path. With `list`, the paths in the order in
    /// which they will be changed, the files that come next may be opened ahead; it lives as long.
    explicit ListedFiles(std::u16string named, const std::vector<std::u16string>* list = nullptr);
    ~ListedFiles();
    ListedFiles(const ListedFiles&) = delete;
    ListedFiles& operator=(const ListedFiles&) = delete;

    /// As `fl::filesystem::permissions`, for an absolute path. Raises also when an interrupt is pending.
    void permissions(const std::u16string& path, file_status::perms mask);

private:
    class Work;
    std::unique_ptr<Work> work_;
};

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
