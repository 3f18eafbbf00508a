// The table of interpreted functions. Belongs to the interpreter's thread.
#include "runtime/interpreter/functions.h"

#include <map>
#include <string_view>

#include "platform/message_catalog.h"
#include "runtime/dispatcher/environment_events.h"
#include "runtime/messages/environment_messages.h"

namespace korvex::runtime::interpreter {
namespace {

using FunctionTable = std::map<std::string, InterpretedFunction, std::less<>>;

FunctionTable& functions() {
    static FunctionTable table;
    return table;
}

/// A copy, so that a function may replace or remove itself while it runs. Empty when there is none.
InterpretedFunction findFunction(std::string_view name) {
    const auto found = functions().find(name);
    return found == functions().end() ? InterpretedFunction() : found->second;
}

}  // namespace

void registerFunction(const std::string& name, InterpretedFunction function) {
    if (function) {
        functions().insert_or_assign(name, std::move(function));
    } else {
        functions().erase(name);
    }
}

}  // namespace korvex::runtime::interpreter

void inCallFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[], const char* name) {
    const auto function = korvex::runtime::interpreter::findFunction(name);
    if (!function) {
        using foundation::core::except::Exception;
        throw Exception<KORVEX::UndefinedFunction>(KORVEX::UndefinedFunction(fl::i18n::to_ustring(name)));
    }
    // Told before the call: what the function itself does comes behind it, also when it raises.
    using korvex::runtime::dispatcher::EnvironmentEvent;
    korvex::runtime::dispatcher::announce(
        {EnvironmentEvent::Kind::functionCalled, {fl::i18n::to_ustring(name)}});
    function(nlhs, plhs, nrhs, prhs);
}
