// Walks the syntax tree.
#include "host/kwsh/evaluator.h"

#include <algorithm>
#include <utility>

#include "host/kwsh/concatenation.h"
#include "host/kwsh/host_commands.h"
#include "host/kwsh/host_functions.h"
#include "host/kwsh/indexing.h"

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
        throw HostError("tooManyOutputs", u"The right side gives one value, and " +
                                              countText(static_cast<std::size_t>(count)) +
                                              u" were asked for.");
    }
}

/// Whether everything behind the name belongs to the call itself.
bool isPlainCall(const Reference& reference) {
    return reference.accesses.empty() ||
           (reference.accesses.size() == 1 && reference.accesses[0].kind == AccessKind::parentheses);
}

}  // namespace

bool Evaluator::isVariable(std::string_view name) const { return workspace_.variables.contains(name); }

Value Evaluator::value(const Expression& expression) {
    return std::visit(Overloaded{
                          [](const NumberLiteral& number) { return makeDouble(number.value); },
                          [](const CharLiteral& literal) { return makeText(literal.text); },
                          [](const StringLiteral& literal) { return makeString(literal.text); },
                          [this](const ArrayLiteral& array) { return arrayValue(array); },
                          [this](const Reference& reference) { return referenceValue(reference); },
                      },
                      expression.content);
}

std::vector<Value> Evaluator::outputs(const Expression& expression, int count) {
    const auto* reference = std::get_if<Reference>(&expression.content);
    if (reference != nullptr && !isVariable(reference->name) && isPlainCall(*reference)) {
        static const std::vector<Expression> noArguments;
        return call(
            reference->name, count,
            argumentValues(reference->accesses.empty() ? noArguments : reference->accesses[0].arguments));
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
    Value result;
    std::size_t used = 0;
    if (variable != workspace_.variables.end()) {
        result = shared(variable->second.get());
    } else {
        const bool hasArguments =
            !reference.accesses.empty() && reference.accesses[0].kind == AccessKind::parentheses;
        used = hasArguments ? 1 : 0;
        result = std::move(
            call(reference.name, 1,
                 hasArguments ? argumentValues(reference.accesses[0].arguments) : std::vector<Value>())[0]);
        if (!result) {
            throw HostError("outputNotSet", u"'" + widen(reference.name) + u"' gave no value.");
        }
    }
    for (; used < reference.accesses.size(); ++used) {
        result = accessed(std::move(result), reference.accesses[used]);
    }
    return result;
}

Value Evaluator::accessed(Value value, const Access& access) {
    if (access.kind == AccessKind::field) return fieldOf(value.get(), access.field);
    const std::vector<Value> indexes = argumentValues(access.arguments);
    return access.kind == AccessKind::braces ? contentAt(value.get(), indexes)
                                             : elementAt(value.get(), indexes);
}

}  // namespace korvex::host
