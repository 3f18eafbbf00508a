// The built program, from the outside: input, streams, exit status.
#include <gmock/gmock.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <sstream>

#include "runtime/process/process.h"
#include "runtime/text/encoding.h"
#include "tests/support/scratch_folder.h"

namespace korvex::tests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
namespace process = runtime::process;

struct ProgramRun {
    int status = -1;
    std::string output;
    std::string errors;
};

class KwshProgram : public testing::Test {
protected:
    /// Runs kwsh in the scratch folder with arguments written as for the shell.
    ProgramRun run(const std::string& arguments) { return runProgram(KWSH_PROGRAM, arguments); }

    ProgramRun runProgram(const std::string& program, const std::string& arguments) {
        ProgramRun result;
        const std::string command = "COLUMNS= XDG_CONFIG_HOME='" + scratch.path().string() + "' '" + program +
                                    "' " + arguments + " >output 2>errors";
        result.status = process::runShellCommand(runtime::text::fromBytes(command), scratch.text(),
                                                 [](std::string_view) {});
        result.output = process::readFile(scratch.text() + u"/output");
        result.errors = process::readFile(scratch.text() + u"/errors");
        return result;
    }

    static std::vector<nlohmann::json> linesOf(const std::string& output) {
        std::vector<nlohmann::json> lines;
        std::istringstream stream(output);
        for (std::string line; std::getline(stream, line);)
            lines.push_back(nlohmann::json::parse(line));
        return lines;
    }

    ScratchFolder scratch;
};

constexpr const char* undefinedError = "  (KORVEX:UndefinedFunction)\n";

TEST_F(KwshProgram, OutputThatCannotBeWrittenIsNoSuccess) {
    for (const char* arguments : {"-e pwd", "--json -e pwd", "--transcript -e pwd", "--help"}) {
        const std::string command =
            "'" + std::string(KWSH_PROGRAM) + "' " + arguments + " >/dev/full 2>errors";
        const int status = process::runShellCommand(runtime::text::fromBytes(command), scratch.text(),
                                                    [](std::string_view) {});
        EXPECT_EQ(status, 1) << arguments;
        EXPECT_THAT(process::readFile(scratch.text() + u"/errors"), HasSubstr("cannot be written"));
    }
}

TEST_F(KwshProgram, EmptyFolderNamesAreWrongOptions) {
    EXPECT_EQ(run("--cd '' -e pwd").status, 2);
    EXPECT_EQ(run("--config '' -e pwd").status, 2);
}

TEST_F(KwshProgram, AScriptStopsAtItsFirstError) {
    scratch.writeFile("test.k", "x = 1\nnothing\ny = 2\n");
    const ProgramRun result = run("test.k");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "x =\n    1\n");
    EXPECT_THAT(result.errors, StartsWith("Error: "));
    EXPECT_THAT(result.errors, HasSubstr(undefinedError));
}

TEST_F(KwshProgram, AScriptWithoutErrorsSucceedsAndExitEndsIt) {
    scratch.writeFile("test.k", "x = 1;\nexit\nnothing\n");
    const ProgramRun result = run("test.k");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output + result.errors, "");
}

TEST_F(KwshProgram, TextsRunInOrderAndShareVariables) {
    const ProgramRun result = run("-e 'x = 1;' -e '[x, 2]'");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "ans =\n    1    2\n");
    EXPECT_EQ(run("-e nothing -e 'x = 1'").output, "");
}

TEST_F(KwshProgram, StandardInputThatIsNoTerminalIsAScript) {
    scratch.writeFile("test.k", "x = 1\nnothing\n");
    for (const char* arguments : {"<test.k", "- <test.k"}) {
        const ProgramRun result = run(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "x =\n    1\n");
    }
    EXPECT_EQ(run("</dev/null").status, 0);
}

TEST_F(KwshProgram, AShellCommandDoesNotReadAwayTheScript) {
    scratch.writeFile("test.k", "!cat\nx = 1\n");
    EXPECT_EQ(run("<test.k").output, "x =\n    1\n");
    EXPECT_EQ(run("-e '!cat' -e 'x = 1' <test.k").output, "x =\n    1\n");
}

