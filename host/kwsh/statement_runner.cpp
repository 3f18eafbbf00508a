// The life of one statement.
#include "host/kwsh/statement_runner.h"

#include "host/kwsh/evaluator.h"
#include "host/kwsh/shell_output.h"
#include "platform/foundation_filesystem.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/dispatcher/folder_views.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/interpreter/output.h"
#include "runtime/messages/environment_messages.h"
#include "runtime/process/process.h"

namespace korvex::host {
namespace {

namespace process = runtime::process;

constexpr const char* answerName = "ans";
constexpr std::string_view clearingCommand = "clear";

std::optional<Failure> failureOf(const SourceStatement& statement, const std::function<void()>& step) {
    try {
        if (!runtime::interpreter::isInterruptPending()) step();
    } catch (const FailedAssertion& assertion) {
        return assertion.failureIn(statement.text);
    } catch (...) {
        return describeCurrentException();
    }
    return std::nullopt;
}

}  // namespace

std::optional<Failure> StatementRunner::tell(const SourceStatement& statement,
                                             const std::function<void()>& step) {
    presenter_.statementBegins(statement);
    std::optional<Failure> failure = failureOf(statement, step);
    // What failed because the user wanted it to stop is reported as that.
    if (runtime::interpreter::takeInterrupt()) failure = interruptedFailure();
    if (failure) {
        const bool isCaught = catchingScopes_ > 0 && !isInterrupt(*failure);
        if (isCaught) {
            presenter_.caught(*failure);
        } else {
            presenter_.failed(*failure);
        }
        workspace_.lastFailure = *failure;
    }
    presenter_.statementEnds();
    return failure;
}

void StatementRunner::perform(const SimpleAction& action, bool isShown) {
    std::visit([&](const auto& content) { run(content, isShown); }, action);
}

Value StatementRunner::valueOf(const Expression& expression) {
    return Evaluator(workspace_, commands_).value(expression);
}

void StatementRunner::run(const Expression& expression, bool isShown) {
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

void StatementRunner::run(const Assignment& assignment, bool isShown) {
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
    if (firstUnset != 0) throw HostError("outputNotSet", messages::outputNotGiven(countText(firstUnset)));
}

void StatementRunner::run(const CommandWords& command, bool isShown) {
    // The words were read when the variable may not have been there yet. What takes variables away cannot be
    // hidden by one, or it could not be had back.
    if (command.name != clearingCommand && workspace_.hasVariable(command.name))
        throw HostError("hiddenByVariable", messages::hiddenByVariable(widen(command.name)));
    std::vector<Value> arguments;
    for (const std::u16string& word : command.words)
        arguments.push_back(makeText(word));
    setAnswer(std::move(Evaluator(workspace_, commands_).call(command.name, 0, arguments)[0]), isShown);
}

void StatementRunner::run(const ShellCommand& command, bool) {
    // What is not typed at a terminal may be the script itself, which a command must not read away.
    const bool hasTerminal = process::isTerminal(process::Stream::input);
    if (!runtime::dispatcher::currentFolderExists()) throw fl::filesystem::PathNotFound();
    ShellOutput output;
    const int status = process::runShellCommand(
        command.command, runtime::dispatcher::currentFolderPath(),
        [&](std::string_view bytes) { runtime::interpreter::writeOutput(output.complete(bytes)); },
        hasTerminal ? process::ShellInput::ofThisProcess : process::ShellInput::empty);
    runtime::interpreter::writeOutput(output.rest());
    // Behind the environment's back the shell may have changed any folder.
    runtime::dispatcher::forgetFolderViews();
    if (status != 0 && !runtime::interpreter::isInterruptPending()) {
        kxWarningMsgId(KORVEX::host::shellStatus(widen(std::to_string(status))));
    }
}

void StatementRunner::setAnswer(Value value, bool isShown) {
    if (!value) return;
    Value& answer = workspace_.variables[answerName];
    answer = std::move(value);
    presenter_.result(answerName, answer.get(), isShown);
}

}  // namespace korvex::host
