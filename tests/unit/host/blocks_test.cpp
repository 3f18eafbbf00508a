// Blocks: how they are read, what of them is run, how often, and what ends them.
#include <gmock/gmock.h>

#include <string>

#include "runtime/interpreter/interrupts.h"
#include "runtime/interpreter/output.h"
#include "tests/unit/host/host_fixture.h"

namespace korvex::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
namespace interpreter = runtime::interpreter;

bool isCommand(std::string_view name) { return name == "dir"; }

std::vector<host::ScriptItem> itemsOf(std::string text) {
    host::TextLines lines(std::move(text));
    host::StatementReader reader(lines, isCommand);
    std::vector<host::ScriptItem> items;
    while (std::optional<host::ScriptItem> item = reader.next())
        items.push_back(std::move(*item));
    return items;
}

host::SourceStatement onlyStatement(std::string text) {
    std::vector<host::ScriptItem> items = itemsOf(std::move(text));
    EXPECT_EQ(items.size(), 1U);
    return std::get<host::SourceStatement>(items.at(0));
}

std::u16string errorOf(std::string text) {
    const host::SourceStatement statement = onlyStatement(std::move(text));
    const auto* failure = std::get_if<host::Failure>(&statement.content);
    if (failure == nullptr) return u"no error";
    EXPECT_EQ(failure->identifier, "KORVEX:host:syntax");
    return failure->text;
}

// -------------------------------------------------------------------------------------------- reading

TEST(BlockReading, ABlockIsOneStatementWithTheTextOfAllItsLines) {
    const host::SourceStatement block = onlyStatement("  if x % why\n\n  y;\n% note\nend;  % done\n");
    EXPECT_EQ(block.line, 1U);
    EXPECT_EQ(block.text, u"if x % why\n\n  y;\n% note\nend");
    EXPECT_EQ(block.typedText, u"if x % why\n\n  y;\n% note\nend;  % done");
}

TEST(BlockReading, StatementsBehindTheEndAreTheirOwn) {
    const std::vector<host::ScriptItem> items = itemsOf("x = 1; if a, b, end; y = 2\nz");
    ASSERT_EQ(items.size(), 4U);
    EXPECT_EQ(std::get<host::SourceStatement>(items[1]).typedText, u"if a, b, end;");
    EXPECT_EQ(std::get<host::SourceStatement>(items[2]).text, u"y = 2");
    EXPECT_EQ(std::get<host::SourceStatement>(items[3]).line, 2U);
}

TEST(BlockReading, EveryFormOfStatementStandsInsideOfBlocks) {
    const host::SourceStatement block =
        onlyStatement("for k = [1 % one\n 2]\n  dir a b, c = { ...\n 1};\n  !ls; end\n  try c, end\nend");
    EXPECT_FALSE(std::holds_alternative<host::Failure>(block.content));
}

TEST(BlockReading, WordsOfBlocksAreWholeWords) {
    EXPECT_EQ(itemsOf("iffy\nending\nif_ = 3\nfor1\ntrying = 2").size(), 5U);
    EXPECT_EQ(errorOf("s.end"), u"no error");
    EXPECT_EQ(errorOf("dir end"), u"no error");
}

TEST(BlockReading, EndNeedsNoSeparatorInFront) {
    EXPECT_EQ(errorOf("if x end"), u"no error");
    EXPECT_EQ(errorOf("if x, y = z end"), u"no error");
    EXPECT_EQ(errorOf("for k = [1 2] end"), u"no error");
    EXPECT_EQ(errorOf("try end"), u"no error");
    EXPECT_EQ(errorOf("try f() catch e end"),
              u"In line 1, column 9: the end of the statement is needed here.");
}

TEST(BlockReading, AnOpenBlockAtTheEndNamesWhereItBegan) {
    EXPECT_EQ(errorOf("if x\n y"), u"In line 1, column 1: this 'if' has no 'end'.");
    EXPECT_EQ(errorOf("if x\n  for k = y\n    z\nend\n% note"),
              u"In line 1, column 1: this 'if' has no 'end'.");
    EXPECT_EQ(errorOf("  try, x"), u"In line 1, column 3: this 'try' has no 'end'.");
}

TEST(BlockReading, TheFirstMistakeInABlockIsToldAndAllOfTheBlockIsTaken) {
    EXPECT_EQ(errorOf("if x\n y = )\n if 'open\n  z\n end\n [a 1] = b\nend"),
              u"In line 2, column 6: ')' closes nothing here.");
    EXPECT_EQ(errorOf("if 'open\n dir a\nend"),
              u"In line 1, column 4: the text that begins here has no closing '.");
    EXPECT_EQ(errorOf("for\n x\nend"),
              u"In line 1, column 4: the statement ends where a variable and its values, as in 'for x = "
              u"values', is needed.");
}

