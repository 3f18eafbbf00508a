// POSIX: the program's arguments, its folder, the user's folders, environment variables.
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "runtime/process/process.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::process {
namespace {

std::string homeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home == '/') return home;
    std::array<char, 4096> texts{};
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, texts.data(), texts.size(), &found) == 0 && found != nullptr) {
        return found->pw_dir;
    }
    return "/";
}

std::string underFolder(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + '/' + name;
}

}  // namespace

std::vector<std::string> programArguments(int count, char* arguments[]) {
    return count > 1 ? std::vector<std::string>(arguments + 1, arguments + count)
                     : std::vector<std::string>();
}

std::u16string programFolder() {
    std::string path(256, '\0');
    for (;;) {
        const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
        if (length < 0) throw std::runtime_error(std::generic_category().message(errno));
        if (static_cast<std::size_t>(length) < path.size()) {
            path.resize(static_cast<std::size_t>(length));
            break;
        }
        path.resize(2 * path.size());
    }
    const std::size_t separator = path.rfind('/');
    return text::fromBytes(path.substr(0, separator == 0 ? 1 : separator));
}

std::u16string defaultConfigurationFolder() {
    const char* configured = std::getenv("XDG_CONFIG_HOME");
    // A relative one is to be ignored, as the desktop's rules for base folders say.
    const bool isUsable = configured != nullptr && *configured == '/';
    return text::fromBytes(
        underFolder(isUsable ? configured : underFolder(homeFolder(), ".config"), "korvex"));
}

std::optional<std::u16string> environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr) return std::nullopt;
    return text::fromBytes(value);
}

}  // namespace korvex::runtime::process
