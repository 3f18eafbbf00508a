// Warnings: which are switched off, which was the last, and who shows them.
#pragma once

#include <functional>
#include <string>

namespace korvex::runtime::interpreter {

struct Warning {
    std::string identifier;
    std::u16string text;
};

/// Receives every warning that is not switched off.
using WarningReceiver = std::function<void(const Warning&)>;

/// Replaces the receiver and hands back the earlier one. Without one, warnings are only remembered.
WarningReceiver setWarningReceiver(WarningReceiver receiver);

/// Switches one identifier, or all with "all". Switching "all" forgets what was said of single ones.
void setWarningEnabled(const std::string& identifier, bool enabled);
bool isWarningEnabled(const std::string& identifier);

/// The last warning that was shown; empty at first.
const Warning& lastWarning();
void clearLastWarning();

}  // namespace korvex::runtime::interpreter
