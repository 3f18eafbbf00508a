// POSIX: reading a whole file, and a folder for scratch work.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "runtime/process/posix/file_descriptor.h"
#include "runtime/process/process.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::process {
namespace {

/// Six times the letter that the system replaces with one that makes the name new.
const std::string unnamedEnding(6, 'X');

[[noreturn]] void raiseSystemError(int error) {
    throw std::runtime_error(std::generic_category().message(error));
}

}  // namespace

std::u16string makeTemporaryFolder() {
    const char* const parent = std::getenv("TMPDIR");
    const bool isUsable = parent != nullptr && *parent == '/';
    std::string path = std::string(isUsable ? parent : "/tmp") + "/kwsh-" + unnamedEnding;
    if (::mkdtemp(path.data()) == nullptr) raiseSystemError(errno);
    return text::fromBytes(path);
}

std::string readFile(const std::u16string& path) {
    const std::optional<std::string> name = text::toBytes(path);
    if (!name || name->find('\0') != std::string::npos) raiseSystemError(ENOENT);
    const FileDescriptor file(::open(name->c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) raiseSystemError(errno);

    std::string content;
    std::array<char, 65536> block{};
    for (;;) {
        const ssize_t count = ::read(file.get(), block.data(), block.size());
        if (count == 0) return content;
        if (count > 0) {
            content.append(block.data(), static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            raiseSystemError(errno);
        }
    }
}

}  // namespace korvex::runtime::process