TEST(BlockReading, AMistakeDoesNotHideTheEndOnItsLine) {
    EXPECT_EQ(itemsOf("if x, y = ), z, end\nw").size(), 2U);
    EXPECT_EQ(itemsOf("if x), y end\nw").size(), 2U);
    EXPECT_EQ(itemsOf("if x], y = 'end, %'; end, w").size(), 2U);
    EXPECT_EQ(itemsOf("if x], bend, end_, % end\nend\nw").size(), 2U);
    EXPECT_EQ(itemsOf("if x, 3end, end\nw").size(), 2U);
}

TEST(BlockReading, AWordOutsideOfItsBlockIsRefused) {
    for (const char* text :
         {"end", "else", "elseif x", "catch", "catch e", "if x, catch, end", "try, else, end",
          "for k = 1, elseif x, end", "if x, else, elseif y, end", "try, catch, catch, end"}) {
        EXPECT_NE(errorOf(text), u"no error") << text;
    }
}

TEST(BlockReading, BlocksNestedAHundredThousandTimesAreRefusedAndLeftOut) {
    std::string text;
    for (int level = 0; level < 100000; ++level)
        text += "if x\n";
    for (int level = 0; level < 100000; ++level)
        text += "end\n";
    EXPECT_EQ(errorOf(text), u"In line 101, column 1: blocks are nested too deeply.");
}

// -------------------------------------------------------------------------------------------- running

/// Prints its arguments.
void print(int, kxArray*[], int nrhs, const kxArray* prhs[]) {
    for (int at = 0; at < nrhs; ++at)
        interpreter::writeOutput(host::shortForm(prhs[at]));
}

void giveTrue(int, kxArray* plhs[], int, const kxArray*[]) { plhs[0] = kxCreateLogicalScalar(true); }

void beInterrupted(int, kxArray* plhs[], int, const kxArray*[]) {
    interpreter::raiseInterrupt();
    plhs[0] = kxCreateLogicalScalar(false);
}

class BlockRun : public testing::Test {
protected:
    BlockRun() { host.commands = {{"print", print}, {"yes", giveTrue}, {"stopped", beInterrupted}}; }
    ~BlockRun() override { interpreter::takeInterrupt(); }

    /// What was printed, one behind the other; identifiers of errors that were not caught in < >.
    std::string run(std::string text) {
        host.presenter.events.clear();
        result = host.run(std::move(text));
        std::string shown;
        for (const std::string& event : host.presenter.events) {
            if (event.starts_with("printed ")) shown += event.substr(8);
            if (event.starts_with("failed ")) shown += '<' + event.substr(7) + '>';
        }
        return shown;
    }

    HostSession host;
    host::RunResult result;
};

TEST_F(BlockRun, TheFirstConditionThatHoldsDecides) {
    EXPECT_EQ(run("if 0, print(1), elseif yes, print(2), elseif print(3), else, print(4), end"), "2");
    EXPECT_EQ(run("if [], print(1), else, print(2), end"), "2");
    EXPECT_EQ(run("if [], print(1), end"), "");
}

TEST_F(BlockRun, HeadsThatAreEvaluatedAreToldWithTheirLines) {
    host.run("if 0\n  x = 1\nelseif 1\n  x = 2\nelseif 2\nelse\nend");
    EXPECT_THAT(host.presenter.events,
                ElementsAre("begin if 0", "end", "begin elseif 1", "end", "begin x = 2", "x shown", "end"));
}

TEST_F(BlockRun, LoopsRunOverColumns) {
    EXPECT_EQ(run("for k = [1 2 3], print(k), end"), "123");
    EXPECT_EQ(run("for k = [1 2; 3 4], print(size(k)), end"), "[2 1][2 1]");
    EXPECT_EQ(run("for k = {1, 'a'}, print(class(k), k{1}), end"), "'cell'1'cell''a'");
    EXPECT_EQ(run("for k = [\"a\" missing], print(k), end"), "\"a\"<missing>");
    EXPECT_EQ(run("for k = reshape([1 2 3 4 5 6 7 8], 2, 2, 2), print(k(1)), end"), "1357");
    EXPECT_EQ(run("for k = [true false], print(class(k)), end"), "'logical''logical'");
    EXPECT_EQ(run("for k = [struct() struct()], print(class(k)), end"), "'struct''struct'");
}

TEST_F(BlockRun, NothingIsRunForAnEmptyArray) {
    EXPECT_EQ(run("for k = [], print(k), end, for k = cell(0, 3), print(k), end, for k = '', print(k), end"),
              "");
    EXPECT_FALSE(host.session.workspace().variables.contains("k"));
}

