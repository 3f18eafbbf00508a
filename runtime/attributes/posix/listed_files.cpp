// Changes of the attributes of listed files, each by its name in an open folder.
#include <fcntl.h>

#include <cerrno>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/foundation_filesystem.h"
#include "runtime/attributes/posix/entry_attributes.h"
#include "runtime/attributes/posix/path_attributes.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/posix/folder_tree.h"
#include "runtime/storage/providers/local/posix/place.h"
#include "runtime/storage/transfer_progress.h"
#include "runtime/text/encoding.h"

namespace fl::filesystem {

namespace internal = korvex::runtime::attributes::posix;
namespace runtime = korvex::runtime;
namespace posix = korvex::runtime::storage::posix;

namespace {

/// The deepest of the folders on the way down; those above are opened again when they are needed.
constexpr std::size_t mostOpen = 64;

/// What stands in front of a name, with the separator.
std::u16string_view folderPartOf(std::u16string_view path) noexcept {
    return path.substr(0, path.rfind(u'/') + 1);
}

}  // namespace

/// The folder of the last path, and the folders above it as far as they belong to the list.
class ListedFiles::OpenFolders {
public:
    explicit OpenFolders(std::u16string named)
        : named_(std::move(named)), inNamed_(named_.ends_with(u'/') ? named_ : named_ + u'/') {}

    void change(const std::u16string& path, file_status::perms mask) {
        if (path == named_) return fl::filesystem::permissions(path, mask);
        const std::u16string_view folder = folderPartOf(path);
        if (!handle_ || folder != text_) enter(folder);
        if (!runtime::text::toBytes(std::u16string_view(path).substr(folder.size()), name_))
            internal::raiseAttributeError(ENOENT, path);
        const int systemError = changes_.change({handle_->get(), name_.c_str()}, mask);
        if (systemError != 0) internal::raiseAttributeError(systemError, path);
    }

private:
    void enter(std::u16string_view folder) {
        handle_.reset();
        while (current_ && !folder.starts_with(text_))
            leave();
        if (!current_) openTop(folder.starts_with(inNamed_) && !named_.empty() ? inNamed_ : folder);
        while (text_.size() < folder.size())
            descend(folder.substr(text_.size(), folder.find(u'/', text_.size()) - text_.size()));
        int systemError = 0;
        handle_ = tree_.handle(*current_, posix::sourceSide, systemError);
        if (!handle_) internal::raiseAttributeError(systemError, text_);
    }

    void leave() {
        current_ = current_->parent();
        text_.pop_back();
        text_.resize(folderPartOf(text_).size());
    }

    /// A folder that only stands in front of what the user wrote may be reached through links.
    void openTop(std::u16string_view folder) {
        const auto location = internal::locationOf(folder);
        const posix::Place place(location);
        const int links = folder == inNamed_ ? O_NOFOLLOW : 0;
        posix::FileDescriptor opened(
            ::openat(place.folder(), place.name(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | links));
        if (!opened) internal::raiseAttributeError(errno, folder);
        auto top = std::make_shared<posix::TreeFolder>(tree_, nullptr, std::string());
        if (const int systemError = tree_.adopt(*top, posix::sourceSide, std::move(opened)))
            internal::raiseAttributeError(systemError, folder);
        current_ = std::move(top);
        text_ = folder;
    }

    void descend(std::u16string_view name) {
        std::u16string folder = text_ + std::u16string(name) + u'/';
        const bool hasBytes = runtime::text::toBytes(name, name_);
        auto below = std::make_shared<posix::TreeFolder>(tree_, current_, name_);
        const int systemError = hasBytes ? tree_.open(*below, posix::sourceSide) : ENOENT;
        if (systemError != 0) internal::raiseAttributeError(systemError, folder);
        current_ = std::move(below);
        text_ = std::move(folder);
    }

    const std::u16string named_;
    /// The same with a separator behind it, as `text_`.
    const std::u16string inNamed_;
    posix::FolderTree tree_{mostOpen};
    std::shared_ptr<posix::TreeFolder> current_;
    posix::FolderTree::Handle handle_;
    /// The path of `current_`, with a separator behind it.
    std::u16string text_;
    internal::AttributeChanges changes_{internal::Links::tellApart};
    /// A buffer for names.
    std::string name_;
};

ListedFiles::ListedFiles(std::u16string named) : folders_(std::make_unique<OpenFolders>(std::move(named))) {}

ListedFiles::~ListedFiles() = default;

void ListedFiles::permissions(const std::u16string& path, file_status::perms mask) {
    if (runtime::interpreter::isInterruptPending())
        runtime::storage::stopIfInterrupted(internal::locationOf(path));
    folders_->change(path, mask);
}

}  // namespace fl::filesystem
