// How many files the process may have open.
#include "runtime/storage/providers/local/posix/open_files.h"

#include <sys/resource.h>

#include <algorithm>

namespace korvex::runtime::storage::posix {

namespace {

constexpr std::size_t mostOpenFolders = 128;
constexpr std::size_t fewestOpenFolders = 4;

}  // namespace

std::size_t limitOfOpenFiles() noexcept {
    struct ::rlimit limit {};
    return ::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : 0;
}

std::size_t openFoldersFor(std::size_t limit) noexcept {
    return std::clamp(limit / 6, fewestOpenFolders, mostOpenFolders);
}

}  // namespace korvex::runtime::storage::posix
