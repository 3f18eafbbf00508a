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
/// warnings, results, and at most one failure.
class Presenter {
public:
    virtual ~Presenter() = default;

    /// An empty line or comment of the script.
    virtual void plainLine(std::u16string_view) {}
    virtual void statementBegins(const SourceStatement& statement) = 0;
    /// Text that the commands wrote to the output stream; need not end with its line.
    virtual void printed(std::u16string_view text) = 0;
    virtual void warned(const runtime::interpreter::Warning& warning) = 0;
    /// A variable was set, or a value is to be shown. `isShown` is false behind a `;`.
    virtual void result(const std::string& name, const kxArray* value, bool isShown) = 0;
    virtual void failed(const Failure& failure) = 0;
    /// What a command told the environment.
    virtual void told(const runtime::dispatcher::EnvironmentEvent&) {}
    virtual void statementEnds() = 0;
};

/// "Error: TEXT" and "  (IDENTIFIER)", each with its line end.
std::u16string errorText(const Failure& failure);
std::u16string warningText(const runtime::interpreter::Warning& warning);

}  // namespace korvex::host
