// Warnings. Their state belongs to the interpreter's thread.
#include "runtime/interpreter/warnings.h"

#include <map>
#include <utility>

#include "platform/kx.h"

namespace korvex::runtime::interpreter {
namespace {

constexpr const char* allWarnings = "all";

struct WarningState {
    WarningReceiver receiver;
    Warning last;
    bool enabledByDefault = true;
    std::map<std::string, bool> enabledByIdentifier;
};

WarningState& state() {
    static WarningState warningState;
    return warningState;
}

void warn(Warning warning) {
    state().last = warning;
    const WarningReceiver receiver = state().receiver;  // a copy: it may replace itself
    if (receiver) receiver(warning);
}

}  // namespace

WarningReceiver setWarningReceiver(WarningReceiver receiver) {
    return std::exchange(state().receiver, std::move(receiver));
}

void setWarningEnabled(const std::string& identifier, bool enabled) {
    if (identifier == allWarnings) {
        state().enabledByDefault = enabled;
        state().enabledByIdentifier.clear();
    } else {
        state().enabledByIdentifier[identifier] = enabled;
    }
}

bool isWarningEnabled(const std::string& identifier) {
    const auto said = state().enabledByIdentifier.find(identifier);
    return said == state().enabledByIdentifier.end() ? state().enabledByDefault : said->second;
}

const Warning& lastWarning() { return state().last; }

void clearLastWarning() { state().last = {}; }

}  // namespace korvex::runtime::interpreter

void kxWarningMsgId(const resource_core::BaseMsgID& message) {
    using namespace korvex::runtime::interpreter;
    const std::string identifier = message.identifier();
    if (!isWarningEnabled(identifier)) return;
    warn({identifier, foundation::core::except::detail::catalogText(message)});
}
