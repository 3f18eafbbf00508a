// The process's working folder on POSIX systems.
#include "runtime/dispatcher/working_folder.h"

#include <stdlib.h>
#include <unistd.h>

#include <memory>

#include "runtime/text/encoding.h"

namespace korvex::runtime::dispatcher {

std::u16string processWorkingFolder() {
    const std::unique_ptr<char, decltype(&::free)> path(::getcwd(nullptr, 0), &::free);
    // A working folder outside of the process's root reads as "(unreachable)/...": no path to start from.
    if (!path || *path != '/') return {};
    return text::fromBytes(path.get());
}

}  // namespace korvex::runtime::dispatcher
