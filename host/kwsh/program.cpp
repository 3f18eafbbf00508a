// From options to a session and its input.
#include "host/kwsh/program.h"

#include <charconv>
#include <chrono>
#include <memory>
#include <optional>
#include <system_error>

#include "host/kwsh/failure.h"
#include "host/kwsh/json_presenter.h"
#include "host/kwsh/options.h"
#include "host/kwsh/progress_line.h"
#include "host/kwsh/prompt.h"
#include "host/kwsh/script_lines.h"
#include "host/kwsh/session.h"
#include "host/kwsh/stream_presenter.h"
#include "host/kwsh/transcript_presenter.h"
#include "platform/foundation_filesystem.h"
#include "platform/user_exceptions.h"
#include "runtime/configuration/configuration_folder.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/interpreter/functions.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/log/trace_output.h"
#include "runtime/messages/environment_messages.h"
#include "runtime/process/process.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

namespace process = runtime::process;

constexpr int exitSuccess = 0;
constexpr int exitScriptError = 1;
constexpr int exitWrongOptions = 2;
constexpr std::size_t defaultColumns = 80;

bool hasValue(const char* variable) { return !process::environmentVariable(variable).value_or(u"").empty(); }

bool areColoursWanted(const Options& options, process::Stream stream) {
    // What programs read has none, whatever was asked for.
    if (options.format != OutputFormat::people) return false;
    const std::u16string terminal = process::environmentVariable("TERM").value_or(u"dumb");
    return isColoured(options.colours,
                      {process::isTerminal(stream), hasValue("NO_COLOR"), terminal == u"dumb"});
}

std::unique_ptr<Presenter> makePresenter(const Options& options, const ProgramStreams& streams) {
    switch (options.format) {
        case OutputFormat::json: return std::make_unique<JsonPresenter>(streams.output);
        case OutputFormat::transcript: return std::make_unique<TranscriptPresenter>(streams.output);
        case OutputFormat::people: break;
    }
    return std::make_unique<StreamPresenter>(streams.output, streams.errors,
                                             areColoursWanted(options, process::Stream::error));
}

/// The presenter with a progress line in front of it; null where there is no place for one. A trace that goes
/// to the same terminal would tear it.
std::unique_ptr<Presenter> makeProgressLine(const Options& options, Presenter& presenter,
                                            const ProgramStreams& streams) {
    const bool isTraceInTheWay = options.traceMask && !options.traceFile;
    if (options.isProgressUnwanted || options.format != OutputFormat::people || isTraceInTheWay ||
        !process::isTerminal(process::Stream::error)) {
        return nullptr;
    }
    const auto columns = [] {
        return process::terminalColumns(process::Stream::error).value_or(defaultColumns);
    };
    return std::make_unique<ProgressLine>(
        presenter, ProgressSurroundings{streams.errors, columns, std::chrono::steady_clock::now});
}

/// $COLUMNS, when it is a number of columns that --columns would take.
std::optional<std::size_t> columnsOfEnvironment() {
    const std::optional<std::u16string> value = process::environmentVariable("COLUMNS");
    if (!value) return std::nullopt;
    const std::string digits = runtime::text::toDisplayBytes(*value);
    std::size_t columns = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), columns);
    const bool isNumber = result.ec == std::errc() && result.ptr == digits.data() + digits.size();
    return isNumber && columns > 0 && columns <= mostColumns ? std::optional(columns) : std::nullopt;
}

void setColumns(const Options& options) {
    const std::optional<unsigned> terminal = process::terminalColumns(process::Stream::output);
    const std::size_t columns = options.columns ? *options.columns
                                : terminal      ? *terminal
                                                : columnsOfEnvironment().value_or(defaultColumns);
    runtime::interpreter::setWindowColumns(columns);
}

/// There are no graphics here: `delete` of a graphics handle ends in an error that says so.
void registerGraphicsFunction() {
    runtime::interpreter::registerFunction(
        "korvex.graphics.internal.hgdelete", [](int, kxArray*[], int, const kxArray*[]) {
            using foundation::core::except::Exception;
            throw Exception<KORVEX::host::noGraphics>(KORVEX::host::noGraphics());
        });
}

/// A folder or file named on the command line, taken against the folder in which kwsh was started.
std::u16string absolutePath(const std::string& argument) {
    return fl::filesystem::absolute(runtime::text::fromBytes(argument), {});
}

std::string scriptText(const std::string& path) {
    try {
        return process::readFile(absolutePath(path));
    } catch (const std::runtime_error& error) {
        throw OptionError("the script '" + path + "' cannot be read: " + error.what());
    }
}

void enterFolder(const std::string& folder) {
    try {
        runtime::dispatcher::setCurrentFolderPath(absolutePath(folder));
    } catch (const std::exception&) {
        throw OptionError("the folder '" + folder + "' cannot be entered: " +
                          runtime::text::toDisplayBytes(describeCurrentException().text));
    }
}

