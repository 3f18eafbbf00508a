// A folder that was listed, held for the sake of the entries that the listing gave.
#include "runtime/storage/providers/local/posix/found_folder.h"

#include <fcntl.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <string_view>

#include "runtime/text/encoding.h"

namespace korvex::runtime::storage::posix {

namespace {

/// Together far below what a process may have open. A walk keeps a listing for each level of a tree; the ones
/// deep down can do with the folders above them, the one at the top cannot.
constexpr int mostKept = 128;
constexpr int mostKeptAtTop = 512;

std::atomic<int>& keptNow() noexcept {
    static std::atomic<int> count{0};
    return count;
}

std::string lastComponent(const AbsoluteIRI& location) {
    const std::u16string& path = location.parts().path;
    std::string bytes;
    (void)text::toBytes(std::u16string_view(path).substr(path.rfind(u'/') + 1), bytes);
    return bytes;
}

}  // namespace

class KeptFolder {
public:
    /// Null when that many are open already; the descriptor stays the caller's then.
    static std::shared_ptr<const KeptFolder> keep(FileDescriptor& folder, int most) {
        if (keptNow().fetch_add(1) < most) return std::make_shared<const KeptFolder>(std::move(folder));
        keptNow().fetch_sub(1);
        return nullptr;
    }

    explicit KeptFolder(FileDescriptor folder) noexcept : folder_(std::move(folder)) {}
    ~KeptFolder() { keptNow().fetch_sub(1); }
    KeptFolder(const KeptFolder&) = delete;
    KeptFolder& operator=(const KeptFolder&) = delete;

    int handle() const noexcept { return folder_.get(); }

private:
    FileDescriptor folder_;
};

std::shared_ptr<const FoundFolder> FoundFolder::keep(FileDescriptor folder, const AbsoluteIRI& location) {
    const auto above = of(location);
    if (auto kept = KeptFolder::keep(folder, above ? mostKept : mostKeptAtTop)) {
        return std::make_shared<const FoundFolder>(std::move(kept), std::string());
    }
    if (!above) return nullptr;
    const std::string name = lastComponent(location);
    return std::make_shared<const FoundFolder>(above->kept_,
                                               above->below_.empty() ? name : above->below_ + '/' + name);
}

std::shared_ptr<const FoundFolder> FoundFolder::of(const AbsoluteIRI& location) noexcept {
    // Nobody else finds anything under the scheme of this provider.
    return std::static_pointer_cast<const FoundFolder>(location.parts().found);
}

int FoundFolder::handle(FileDescriptor& opened, int& systemError) const {
    systemError = 0;
    int folder = kept_->handle();
    for (std::size_t begin = 0; begin < below_.size();) {
        const std::size_t end = std::min(below_.find('/', begin), below_.size());
        const std::string name = below_.substr(begin, end - begin);
        FileDescriptor next(::openat(folder, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!next) {
            systemError = errno;
            return -1;
        }
        opened = std::move(next);
        folder = opened.get();
        begin = end + 1;
    }
    return folder;
}

}  // namespace korvex::runtime::storage::posix