TEST_F(KwshProgram, BlocksStandInEveryKindOfScript) {
    const std::string block = "for k = {'a', 'b'}\n  if isfile(k{1})\n    k\n  end\nend\n";
    scratch.writeFile("a");
    scratch.writeFile("test.k", block);
    const std::string shown = "k =\n    {'a'}\n";
    EXPECT_EQ(run("test.k").output, shown);
    EXPECT_EQ(run("<test.k").output, shown);
    EXPECT_EQ(run("-e \"" + block + "\"").output, shown);
}

TEST_F(KwshProgram, ABlockThatIsNeverClosedNamesItsLineAndRunsNothing) {
    scratch.writeFile("a");
    scratch.writeFile("test.k", "x = 1;\nif true\n  delete a\n");
    for (const char* arguments : {"test.k", "<test.k", "-e 'x = 1' -e 'if true' -e end"}) {
        const ProgramRun result = run(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.errors, HasSubstr("this 'if' has no 'end'.\n  (KORVEX:host:syntax)\n"));
    }
    EXPECT_THAT(run("test.k").errors, HasSubstr("In line 2, column 1: "));
    EXPECT_TRUE(std::filesystem::exists(scratch.path() / "a"));
}

TEST_F(KwshProgram, AnErrorThatIsCaughtIsSuccess) {
    const ProgramRun result = run("-e 'try, nothing, catch e, e.identifier, end'");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "ans =\n    KORVEX:UndefinedFunction\n");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(run("--json -e 'try, nothing, end'").status, 0);
}

TEST_F(KwshProgram, JsonOfABlockIsOneObjectForEachStatementThatIsRun) {
    scratch.writeFile("test.k",
                      "for k = [1 2]\n  if k == 2\n    x = k;\n  end\nend\n"
                      "try\n  nothing\ncatch e\n  e.message;\nend\nif mkdir('d'), end\nif \"s\"\nend\n");
    const std::vector<nlohmann::json> lines = linesOf(run("--json test.k").output);
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0]["line"], 3);
    EXPECT_EQ(lines[0]["statement"], "x = k");
    EXPECT_EQ(lines[1]["line"], 7);
    EXPECT_EQ(lines[1]["error"]["id"], "KORVEX:UndefinedFunction");
    EXPECT_EQ(lines[1]["error"]["caught"], true);
    EXPECT_EQ(lines[2]["line"], 9);
    EXPECT_EQ(lines[3]["statement"], "if mkdir('d')");
    EXPECT_FALSE(lines[3]["events"].empty());
    EXPECT_EQ(lines[4]["statement"], "if \"s\"");
    EXPECT_EQ(lines[4]["error"]["id"], "KORVEX:host:badCondition");
}

TEST_F(KwshProgram, CtrlCEndsALoopAndIsCaughtByNobody) {
    scratch.writeFile("test.k",
                      "try\n  for k = [1 2 3]\n    k\n    !kill -INT $PPID\n  end\ncatch\n  k\nend\nk\n");
    const ProgramRun result = run("test.k");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "k =\n    1\n");
    EXPECT_THAT(result.errors, HasSubstr("  (KORVEX:host:interrupted)\n"));
}

TEST_F(KwshProgram, TextsOfTheHostAreInTheUsersLanguage) {
    const std::string program = "LC_ALL=de_DE.UTF-8 '" KWSH_PROGRAM "'";
    EXPECT_THAT(runProgram("env", program + " -e '[1 2; 3]'").errors, HasSubstr("passen nicht zusammen"));
    EXPECT_THAT(runProgram("env", program + " -e 'x = (1'").errors, HasSubstr("In Zeile 1, Spalte 5: "));
}

