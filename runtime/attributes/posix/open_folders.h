// The folders in which the files of a list stand, each opened when it comes and kept while it serves.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "runtime/storage/providers/local/posix/entry_at.h"
#include "runtime/storage/providers/local/posix/folder_tree.h"

namespace korvex::runtime::attributes::posix {

/// The folder of the last path, and the folders above it as far as they belong to the list. Folders below the
/// path that the user wrote are entered without following a link.
class OpenFolders {
public:
    /// `named` is absolute, or empty where the list has no such path.
    explicit OpenFolders(std::u16string named);

    /// The path that the user wrote.
    const std::u16string& named() const noexcept { return named_; }
    /// The entry of an absolute path, good until the next one is asked for. Raises as
    /// `fl::filesystem::permissions`.
    storage::posix::EntryAt entryOf(const std::u16string& path);

private:
    void enter(std::u16string_view folder);
    void leave();
    void openTop(std::u16string_view folder);
    void descend(std::u16string_view name);

    const std::u16string named_;
    /// The same with a separator behind it, as `text_`.
    const std::u16string inNamed_;
    storage::posix::FolderTree tree_;
    std::shared_ptr<storage::posix::TreeFolder> current_;
    storage::posix::FolderTree::Handle handle_;
    /// The path of `current_`, with a separator behind it.
    std::u16string text_;
    /// A buffer for names.
    std::string name_;
};

}  // namespace korvex::runtime::attributes::posix
