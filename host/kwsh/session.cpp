// The life of one statement.
#include "host/kwsh/session.h"

#include "host/kwsh/evaluator.h"
#include "host/kwsh/host_commands.h"
#include "host/kwsh/parser.h"
#include "host/kwsh/shell_output.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/dispatcher/folder_views.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/messages/environment_messages.h"
#include "runtime/process/process.h"

namespace korvex::host {
namespace {

constexpr const char* answerName = "ans";

}  // namespace

bool isCommandName(std::string_view name) {
    return isModuleCommand(name) || findHostCommand(name) != nullptr;
}

Session::Session(Presenter& presenter, CommandLookup commands)
    : presenter_(presenter),
      commands_(std::move(commands)),
      earlierOutput_(runtime::interpreter::setOutputReceiver(
          [this](std::u16string_view text) { presenter_.printed(text); })),
      earlierWarnings_(runtime::interpreter::setWarningReceiver(
          [this](const runtime::interpreter::Warning& warning) { presenter_.warned(warning); })),
      earlierWatcher_(runtime::dispatcher::watchEvents(
          [this](const runtime::dispatcher::EnvironmentEvent& event) { presenter_.told(event); })) {}

Session::~Session() {
    runtime::interpreter::setOutputReceiver(std::move(earlierOutput_));
    runtime::interpreter::setWarningReceiver(std::move(earlierWarnings_));
    runtime::dispatcher::watchEvents(std::move(earlierWatcher_));
}

bool Session::run(const SourceStatement& statement) {
    presenter_.statementBegins(statement);
    std::optional<Failure> failure;
    try {
        execute(statement);
    } catch (...) {
        failure = describeCurrentException();
    }
    // What failed because the user wanted it to stop is reported as that.
    if (runtime::interpreter::takeInterrupt()) failure = interruptedFailure();
    const bool succeeded = !failure;
    if (failure) fail(std::move(*failure));
    presenter_.statementEnds();
    return succeeded;
}

RunResult Session::runAll(StatementReader& reader, bool stopsAtFailure) {
    RunResult result;
    while (const std::optional<ScriptItem> item = reader.next()) {
        if (const auto* line = std::get_if<PlainLine>(&*item)) {
            presenter_.plainLine(line->text);
            continue;
        }
        if (!run(std::get<SourceStatement>(*item))) {
            result.hasFailed = true;
            if (workspace_.lastFailure.identifier == interruptedIdentifier) result.end = RunEnd::atInterrupt;
            if (stopsAtFailure) result.end = RunEnd::atFailure;
        }
        if (isExitRequested()) result.end = RunEnd::atExit;
        if (result.end != RunEnd::atEnd) break;
    }
    return result;
}

void Session::fail(Failure failure) {
    presenter_.failed(failure);
    workspace_.lastFailure = std::move(failure);
}

void Session::execute(const SourceStatement& statement) {
    const bool isShown = !statement.isDisplaySuppressed;
    if (const auto* failure = std::get_if<Failure>(&statement.content)) throw HostError(*failure);
    if (const auto* words = std::get_if<CommandWords>(&statement.content)) return runWords(*words, isShown);
    if (const auto* shell = std::get_if<ShellCommand>(&statement.content)) return runShell(*shell);

    const Statement parsed = parseStatement(std::get<std::vector<Token>>(statement.content));
    if (const auto* assignment = std::get_if<Assignment>(&parsed)) {
        runAssignment(*assignment, isShown);
    } else {
        runExpression(std::get<Expression>(parsed), isShown);
    }
}

void Session::runExpression(const Expression& expression, bool isShown) {
    const auto* reference = std::get_if<Reference>(&expression.content);
    if (reference != nullptr && reference->accesses.empty()) {
        // A variable by its name alone is looked at under this name; any other value becomes the answer.
        const auto variable = workspace_.variables.find(reference->name);
        if (variable != workspace_.variables.end()) {
            presenter_.result(reference->name, variable->second.get(), isShown);
            return;
        }
    }
    setAnswer(std::move(Evaluator(workspace_, commands_).outputs(expression, 0)[0]), isShown);
}

void Session::runAssignment(const Assignment& assignment, bool isShown) {
    const int count = static_cast<int>(assignment.targets.size());
    std::vector<Value> values = Evaluator(workspace_, commands_).outputs(assignment.value, count);
    std::size_t firstUnset = 0;
    for (std::size_t at = 0; at < assignment.targets.size(); ++at) {
        const std::optional<std::string>& name = assignment.targets[at];
        if (!name) continue;
        if (!values[at]) {
            if (firstUnset == 0) firstUnset = at + 1;
            continue;
        }
        Value& variable = workspace_.variables[*name];
        variable = std::move(values[at]);
        presenter_.result(*name, variable.get(), isShown);
    }
    if (firstUnset != 0) {
        throw HostError("outputNotSet",
                        u"Output " + countText(firstUnset) + u" was asked for and not given.");
    }
}

void Session::runWords(const CommandWords& command, bool isShown) {
    std::vector<Value> arguments;
    for (const std::u16string& word : command.words)
        arguments.push_back(makeText(word));
    setAnswer(std::move(Evaluator(workspace_, commands_).call(command.name, 0, arguments)[0]), isShown);
}

void Session::runShell(const ShellCommand& command) {
    ShellOutput output;
    const int status = runtime::process::runShellCommand(
        command.command, runtime::dispatcher::currentFolderPath(),
        [&](std::string_view bytes) { runtime::interpreter::writeOutput(output.complete(bytes)); });
    runtime::interpreter::writeOutput(output.rest());
    // Behind the environment's back the shell may have changed any folder.
    runtime::dispatcher::forgetFolderViews();
    if (status != 0 && !runtime::interpreter::isInterruptPending()) {
        kxWarningMsgId(KORVEX::host::shellStatus(widen(std::to_string(status))));
    }
}

void Session::setAnswer(Value value, bool isShown) {
    if (!value) return;
    Value& answer = workspace_.variables[answerName];
    answer = std::move(value);
    presenter_.result(answerName, answer.get(), isShown);
}

}  // namespace korvex::host
