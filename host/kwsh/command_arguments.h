// Arguments and outputs of the host's commands.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/kwsh/values.h"
#include "platform/storage_vfs.h"

namespace korvex::host {

using Outputs = std::vector<Value>;
using Arguments = std::span<const Value>;

/// The text of a character row or a string scalar. Raises `HostError` "badArgument".
std::u16string textArgument(const Value& argument);
/// The same in UTF-8, for names of the host.
std::string nameArgument(const Value& argument);
/// The texts of all arguments in order; an argument may also be a cell or string array of texts. Raises the
/// count error when there is no argument, and `HostError` "badArgument".
std::vector<std::u16string> textArguments(Arguments arguments);
/// Raises `HostError` "badArgument" with a text that tells what to name.
void requireNamed(std::u16string_view text, const resource_core::BaseMsgID& request);

Outputs oneText(std::u16string_view text);
/// The lines as a cell column, or printed when no output is asked for.
Outputs linesOrPrint(const std::vector<std::u16string>& lines, int outputs);

/// Why a folder cannot be used, as the end of a sentence.
std::u16string reasonWithFolder(foundation::storage::vfs::ErrorCode code);

}  // namespace korvex::host