TEST_F(KwshProgram, CommandsOfTheModuleRun) {
    scratch.writeFile("d/a.txt");
    const ProgramRun result = run("--cd d -e 'x = isfile(\"a.txt\")' -e 'isfolder ../d'");
    EXPECT_EQ(result.output, "x =\n    1\nans =\n    1\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(KwshProgram, AScriptIsLookedForWhereKwshWasStarted) {
    scratch.writeFile("test.k", "pwd");
    scratch.makeFolder("d");
    EXPECT_EQ(run("--cd d test.k").output, (scratch.path() / "d").string() + "\n");
}

TEST_F(KwshProgram, JsonIsOneObjectAStatementAndGoesOn) {
    scratch.writeFile("test.k", "% note\nx = isfile({'test.k', 'no'});\n\nnothing\n!echo hello\ny = 'a\n");
    const ProgramRun result = run("--json test.k");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "");
    const std::vector<nlohmann::json> lines = linesOf(result.output);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0]["line"], 2);
    EXPECT_EQ(lines[0]["statement"], "x = isfile({'test.k', 'no'})");
    EXPECT_EQ(lines[0]["outputs"][0]["name"], "x");
    EXPECT_EQ(lines[0]["outputs"][0]["value"]["data"], (nlohmann::json{true, false}));
    EXPECT_TRUE(lines[0]["error"].is_null());
    EXPECT_EQ(lines[1]["error"]["id"], "KORVEX:UndefinedFunction");
    EXPECT_EQ(lines[2]["printed"], "hello\n");
    EXPECT_EQ(lines[3]["error"]["id"], "KORVEX:host:syntax");
}

TEST_F(KwshProgram, JsonStopsAtAnErrorWhenAskedTo) {
    const ProgramRun result = run("--json --stop-on-error -e nothing -e 'x = 1'");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(linesOf(result.output).size(), 1U);
    EXPECT_EQ(run("--json -e 'x = 1'").status, 0);
}

TEST_F(KwshProgram, ATranscriptHoldsItsErrorsAndSucceeds) {
    scratch.writeFile("test.k", "% note\nnothing\n\nx = 1\n");
    const ProgramRun result = run("--transcript test.k");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, StartsWith("% note\n>> nothing\nError: "));
    EXPECT_THAT(result.output, HasSubstr(std::string(undefinedError) + "\n>> x = 1\nx =\n    1\n"));
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(run("--transcript --stop-on-error test.k").status, 1);
}

TEST_F(KwshProgram, WrongOptionsAreStatusTwo) {
    for (const char* arguments :
         {"--nothing", "--columns 0", "missing.k", "--cd missing -e x", "--json --transcript -e x", "."}) {
        const ProgramRun result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_EQ(result.output, "") << arguments;
        EXPECT_THAT(result.errors, StartsWith("kwsh: ")) << arguments;
        EXPECT_THAT(result.errors, HasSubstr("--help")) << arguments;
    }
}

TEST_F(KwshProgram, AWrongTraceIsStatusTwo) {
    for (const char* arguments : {"--trace=all -e x=1", "--trace-file no/such/folder -e x=1"}) {
        const ProgramRun result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, HasSubstr("trace"));
    }
}

TEST_F(KwshProgram, ATraceFileIsEmptiedWhereKwshWasStarted) {
    scratch.writeFile("trace.log", "of an earlier run");
    scratch.makeFolder("elsewhere");
    const ProgramRun result = run("--trace-file trace.log --cd elsewhere -e 'x = 1;'");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output + result.errors, "");
    EXPECT_EQ(process::readFile(scratch.text() + u"/trace.log"), "");
}

TEST_F(KwshProgram, HelpAndVersionSucceed) {
    EXPECT_THAT(run("--help").output, HasSubstr("--transcript"));
    EXPECT_THAT(run("--version").output, StartsWith("kwsh "));
    EXPECT_EQ(run("--help").status, 0);
}

TEST_F(KwshProgram, ColumnsComeFromTheOptionOrTheEnvironment) {
    EXPECT_THAT(run("--columns 20 -e \"{'abcdefgh', 'abcdefgh'}\"").output, HasSubstr("(column 2)"));
    EXPECT_EQ(run("-e \"{'abcdefgh', 'abcdefgh'}\"").output, "ans =\n    {'abcdefgh'}    {'abcdefgh'}\n");
    EXPECT_THAT(runProgram("env", "COLUMNS=20 '" KWSH_PROGRAM "' -e \"{'abcdefgh', 'abcdefgh'}\"").output,
                HasSubstr("(column 2)"));
    EXPECT_THAT(
        runProgram("env", "COLUMNS=1000001 '" KWSH_PROGRAM "' -e \"repmat({'abcdefgh'}, 1, 9)\"").output,
        HasSubstr("(columns 1 to 5)"));
}

