// Changes of the attributes of listed files, each by its name in an open folder.
#include <limits>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/foundation_filesystem.h"
#include "runtime/attributes/posix/entry_attributes.h"
#include "runtime/attributes/posix/open_folders.h"
#include "runtime/attributes/posix/opened_ahead.h"
#include "runtime/attributes/posix/path_attributes.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/transfer_progress.h"

namespace fl::filesystem {

namespace internal = korvex::runtime::attributes::posix;
namespace runtime = korvex::runtime;

namespace {

/// Of fewer files it is not worth a thread to open them.
constexpr std::size_t worthAThread = 512;
constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

}  // namespace

/// The changes, and how far the list is.
class ListedFiles::Work {
public:
    Work(std::u16string named, const std::vector<std::u16string>* list)
        : list_(list), folders_(std::move(named)) {}

    void change(const std::u16string& path, file_status::perms mask) {
        if (path == folders_.named()) return fl::filesystem::permissions(path, mask);
        const int systemError = changes_.change(folders_.entryOf(path), mask, openedAhead(path, mask));
        if (systemError != 0) internal::raiseAttributeError(systemError, path);
    }

private:
    /// None but for a long list whose files have to be opened one after the other.
    internal::FileDescriptor openedAhead(const std::u16string& path, file_status::perms mask) {
        if (list_ == nullptr || (mask & file_status::owner_write) == 0) return {};
        while (position_ < list_->size() && (*list_)[position_] != path)
            ++position_;
        const bool isAgain = position_ == lastTaken_ || position_ == list_->size();
        lastTaken_ = position_;
        if (isAgain) return {};
        if (!ahead_ && !isRefused_ && changes_.opensAtOnce() && list_->size() - position_ > worthAThread)
            begin();
        return ahead_ ? ahead_->take(position_) : internal::FileDescriptor();
    }

    void begin() {
        isRefused_ = std::thread::hardware_concurrency() < 2;
        if (isRefused_) return;
        try {
            ahead_.emplace(folders_.named(), *list_, position_ + 1);
        } catch (const std::system_error&) {
            isRefused_ = true;
        }
    }

    const std::vector<std::u16string>* const list_;
    internal::OpenFolders folders_;
    internal::AttributeChanges changes_{internal::Links::tellApart};
    std::size_t position_ = 0;
    std::size_t lastTaken_ = none;
    bool isRefused_ = false;
    std::optional<internal::OpenedAhead> ahead_;
};

ListedFiles::ListedFiles(std::u16string named, const std::vector<std::u16string>* list)
    : work_(std::make_unique<Work>(std::move(named), list)) {}

ListedFiles::~ListedFiles() = default;

void ListedFiles::permissions(const std::u16string& path, file_status::perms mask) {
    if (runtime::interpreter::isInterruptPending())
        runtime::storage::stopIfInterrupted(internal::locationOf(path));
    work_->change(path, mask);
}

}  // namespace fl::filesystem
