// The arguments of kwsh.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/kwsh/colours.h"

namespace korvex::host {

/// Characters in a line of the widest window.
inline constexpr std::size_t mostColumns = 1'000'000;

enum class OutputFormat { people, transcript, json };

struct Options {
    /// Texts of -e, in order, in bytes.
    std::vector<std::string> statements;
    /// A script; "-" is standard input.
    std::optional<std::string> script;
    OutputFormat format = OutputFormat::people;
    bool stopsAtFailure = false;
    std::optional<std::string> currentFolder;
    std::optional<std::string> configurationFolder;
    std::optional<std::size_t> columns;
    ColourChoice colours = ColourChoice::automatic;
    bool isProgressUnwanted = false;
    /// The severities of the diagnostic trace; none without a trace.
    std::optional<std::uint32_t> traceMask;
    /// Where the trace goes instead of standard error.
    std::optional<std::string> traceFile;
    bool isHelpWanted = false;
    bool isVersionWanted = false;
};

/// Wrong options; the text names what is wrong.
class OptionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Takes the arguments without the program's name. Raises `OptionError`.
Options parseOptions(std::vector<std::string> arguments);

/// What --help prints: every option with an example.
std::string usageText();
/// What --version prints.
std::string versionText();

}  // namespace korvex::host
