// The locale for messages, from the variables of the environment in their order. The C library is not asked:
// it knows only what somebody has told it with setlocale, and only locales that are installed.
#include "runtime/messages/process_locale.h"

#include <array>
#include <cstdlib>
#include <string_view>

namespace korvex::runtime::messages {
namespace {

constexpr std::array localeVariables = {"LC_ALL", "LC_MESSAGES", "LANG"};
constexpr const char* neutralLocale = "en";

std::string_view firstThatIsSet() {
    for (const char* variable : localeVariables) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') return value;
    }
    return {};
}

}  // namespace

std::string processLocaleName() {
    const std::string_view value = firstThatIsSet();
    const std::string_view name = value.substr(0, value.find_first_of(".@"));
    if (name.empty() || name == "C" || name == "POSIX") return neutralLocale;
    return std::string(name);
}

}  // namespace korvex::runtime::messages
