// Runs single statements and tells a presenter what each one gave.
#pragma once

#include <functional>
#include <optional>

#include "host/kwsh/block.h"
#include "host/kwsh/command_module.h"
#include "host/kwsh/presenter.h"
#include "host/kwsh/workspace.h"

namespace korvex::host {

class StatementRunner {
public:
    StatementRunner(Presenter& presenter, Workspace& workspace, const CommandLookup& commands)
        : presenter_(presenter), workspace_(workspace), commands_(commands) {}

    /// Takes a step that belongs to a statement and tells of the begin, the failure and the end. Never raises
    /// for what the step raises: that is the failure, which is remembered as the last one. A pending
    /// interrupt is taken and is the failure, whatever the step did; it is not taken at all when one is
    /// pending before.
    std::optional<Failure> tell(const SourceStatement& statement, const std::function<void()>& step);

    /// Does what a statement does; to be called inside of a step.
    void perform(const SimpleAction& action, bool isShown);
    /// The value of an expression; to be called inside of a step.
    Value valueOf(const Expression& expression);

    /// As long as one lives, failures are told as caught. An interrupt is caught by nobody.
    class CatchingScope {
    public:
        explicit CatchingScope(StatementRunner& runner) : runner_(runner) { ++runner_.catchingScopes_; }
        ~CatchingScope() { --runner_.catchingScopes_; }
        CatchingScope(const CatchingScope&) = delete;
        CatchingScope& operator=(const CatchingScope&) = delete;

    private:
        StatementRunner& runner_;
    };

private:
    void run(const Expression& expression, bool isShown);
    void run(const Assignment& assignment, bool isShown);
    void run(const CommandWords& command, bool isShown);
    void run(const ShellCommand& command, bool isShown);
    void setAnswer(Value value, bool isShown);

    Presenter& presenter_;
    Workspace& workspace_;
    const CommandLookup& commands_;
    std::size_t catchingScopes_ = 0;
};

}  // namespace korvex::host
