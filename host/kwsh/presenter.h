// Where a session tells what happens: the terminal, a transcript, JSON lines.
#pragma once

#include <string>
#include <string_view>

#include "host/kwsh/failure.h"
#include "host/kwsh/statement_reader.h"
#include "platform/kx.h"
#include "runtime/dispatcher/environment_events.h"
#include "runtime/interpreter/warnings.h"

namespace korvex::host {

/// Between `statementBegins` and `statementEnds` come, in the order in which they happen: what was printed,
/// warnings, results, and at most one failure, which may be caught.
///
/// A block begins and ends around the statements in it that are run, each of them told like any other; so are
/// the heads of its parts that were evaluated, as `if x` (`isBlockHead`).
class Presenter {
public:
    virtual ~Presenter() = default;

    /// An empty line or comment of the script.
    virtual void plainLine(std::u16string_view) {}
    virtual void blockBegins(const SourceStatement&) {}
    virtual void blockEnds() {}
    virtual void statementBegins(const SourceStatement& statement) = 0;
    /// Text that the commands wrote to the output stream; need not end with its line.
    virtual void printed(std::u16string_view text) = 0;
    virtual void warned(const runtime::interpreter::Warning& warning) = 0;
    /// A variable was set, or a value is to be shown. `isShown` is false behind a `;`.
    virtual void result(const std::string& name, const kxArray* value, bool isShown) = 0;
    virtual void failed(const Failure& failure) = 0;
    /// A failure that a `try` catches.
    virtual void caught(const Failure&) {}
    /// What a command told the environment.
    virtual void told(const runtime::dispatcher::EnvironmentEvent&) {}
    virtual void statementEnds() = 0;
};

/// "Error: TEXT" and "  (IDENTIFIER)", each with its line end.
std::u16string errorText(const Failure& failure, bool isColoured = false);
std::u16string warningText(const runtime::interpreter::Warning& warning, bool isColoured = false);

}  // namespace korvex::host