TEST_F(BlockRun, TheLoopVariableMayBeSetInsideAndTheTurnsStayTheSame) {
    EXPECT_EQ(run("x = [1 2]; for k = x, k = 7; x = []; print(k), end, print(k)"), "777");
}

TEST_F(BlockRun, AFailureEndsAllBlocksAroundIt) {
    EXPECT_EQ(run("for k = [1 2], if k, print(k), nothing, end, end\nprint(3)"),
              "1<KORVEX:UndefinedFunction>3");
    EXPECT_TRUE(result.hasFailed);
}

TEST_F(BlockRun, AFailureThatIsCaughtIsNone) {
    EXPECT_EQ(run("try, print(1), nothing, print(2), catch e, print(e.identifier), end"),
              "1'KORVEX:UndefinedFunction'");
    EXPECT_FALSE(result.hasFailed);
    EXPECT_EQ(host.session.workspace().lastFailure.identifier, "KORVEX:UndefinedFunction");
}

TEST_F(BlockRun, AFailureInTheHandlerIsNotCaught) {
    EXPECT_EQ(run("try, nothing, catch, error('A:b', 'c'), end"), "<A:b>");
    EXPECT_EQ(run("try, try, nothing, catch, error('A:b', 'c'), end, catch e, print(e.message), end"), "'c'");
}

TEST_F(BlockRun, AConditionThatFailsIsCaughtToo) {
    EXPECT_EQ(run("try, if nothing, end, catch, print(1), end"), "1");
    EXPECT_EQ(run("try, for k = {1}{2}, end, catch e, print(e.identifier), end"), "<KORVEX:host:syntax>");
    EXPECT_EQ(run("c = {1}; try, for k = c{2}, end, catch e, print(e.identifier), end"),
              "'KORVEX:host:indexOutOfRange'");
}

TEST_F(BlockRun, ABlockWithAMistakeDoesNothing) {
    EXPECT_EQ(run("print(1), if 1, print(2), x = ), end\nprint(3)"), "1<KORVEX:host:syntax>3");
    EXPECT_EQ(run("try, print(1), x = ), catch, print(2), end"), "<KORVEX:host:syntax>");
}

TEST_F(BlockRun, ExitLeavesAllBlocks) {
    EXPECT_EQ(run("for k = [1 2], try, if k, print(k), exit, end, catch, end, print(3), end\nprint(4)"), "1");
    EXPECT_EQ(result.end, host::RunEnd::atExit);
    EXPECT_FALSE(result.hasFailed);
}

// ----------------------------------------------------------------------------------------- interrupts

TEST_F(BlockRun, AnInterruptEndsLoopsAndIsNotCaught) {
    EXPECT_EQ(run("try, for k = [1 2], print(k), stopped; end, catch, print(3), end\nprint(4)"),
              "1<KORVEX:host:interrupted>");
    EXPECT_EQ(result.end, host::RunEnd::atInterrupt);
}

TEST_F(BlockRun, AnInterruptEndsALoopWithoutStatements) {
    EXPECT_EQ(run("for k = [stopped 1 2], end, print(1)"), "<KORVEX:host:interrupted>");
}

TEST_F(BlockRun, WhatAnInterruptedCommandAnswersDecidesNothing) {
    EXPECT_EQ(run("if ~stopped, print(1), else, print(2), end"), "<KORVEX:host:interrupted>");
    EXPECT_EQ(run("stopped || print(1)"), "<KORVEX:host:interrupted>");
    EXPECT_EQ(run("print(stopped)"), "<KORVEX:host:interrupted>");
}

TEST_F(BlockRun, NothingIsBegunWhileAnInterruptIsPending) {
    interpreter::raiseInterrupt();
    EXPECT_EQ(run("print(1)\nprint(2)"), "<KORVEX:host:interrupted>");
}

TEST_F(BlockRun, AnErrorWithTheIdentifierOfAnInterruptIsOne) {
    EXPECT_EQ(run("try, error('KORVEX:host:interrupted', 'x'), catch, print(1), end"),
              "<KORVEX:host:interrupted>");
}

// -------------------------------------------------------------------------------------------- asserts

TEST_F(BlockRun, AnAssertionTellsWhatDoesNotHold) {
    run("assert(1 == 2);\nassert(0, 'no')");
    ASSERT_EQ(host.presenter.failures.size(), 2U);
    EXPECT_EQ(host.presenter.failures[0].identifier, "KORVEX:host:assertionFailed");
    EXPECT_EQ(host.presenter.failures[0].text, u"This does not hold: assert(1 == 2)");
    EXPECT_EQ(host.presenter.failures[1].text, u"no");
    EXPECT_THAT(run("assert([1 1])"), IsEmpty());
}

}  // namespace
}  // namespace korvex::tests
