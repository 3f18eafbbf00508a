// Walks the syntax tree.
#include "host/kwsh/evaluator.h"

#include <algorithm>
#include <utility>

#include "host/kwsh/concatenation.h"
#include "host/kwsh/host_commands.h"
#include "host/kwsh/host_functions.h"
#include "host/kwsh/indexing.h"
#include "host/kwsh/operators.h"
#include "runtime/interpreter/interrupts.h"

namespace korvex::host {
namespace {

template <class... Visitors>
struct Overloaded : Visitors... {
    using Visitors::operator()...;
};
template <class... Visitors>
Overloaded(Visitors...) -> Overloaded<Visitors...>;

/// Slots for outputs that a call hands over; owns what it set, also when it raises.
class OutputSlots {
public:
    explicit OutputSlots(int count) : slots_(static_cast<std::size_t>(std::max(1, count)), nullptr) {}
    ~OutputSlots() { std::ranges::for_each(slots_, kxDestroyArray); }
    OutputSlots(const OutputSlots&) = delete;
    OutputSlots& operator=(const OutputSlots&) = delete;

    kxArray** data() noexcept { return slots_.data(); }
    std::vector<Value> takeValues() {
        std::vector<Value> values(slots_.size());
        for (std::size_t at = 0; at < slots_.size(); ++at)
            values[at].reset(std::exchange(slots_[at], nullptr));
        return values;
    }

private:
    std::vector<kxArray*> slots_;
};

std::vector<Value> callEntry(CommandEntry entry, int count, const std::vector<Value>& arguments) {
    OutputSlots outputs(count);
    std::vector<const kxArray*> inputs;
    inputs.reserve(arguments.size() + 1);
    for (const Value& argument : arguments)
        inputs.push_back(argument.get());
    inputs.push_back(nullptr);
    entry(count, outputs.data(), static_cast<int>(arguments.size()), inputs.data());
    return outputs.takeValues();
}

std::vector<Value> oneValue(Value value) {
    std::vector<Value> values;
    values.push_back(std::move(value));
    return values;
}

void requireOneOutput(int count) {
    if (count > 1) {
        throw HostError("tooManyOutputs",
                        messages::tooManyOutputs(countText(static_cast<std::size_t>(count))));
    }
}

bool hasArguments(const Reference& call) {
    return !call.accesses.empty() && call.accesses[0].kind == AccessKind::parentheses;
}

/// Whether everything behind the name belongs to the call itself.
bool isPlainCall(const Reference& reference) {
    return reference.accesses.size() == (hasArguments(reference) ? 1U : 0U);
}

const std::vector<Expression>& argumentsOf(const Reference& call) {
    static const std::vector<Expression> none;
    return hasArguments(call) ? call.accesses[0].arguments : none;
}

}  // namespace

Value Evaluator::value(const Expression& expression) {
    return std::visit(Overloaded{
                          [](const NumberLiteral& number) { return makeDouble(number.value); },
                          [](const CharLiteral& literal) { return makeText(literal.text); },
                          [](const StringLiteral& literal) { return makeString(literal.text); },
                          [this](const ArrayLiteral& array) { return arrayValue(array); },
                          [this](const Reference& reference) { return referenceValue(reference); },
                          [this](const Prefix& prefix) {
                              const Value operand = value(*prefix.operand);
                              return prefix.sign == u'~' ? negated(operand.get())
                                                         : withSign(prefix.sign, operand.get());
                          },
                          [this](const Operation& operation) { return operationValue(operation); },
                      },
                      expression.content);
}

std::vector<Value> Evaluator::outputs(const Expression& expression, int count) {
    const auto* reference = std::get_if<Reference>(&expression.content);
    if (reference != nullptr && !workspace_.hasVariable(reference->name) && isPlainCall(*reference)) {
        return call(reference->name, count, argumentValues(argumentsOf(*reference)));
    }
    requireOneOutput(count);
    return oneValue(value(expression));
}

std::vector<Value> Evaluator::call(std::string_view name, int count, const std::vector<Value>& arguments) {
    if (const CommandEntry entry = commands_(name)) return callEntry(entry, count, arguments);
    if (const HostFunction* function = findHostFunction(name)) {
        return oneValue(callHostFunction(*function, count, arguments));
    }
    if (const HostCommand* command = findHostCommand(name)) {
        return callHostCommand(*command, workspace_, count, arguments);
    }
    raiseUndefined(name);
}

std::vector<Value> Evaluator::argumentValues(const std::vector<Expression>& arguments) {
    std::vector<Value> values;
    values.reserve(arguments.size());
    for (const Expression& argument : arguments)
        values.push_back(value(argument));
    return values;
}

Value Evaluator::arrayValue(const ArrayLiteral& array) {
    ValueRows rows;
    for (const std::vector<Expression>& row : array.rows)
        rows.push_back(argumentValues(row));
    return array.isCell ? joinCells(rows) : joinMatrices(rows);
}

Value Evaluator::referenceValue(const Reference& reference) {
    const auto variable = workspace_.variables.find(reference.name);
    const bool isVariable = variable != workspace_.variables.end();
    Value result = isVariable ? shared(variable->second.get()) : callValue(reference);
    for (std::size_t at = !isVariable && hasArguments(reference) ? 1 : 0; at < reference.accesses.size();
         ++at)
        result = accessed(std::move(result), reference.accesses[at]);
    return result;
}

Value Evaluator::callValue(const Reference& reference) {
    std::vector<Value> values = call(reference.name, 1, argumentValues(argumentsOf(reference)));
    if (runtime::interpreter::isInterruptPending()) throw HostError(interruptedFailure());
    if (!values[0]) throw HostError("outputNotSet", messages::givesNoValue(widen(reference.name)));
    return std::move(values[0]);
}

Value Evaluator::operationValue(const Operation& operation) {
    const Operator first = operation.operators[0];
    if (first == Operator::bothTrue || first == Operator::eitherTrue) return connectedTruth(operation);
    Value result = value(operation.operands[0]);
    for (std::size_t at = 0; at < operation.operators.size(); ++at) {
        const Value right = value(operation.operands[at + 1]);
        result = compared(operation.operators[at], result.get(), right.get());
    }
    return result;
}

/// The first operand that decides is the last one that is looked at.
Value Evaluator::connectedTruth(const Operation& operation) {
    const bool deciding = operation.operators[0] == Operator::eitherTrue;
    const bool isDecided = std::ranges::any_of(operation.operands, [&](const Expression& operand) {
        return isTrue(value(operand).get()) == deciding;
    });
    return makeLogical(isDecided == deciding);
}

Value Evaluator::accessed(Value value, const Access& access) {
    if (access.kind == AccessKind::field) return fieldOf(value.get(), access.field);
    const std::vector<Value> indexes = argumentValues(access.arguments);
    return access.kind == AccessKind::braces ? contentAt(value.get(), indexes)
                                             : elementAt(value.get(), indexes);
}

}  // namespace korvex::host
