// Values of expressions, and calls: variables, the module's commands, host functions, host commands, in this
// order. So a variable hides whatever else has its name, the constants too.
#pragma once

#include <string_view>
#include <vector>

#include "host/kwsh/command_module.h"
#include "host/kwsh/statement.h"
#include "host/kwsh/values.h"
#include "host/kwsh/workspace.h"

namespace korvex::host {

class Evaluator {
public:
    Evaluator(Workspace& workspace, const CommandLookup& commands)
        : workspace_(workspace), commands_(commands) {}

    /// The one value of an expression. Raises `HostError` "outputNotSet" when a call gives none. What a
    /// command gave that was interrupted is no value to go on with: raises "interrupted" and leaves the flag
    /// pending.
    Value value(const Expression& expression);

    /// The outputs of a call, or the one value of any other expression. At least one slot; a slot is null
    /// where the call set nothing. Raises `HostError` "tooManyOutputs" when there is no call that could give
    /// so many.
    std::vector<Value> outputs(const Expression& expression, int count);

    /// The same for a name and arguments that are values already.
    std::vector<Value> call(std::string_view name, int count, const std::vector<Value>& arguments);

private:
    Value arrayValue(const ArrayLiteral& array);
    Value referenceValue(const Reference& reference);
    Value callValue(const Reference& reference);
    Value operationValue(const Operation& operation);
    Value connectedTruth(const Operation& operation);
    Value accessed(Value value, const Access& access);
    std::vector<Value> argumentValues(const std::vector<Expression>& arguments);

    Workspace& workspace_;
    const CommandLookup& commands_;
};

}  // namespace korvex::host
