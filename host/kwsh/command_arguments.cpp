// From arguments to texts, and from texts to outputs.
#include "host/kwsh/command_arguments.h"

#include "host/kwsh/failure.h"
#include "runtime/interpreter/output.h"
#include "runtime/text/encoding.h"

namespace korvex::host {

namespace vfs = foundation::storage::vfs;

namespace {

std::u16string textOf(const kxArray* array) {
    std::optional<std::u16string> text = scalarText(array);
    if (!text) throw HostError("badArgument", messages::textNeeded(sizeAndClassText(array)));
    return std::move(*text);
}

}  // namespace

std::u16string textArgument(const Value& argument) { return textOf(argument.get()); }

std::string nameArgument(const Value& argument) {
    return runtime::text::toDisplayBytes(textArgument(argument));
}

std::vector<std::u16string> textArguments(Arguments arguments) {
    if (arguments.empty()) matrix::detail::error_minrhs();
    std::vector<std::u16string> texts;
    for (const Value& argument : arguments) {
        const kxArray* array = argument.get();
        if (kxGetClassID(array) == kxCELL_CLASS) {
            for (std::size_t index = 0; index < kxGetNumberOfElements(array); ++index)
                texts.push_back(textOf(shared(kxGetCell(array, index)).get()));
        } else if (kxGetClassID(array) == kxSTRING_CLASS) {
            for (std::size_t index = 0; index < kxGetNumberOfElements(array); ++index)
                texts.push_back(textOf(makeString(kxGetStringElement(array, index)).get()));
        } else {
            texts.push_back(textOf(array));
        }
    }
    return texts;
}

void requireNamed(std::u16string_view text, const resource_core::BaseMsgID& request) {
    if (text.empty()) throw HostError("badArgument", request);
}

Outputs oneText(std::u16string_view text) {
    Outputs outputs;
    outputs.push_back(makeText(text));
    return outputs;
}

Outputs linesOrPrint(const std::vector<std::u16string>& lines, int outputs) {
    if (outputs == 0) {
        std::u16string printed;
        for (const std::u16string& line : lines)
            printed += line + u'\n';
        runtime::interpreter::writeOutput(printed);
        return {};
    }
    Value column = makeArray(kxCELL_CLASS, {lines.size(), 1});
    for (std::size_t index = 0; index < lines.size(); ++index)
        kxSetCell(column.get(), index, makeText(lines[index]).release());
    Outputs values;
    values.push_back(std::move(column));
    return values;
}

std::u16string reasonWithFolder(vfs::ErrorCode code) {
    switch (code) {
        case vfs::resourceNotFound: return catalogText(messages::reasonFolderNotThere());
        case vfs::invalidLocation: return catalogText(messages::reasonNoFolder());
        case vfs::permissionDenied: return catalogText(messages::reasonFolderNotEntered());
        case vfs::unsupportedOperation: return catalogText(messages::reasonNotLocal());
        default: return catalogText(messages::reasonNoAnswer());
    }
}

}  // namespace korvex::host
