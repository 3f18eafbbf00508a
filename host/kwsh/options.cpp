// The table of options, and their reading by CLI11.
#include "host/kwsh/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "platform/diagnostic_log.h"

namespace korvex::host {
namespace {

struct OptionHelp {
    std::string_view names;
    std::string_view value;
    std::string_view meaning;
    std::string_view example;
};

constexpr OptionHelp scriptHelp{"", "FILE.k", "run a script", "kwsh clean.k"};
/// Read as a script of that name.
constexpr OptionHelp inputHelp{"-", "", "run standard input as a script", "generate | kwsh -"};
constexpr OptionHelp statementHelp{"-e", "STATEMENTS", "run a text; may be given again, in order",
                                   "kwsh -e \"mkdir d\" -e \"dir\""};
constexpr OptionHelp jsonHelp{"--json", "", "one JSON object a statement on standard output",
                              "kwsh --json -e \"x = isfile('a.txt')\""};
constexpr OptionHelp transcriptHelp{"--transcript", "", "print each statement behind >> and what it gave",
                                    "kwsh --transcript tour.k"};
constexpr OptionHelp stopHelp{"--stop-on-error", "",
                              "end at the first error, also with --json and --transcript",
                              "kwsh --json --stop-on-error build.k"};
constexpr OptionHelp folderHelp{"--cd", "FOLDER", "the current folder at the start",
                                "kwsh --cd /data clean.k"};
constexpr OptionHelp configurationHelp{"--config", "FOLDER",
                                       "where settings, search path, packages and history are kept",
                                       "kwsh --config ./settings"};
constexpr OptionHelp columnsHelp{"--columns", "N", "the width of the window in characters",
                                 "kwsh --columns 120 -e dir"};
constexpr OptionHelp progressHelp{"--no-progress", "", "no line that tells how far a long command is",
                                  "kwsh --no-progress backup.k"};
constexpr OptionHelp colourHelp{"--color=WHEN", "",
                                "colours: auto (at a terminal, unless NO_COLOR is set), always or never",
                                "kwsh --color=never clean.k"};
constexpr OptionHelp traceHelp{"--trace[=MASK]", "",
                               "diagnostic trace to standard error; a bit a severity, 0x for hexadecimal",
                               "kwsh --trace=0x60 clean.k"};
constexpr OptionHelp traceFileHelp{"--trace-file", "FILE", "the trace to a file, emptied first",
                                   "kwsh --trace-file trace.log clean.k"};
constexpr OptionHelp versionHelp{"--version", "", "show the version", "kwsh --version"};
constexpr OptionHelp usageHelp{"-h,--help", "", "show this text", "kwsh --help"};

constexpr std::array helpOrder = {scriptHelp, inputHelp,  statementHelp,     jsonHelp,    transcriptHelp,
                                  stopHelp,   folderHelp, configurationHelp, columnsHelp, progressHelp,
                                  colourHelp, traceHelp,  traceFileHelp,     versionHelp, usageHelp};

struct ColourWord {
    std::string_view word;
    ColourChoice choice;
};

constexpr std::array colourWords = {ColourWord{"auto", ColourChoice::automatic},
                                    ColourWord{"always", ColourChoice::always},
                                    ColourWord{"never", ColourChoice::never}};

std::string namesOf(const OptionHelp& help) { return std::string(help.names); }
std::string meaningOf(const OptionHelp& help) { return std::string(help.meaning); }

/// Decimal, or hexadecimal behind 0x; 32 bits.
std::uint32_t traceMaskOf(std::string_view text) {
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const std::string_view digits = isHexadecimal ? text.substr(2) : text;
    const char* const end = digits.data() + digits.size();
    std::uint32_t mask = 0;
    const auto result = std::from_chars(digits.data(), end, mask, isHexadecimal ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != end) {
        throw OptionError("--trace takes a mask of 32 bits, as 96 or 0x60, and not '" + std::string(text) +
                          "'");
    }
    return mask;
}

ColourChoice colourChoiceOf(std::string_view text) {
    const auto found = std::ranges::find(colourWords, text, &ColourWord::word);
    if (found != colourWords.end()) return found->choice;
    throw OptionError("--color takes auto, always or never, and not '" + std::string(text) + "'");
}

std::string_view withoutDashes(std::string_view name) {
    return name.substr(std::min(name.find_first_not_of('-'), name.size()));
}

/// Too many values or too few. The parser's own words tell of numbers and types, and begin with the option.
std::string mismatchText(const CLI::App& app, const CLI::ArgumentMismatch& error) {
    const std::string_view words = error.what();
    const std::string_view named = withoutDashes(words.substr(0, words.find_first_of(": ")));
    for (const CLI::Option* option : app.get_options()) {
        const std::string name = option->get_name();
        if (withoutDashes(name) != named) continue;
        if (option->get_items_expected_max() == 0) return name + " takes no value";
        const bool isRepeated =
            option->count() > 1 && option->get_multi_option_policy() == CLI::MultiOptionPolicy::Throw;
        return name + (isRepeated ? " may be given once" : " needs a value");
    }
    return std::string(words);
}

void requireOneInput(const Options& options, bool isJson, bool isTranscript) {
    if (options.script && !options.statements.empty()) {
        throw OptionError("a script and -e cannot be given together");
    }
    if (isJson && isTranscript) throw OptionError("--json and --transcript cannot be given together");
}

}  // namespace

Options parseOptions(std::vector<std::string> arguments) {
    Options options;
    bool isJson = false;
    bool isTranscript = false;
    CLI::App app;
    const auto addSwitch = [&app](const OptionHelp& help, bool& value) {
        app.add_flag(namesOf(help), value, meaningOf(help))->disable_flag_override();
    };
    app.set_help_flag();
    app.add_option("script", options.script, meaningOf(scriptHelp));
    // Without extra arguments, a text in [ ] is not taken apart as a list.
    app.add_option(namesOf(statementHelp), options.statements, meaningOf(statementHelp))
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    addSwitch(jsonHelp, isJson);
    addSwitch(transcriptHelp, isTranscript);
    addSwitch(stopHelp, options.stopsAtFailure);
    const CLI::Validator isName(
        [](const std::string& name) { return std::string(name.empty() ? "a folder is needed" : ""); }, "");
    app.add_option(namesOf(folderHelp), options.currentFolder, meaningOf(folderHelp))->check(isName);
    app.add_option(namesOf(configurationHelp), options.configurationFolder, meaningOf(configurationHelp))
        ->check(isName);
    app.add_option(namesOf(columnsHelp), options.columns, meaningOf(columnsHelp))
        ->check(CLI::Range(std::size_t{1}, mostColumns));
    addSwitch(progressHelp, options.isProgressUnwanted);
    std::optional<std::string> colours;
    app.add_option("--color", colours, meaningOf(colourHelp));
    // A switch that may carry a value behind "="; a word behind a blank is not its.
    std::optional<std::string> traceMask;
    app.add_flag("--trace{" + std::to_string(foundation::log::severity::all) + "}", traceMask,
                 meaningOf(traceHelp));
    app.add_option(namesOf(traceFileHelp), options.traceFile, meaningOf(traceFileHelp));
    addSwitch(versionHelp, options.isVersionWanted);
    addSwitch(usageHelp, options.isHelpWanted);

    std::ranges::reverse(arguments);  // as CLI11 takes them
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::ArgumentMismatch& error) {
        throw OptionError(mismatchText(app, error));
    } catch (const CLI::ParseError& error) {
        throw OptionError(error.what());
    }
    requireOneInput(options, isJson, isTranscript);
    if (colours) options.colours = colourChoiceOf(*colours);
    if (traceMask) options.traceMask = traceMaskOf(*traceMask);
    if (options.traceFile && !options.traceMask) options.traceMask = foundation::log::severity::all;
    if (isJson) options.format = OutputFormat::json;
    if (isTranscript) options.format = OutputFormat::transcript;
    return options;
}

std::string usageText() {
    constexpr std::size_t meaningColumn = 24;
    std::string text =
        "Usage: kwsh [OPTIONS] [FILE.k]\n"
        "\n"
        "Runs the file commands at a prompt, or from a script, from -e, or from standard input.\n"
        "\n";
    for (const OptionHelp& help : helpOrder) {
        std::string line = "  " + std::string(help.names);
        if (!help.names.empty() && !help.value.empty()) line += ' ';
        line += help.value;
        line.append(line.size() < meaningColumn ? meaningColumn - line.size() : 1, ' ');
        text += line + std::string(help.meaning) + '\n' + std::string(meaningColumn, ' ') +
                "example: " + std::string(help.example) + '\n';
    }
    return text +
           "\n"
           "Exit status: 0, 1 after an error in a script, 2 for wrong options.\n"
           "At the prompt, 'help' lists the commands.\n";
}

std::string versionText() { return "kwsh " KORVEX_VERSION "\n"; }

}  // namespace korvex::host