TEST_F(KwshProgram, CtrlCEndsTheStatementAndTheScript) {
    const ProgramRun result = run("-e '!kill -INT $PPID; echo done' -e 'x = 1'");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "done\n");
    EXPECT_THAT(result.errors, HasSubstr("  (KORVEX:host:interrupted)\n"));
    EXPECT_EQ(linesOf(run("--json -e '!kill -INT $PPID' -e 'x = 1'").output).size(), 1U);
}

TEST_F(KwshProgram, CtrlCDoesNotWaitForWhatTheShellLeftInTheBackground) {
    const auto begin = std::chrono::steady_clock::now();
    const ProgramRun result = run("-e '!sleep 20 & kill -INT $PPID'");
    EXPECT_THAT(result.errors, HasSubstr("  (KORVEX:host:interrupted)\n"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
}

TEST_F(KwshProgram, WithoutTheModuleItsCommandsSayWhy) {
    const std::filesystem::path programs = std::filesystem::path(KWSH_PROGRAM).parent_path();
    const std::filesystem::path alone = scratch.makeFolder("alone");
    for (const char* file : {"kwsh", KWRUNTIME_FILE})
        std::filesystem::copy(programs / file, alone / file);
    const ProgramRun result = runProgram((alone / "kwsh").string(), "-e 'x = 1' -e 'isfile a'");
    EXPECT_EQ(result.output, "x =\n    1\n");
    EXPECT_THAT(result.errors, HasSubstr("libkwfilemanip.so"));
    EXPECT_THAT(result.errors, HasSubstr("  (KORVEX:host:commandNotAvailable)\n"));
}

TEST_F(KwshProgram, NamesThatAreNoTextArriveAndLeaveAsTheyAre) {
    const ProgramRun result = run("-e \"$(printf 'x = \"a\\377\"')\"");
    EXPECT_EQ(result.output, "x =\n    \"a\xFF\"\n");
    scratch.writeFile("a\xFF");
    scratch.writeFile("test.k", "isfile a\xFF\ndouble('\xFF\xC3\xA4\xC3')\n");
    const std::string shown = "ans =\n    1\nans =\n    56575    228    56515\n";
    EXPECT_EQ(run("test.k").output, shown);
    EXPECT_EQ(run("<test.k").output, shown);
}

TEST_F(KwshProgram, SearchPathAndPackagesAreKeptFromRunToRun) {
    scratch.makeFolder("tools");
    EXPECT_EQ(run("--config settings -e 'addpath tools' -e 'package add tools t'").errors, "");
    const std::string tools = (scratch.path() / "tools").string();
    EXPECT_EQ(run("--config settings -e path -e 'package list'").output, tools + "\n" + "t  " + tools + "\n");
    EXPECT_EQ(run("-e path -e 'package list'").output, "");
    EXPECT_EQ(run("-e 'addpath tools'").status, 0);
    EXPECT_TRUE(std::filesystem::exists(scratch.path() / "korvex/path.json"));
}

TEST_F(KwshProgram, ADamagedSearchPathIsSetAsideAndTold) {
    scratch.writeFile("settings/path.json", "{");
    const ProgramRun result = run("--config settings -e path -e 'addpath .' -e path");
    EXPECT_EQ(result.output, scratch.path().string() + "\n");
    EXPECT_THAT(result.errors, HasSubstr("  (KORVEX:host:damagedConfiguration)\n"));
}

TEST_F(KwshProgram, JsonTellsWhatTheEnvironmentWasTold) {
    scratch.makeFolder("tools");
    const auto lines =
        linesOf(run("--json --config settings -e 'addpath tools' -e 'rmpath tools' -e 'path'").output);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0]["events"], nlohmann::json::array());
    const nlohmann::json removed = {{"event", "pathEntriesRemoved"},
                                    {"folders", {(scratch.path() / "tools").string()}}};
    EXPECT_EQ(lines[1]["events"], nlohmann::json::array({removed}));
    EXPECT_EQ(lines[2]["events"], nlohmann::json::array());
}

TEST_F(KwshProgram, NoSettingsAreWrittenWithoutNeed) {
    run("-e 'x = 1'");
    EXPECT_FALSE(std::filesystem::exists(scratch.path() / "korvex"));
}

}  // namespace
}  // namespace korvex::tests
