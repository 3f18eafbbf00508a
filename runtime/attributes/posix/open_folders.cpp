// The folders in which the files of a list stand.
#include "runtime/attributes/posix/open_folders.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "runtime/attributes/posix/path_attributes.h"
#include "runtime/storage/providers/local/posix/open_files.h"
#include "runtime/storage/providers/local/posix/place.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::attributes::posix {

using storage::posix::FileDescriptor;
using storage::posix::limitOfOpenFiles;
using storage::posix::openFoldersFor;
using storage::posix::Place;
using storage::posix::TreeFolder;

namespace {

/// The deepest of the folders on the way down; those above are opened again when they are needed.
constexpr std::size_t mostOpen = 64;

/// What stands in front of a name, with the separator.
std::u16string_view folderPartOf(std::u16string_view path) noexcept {
    return path.substr(0, path.rfind(u'/') + 1);
}

}  // namespace

OpenFolders::OpenFolders(std::u16string named)
    : named_(std::move(named)),
      inNamed_(named_.ends_with(u'/') ? named_ : named_ + u'/'),
      tree_(std::min(mostOpen, openFoldersFor(limitOfOpenFiles()))) {}

storage::posix::EntryAt OpenFolders::entryOf(const std::u16string& path) {
    const std::u16string_view folder = folderPartOf(path);
    if (!handle_ || folder != text_) enter(folder);
    if (!text::toBytes(std::u16string_view(path).substr(folder.size()), name_))
        raiseAttributeError(ENOENT, path);
    return {handle_->get(), name_.c_str()};
}

void OpenFolders::enter(std::u16string_view folder) {
    handle_.reset();
    while (current_ && !folder.starts_with(text_))
        leave();
    if (!current_) openTop(folder.starts_with(inNamed_) && !named_.empty() ? inNamed_ : folder);
    while (text_.size() < folder.size())
        descend(folder.substr(text_.size(), folder.find(u'/', text_.size()) - text_.size()));
    int systemError = 0;
    handle_ = tree_.handle(*current_, storage::posix::sourceSide, systemError);
    if (!handle_) raiseAttributeError(systemError, text_);
}

void OpenFolders::leave() {
    current_ = current_->parent();
    text_.pop_back();
    text_.resize(folderPartOf(text_).size());
}

/// A folder that only stands in front of what the user wrote may be reached through links.
void OpenFolders::openTop(std::u16string_view folder) {
    const auto location = locationOf(folder);
    const Place place(location);
    const int links = folder == inNamed_ ? O_NOFOLLOW : 0;
    FileDescriptor opened(::openat(place.folder(), place.name(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | links));
    if (!opened) raiseAttributeError(errno, folder);
    auto top = std::make_shared<TreeFolder>(tree_, nullptr, std::string());
    if (const int systemError = tree_.adopt(*top, storage::posix::sourceSide, std::move(opened)))
        raiseAttributeError(systemError, folder);
    current_ = std::move(top);
    text_ = folder;
}

void OpenFolders::descend(std::u16string_view name) {
    std::u16string folder = text_ + std::u16string(name) + u'/';
    const bool hasBytes = text::toBytes(name, name_);
    auto below = std::make_shared<TreeFolder>(tree_, current_, name_);
    const int systemError = hasBytes ? tree_.open(*below, storage::posix::sourceSide) : ENOENT;
    if (systemError != 0) raiseAttributeError(systemError, folder);
    current_ = std::move(below);
    text_ = std::move(folder);
}

}  // namespace korvex::runtime::attributes::posix