/// The trace runs as long as the object lives; null when none is wanted.
std::unique_ptr<runtime::log::TraceOutput> startTrace(const Options& options, std::ostream& errors) {
    using runtime::log::TraceOutput;
    if (!options.traceMask) return nullptr;
    if (!options.traceFile) return std::make_unique<TraceOutput>(errors, *options.traceMask);
    try {
        return std::make_unique<TraceOutput>(absolutePath(*options.traceFile), *options.traceMask);
    } catch (const std::system_error& error) {
        throw OptionError("the trace file '" + *options.traceFile +
                          "' cannot be written: " + error.code().message());
    }
}

bool isConversation(const Options& options) {
    return options.statements.empty() && !options.script && options.format == OutputFormat::people &&
           process::isTerminal(process::Stream::input);
}

/// Where statements come from, in order.
std::vector<std::unique_ptr<LineSource>> openSources(const Options& options, std::istream& input) {
    std::vector<std::unique_ptr<LineSource>> sources;
    for (const std::string& text : options.statements)
        sources.push_back(std::make_unique<TextLines>(text));
    if (options.script && *options.script != "-") {
        sources.push_back(std::make_unique<TextLines>(scriptText(*options.script)));
    } else if (options.statements.empty()) {
        sources.push_back(std::make_unique<StreamLines>(input));
    }
    return sources;
}

int runSources(Session& session, const Options& options,
               const std::vector<std::unique_ptr<LineSource>>& sources) {
    const bool isTranscript = options.format == OutputFormat::transcript;
    const bool stopsAtFailure = options.stopsAtFailure || options.format == OutputFormat::people;
    bool hasFailed = false;
    for (const std::unique_ptr<LineSource>& lines : sources) {
        StatementReader reader(*lines, isCommandName);
        const RunResult result = session.runAll(reader, stopsAtFailure);
        hasFailed = hasFailed || result.hasFailed;
        if (result.end == RunEnd::atInterrupt) return exitScriptError;
        if (result.end != RunEnd::atEnd) break;
        // Ctrl-C while more statements were waited for.
        if (runtime::interpreter::isInterruptPending()) return exitScriptError;
    }
    // In a transcript that goes on after errors they are part of what it tells.
    return hasFailed && (stopsAtFailure || !isTranscript) ? exitScriptError : exitSuccess;
}

int runWithOptions(const Options& options, const ProgramStreams& streams) {
    const std::u16string configurationFolder = options.configurationFolder
                                                   ? absolutePath(*options.configurationFolder)
                                                   : process::defaultConfigurationFolder();
    runtime::configuration::setConfigurationFolder(configurationFolder);
    const bool isAtPrompt = isConversation(options);
    std::vector<std::unique_ptr<LineSource>> sources;
    if (!isAtPrompt) sources = openSources(options, streams.input);
    const std::unique_ptr<runtime::log::TraceOutput> trace = startTrace(options, streams.errors);
    if (options.currentFolder) enterFolder(*options.currentFolder);
    setColumns(options);
    registerGraphicsFunction();
    process::handleInterruptKey();

    CommandModule module(process::programFolder());
    const std::unique_ptr<Presenter> presenter = makePresenter(options, streams);
    const std::unique_ptr<Presenter> progressLine = makeProgressLine(options, *presenter, streams);
    Session session(progressLine ? *progressLine : *presenter,
                    [&module](std::string_view name) { return module.find(name); });
    const bool isOutputColoured = areColoursWanted(options, process::Stream::output);
    session.setOutputColoured(isOutputColoured);
    if (!isAtPrompt) return runSources(session, options, sources);

    const std::unique_ptr<LineEditor> editor = makeLineEditor(configurationFolder, isOutputColoured);
    runPrompt(session, *editor, [&options] { setColumns(options); });
    return exitSuccess;
}

int runAsAsked(const Options& options, const ProgramStreams& streams) {
    if (options.isHelpWanted) {
        streams.output << usageText();
        return exitSuccess;
    }
    if (options.isVersionWanted) {
        streams.output << versionText();
        return exitSuccess;
    }
    return runWithOptions(options, streams);
}

}  // namespace

int runProgram(const std::vector<std::string>& arguments, const ProgramStreams& streams) {
    try {
        const int status = runAsAsked(parseOptions(arguments), streams);
        // What was computed and did not arrive, as on a full disk, is no success.
        if (streams.output.flush()) return status;
        streams.errors << "kwsh: the standard output cannot be written\n" << std::flush;
        return exitScriptError;
    } catch (const OptionError& error) {
        streams.errors << "kwsh: " << error.what() << "\nTry: kwsh --help\n" << std::flush;
        return exitWrongOptions;
    }
}

}  // namespace korvex::host
