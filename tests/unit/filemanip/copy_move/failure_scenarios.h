// Calls of the two commands, each with all that it asks of the storage, in order, and who explains a failure.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tests/unit/filemanip/copy_move/failure_handlers.h"

namespace korvex::filemanip::tests {

/// One call of the storage. Locations stand below the settings' prefix.
struct Step {
    enum class When { always, forced, unforced };

    storage::Operation operation;
    std::u16string location;
    Handler handler;
    When when = When::always;
    /// Of a transfer.
    std::u16string destination = {};
    /// The storage refuses this one by itself, as a transfer of a folder into itself; that is passed over.
    bool isRefused = false;

    bool isChange() const;
    bool belongsTo(bool isForced) const;
};

struct Scenario {
    std::string name;
    Command command;
    std::u16string source;
    std::u16string destination;
    std::vector<Step> steps;
    /// It is protected in the forced runs.
    std::u16string replaced = {};
    /// The run ends without a match even when nothing fails.
    bool findsNothing = false;
    /// Local, and so there are only paths.
    std::u16string currentFolder = u"/here";
    bool hasOnlyPaths = false;
};

void PrintTo(const Scenario& scenario, std::ostream* stream);

std::vector<Scenario> allScenarios();

/// What stands below the prefix before each run.
Tree startOf(const Scenario& scenario, bool isForced);

/// What a step that takes place makes of it.
void apply(const Step& step, Tree& tree);

}  // namespace korvex::filemanip::tests
