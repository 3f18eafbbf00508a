// What one statement does: calls, outputs, errors, warnings, interrupts, and the order in which they are
// told.
#include "host/kwsh/session.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "platform/message_identifiers.h"
#include "platform/storage_vfs.h"
#include "platform/user_exceptions.h"
#include "runtime/interpreter/functions.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/interpreter/output.h"
#include "tests/unit/host/host_fixture.h"

namespace korvex::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
namespace interpreter = runtime::interpreter;

struct Call {
    int outputs = -1;
    std::vector<std::string> arguments;
    bool endsWithNull = false;
    bool slotsWereNull = true;
};
Call lastCall;

/// Remembers how it was called and sets as many outputs as are asked for, at least one: the numbers 1, 2, ...
void record(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
    lastCall = {nlhs, {}, prhs[nrhs] == nullptr, true};
    for (int at = 0; at < nrhs; ++at) {
        const std::u16string text = host::shortForm(prhs[at]);
        lastCall.arguments.emplace_back(text.begin(), text.end());
    }
    for (int at = 0; at < std::max(1, nlhs); ++at) {
        lastCall.slotsWereNull = lastCall.slotsWereNull && plhs[at] == nullptr;
        plhs[at] = kxCreateDoubleScalar(at + 1);
    }
}

void setNothing(int, kxArray*[], int, const kxArray*[]) {}

void setSecondOnly(int nlhs, kxArray* plhs[], int, const kxArray*[]) {
    if (nlhs > 1) plhs[1] = kxCreateDoubleScalar(2);
}

void printAndWarn(int, kxArray* plhs[], int, const kxArray*[]) {
    interpreter::writeOutput(u"printed");
    kxWarningMsgId(KORVEX::MKDIR::DirectoryExists());
    plhs[0] = kxCreateDoubleScalar(1);
}

void setAndRaise(int, kxArray* plhs[], int, const kxArray*[]) {
    plhs[0] = kxCreateDoubleScalar(1);
    throw foundation::core::except::Exception<KORVEX::FILE::ReadOnly>(KORVEX::FILE::ReadOnly(u"a.txt"),
                                                                      "KORVEX:COPYFILE:ReadOnly");
}

void raiseStorageError(int, kxArray*[], int, const kxArray*[]) {
    namespace vfs = foundation::storage::vfs;
    throw vfs::Exception(vfs::permissionDenied, vfs::AbsoluteIRI(u"file:///a"));
}

void raiseUnknownScheme(int, kxArray*[], int, const kxArray*[]) {
    throw foundation::storage::vfs::UnsupportedIRISchemeException(u"ftp");
}

void raiseStandardError(int, kxArray*[], int, const kxArray*[]) { throw std::runtime_error("out of order"); }

void beInterrupted(int, kxArray* plhs[], int, const kxArray*[]) {
    interpreter::raiseInterrupt();
    plhs[0] = kxCreateDoubleScalar(1);
}

void beInterruptedAndRaise(int, kxArray*[], int, const kxArray*[]) {
    interpreter::raiseInterrupt();
    throw std::runtime_error("stopped half way");
}

void deleteHandle(int, kxArray*[], int, const kxArray*[]) {
    inCallFcn(0, nullptr, 0, nullptr, "korvex.graphics.internal.hgdelete");
}

class SessionRun : public testing::Test {
protected:
    SessionRun() {
        host.commands = {{"record", record},
                         {"nothing", setNothing},
                         {"second", setSecondOnly},
                         {"noisy", printAndWarn},
                         {"failing", setAndRaise},
                         {"storage", raiseStorageError},
                         {"scheme", raiseUnknownScheme},
                         {"standard", raiseStandardError},
                         {"stopped", beInterrupted},
                         {"halfway", beInterruptedAndRaise},
                         {"handle", deleteHandle}};
        lastCall = Call();
    }
    const std::vector<std::string>& events() const { return host.presenter.events; }
    HostSession host;
};

// -------------------------------------------------------------------------------------------- calls

TEST_F(SessionRun, ArgumentsArriveWithANullBehindTheLast) {
    host.run("record('a', \"b\", [1 2])");
    EXPECT_THAT(lastCall.arguments, ElementsAre("'a'", "\"b\"", "[1 2]"));
    EXPECT_TRUE(lastCall.endsWithNull);
    EXPECT_TRUE(lastCall.slotsWereNull);
}

TEST_F(SessionRun, ACallWithoutOutputsAsksForNoneAndKeepsWhatItGetsAsAns) {
    host.run("record(1)\nrecord");
    EXPECT_EQ(lastCall.outputs, 0);
    EXPECT_THAT(events(),
                ElementsAre("begin record(1)", "ans shown", "end", "begin record", "ans shown", "end"));
}

TEST_F(SessionRun, ACallThatSetsNothingShowsNothing) {
    host.run("nothing");
    EXPECT_THAT(events(), ElementsAre("begin nothing", "end"));
}

TEST_F(SessionRun, OutputsAreAskedForByTheirNumber) {
    host.run("[a, ~, c] = record;");
    EXPECT_EQ(lastCall.outputs, 3);
    EXPECT_THAT(events(), ElementsAre("begin [a, ~, c] = record", "a set", "c set", "end"));
    host.run("x = record();");
    EXPECT_EQ(lastCall.outputs, 1);
    host.run("[~] = record");
    EXPECT_EQ(lastCall.outputs, 1);
}

TEST_F(SessionRun, AnOutputThatWasNotSetIsAnErrorAfterTheOthersAreThere) {
    host.run("[a, b] = second");
    EXPECT_THAT(events(),
                ElementsAre("begin [a, b] = second", "b shown", "failed KORVEX:host:outputNotSet", "end"));
    EXPECT_FALSE(host.session.workspace().variables.contains("a"));
}

TEST_F(SessionRun, AnOutputThatIsDroppedNeedNotBeSet) {
    host.run("[~, b] = second;");
    EXPECT_THAT(events(), ElementsAre("begin [~, b] = second", "b set", "end"));
}

TEST_F(SessionRun, ACallThatGivesNothingIsNoArgument) {
    host.run("record(nothing)");
    EXPECT_THAT(events(), ElementsAre("begin record(nothing)", "failed KORVEX:host:outputNotSet", "end"));
    EXPECT_EQ(lastCall.outputs, -1);
}

TEST_F(SessionRun, CallsNestInArguments) {
    host.run("record(record('a'), numel('abc'))");
    EXPECT_THAT(lastCall.arguments, ElementsAre("1", "3"));
}

TEST_F(SessionRun, WordsOfTheCommandFormAreCharacterVectors) {
    host.run("record a.txt 'b c' 12 ''");
    EXPECT_THAT(lastCall.arguments, ElementsAre("'a.txt'", "'b c'", "'12'", "''"));
    EXPECT_EQ(lastCall.outputs, 0);
}

TEST_F(SessionRun, SeveralOutputsNeedACall) {
    host.run("x = 1;\n[a, b] = x\n[a, b] = 'text'");
    EXPECT_EQ(host.presenter.failures.size(), 2U);
    EXPECT_EQ(host.presenter.failures.back().identifier, "KORVEX:host:tooManyOutputs");
}

TEST_F(SessionRun, AVariableAloneIsShownAndIsNotTheAnswer) {
    host.run("x = 1;\nx\n2;\nx;");
    EXPECT_THAT(events(), ElementsAre("begin x = 1", "x set", "end", "begin x", "x shown", "end", "begin 2",
                                      "ans set", "end", "begin x", "x set", "end"));
}

// ---------------------------------------------------------------------------------- errors, warnings

TEST_F(SessionRun, PrintsWarningsAndResultsAreToldInTheirOrder) {
    host.run("noisy");
    EXPECT_THAT(events(), ElementsAre("begin noisy", "printed printed", "warned KORVEX:MKDIR:DirectoryExists",
                                      "ans shown", "end"));
}

TEST_F(SessionRun, WarningsCanBeSwitchedOff) {
    host.run("warning off KORVEX:MKDIR:DirectoryExists");
    host.presenter.events.clear();
    host.run("noisy;\nwarning on\nnoisy;");
    EXPECT_EQ(std::count(events().begin(), events().end(), "warned KORVEX:MKDIR:DirectoryExists"), 1);
    host.run("warning maybe");
    EXPECT_EQ(host.presenter.failures.back().identifier, "KORVEX:host:badArgument");
}

TEST_F(SessionRun, AUserErrorKeepsItsIdentifierAndSetsNothing) {
    host.run("failing\nx = failing");
    EXPECT_EQ(host.presenter.failures.at(0).identifier, "KORVEX:COPYFILE:ReadOnly");
    EXPECT_FALSE(host.presenter.failures.at(0).text.empty());
    EXPECT_THAT(host.session.workspace().variables, IsEmpty());
}

TEST_F(SessionRun, ErrorsOfTheStorageHaveItsIdentifiers) {
    host.run("storage\nscheme");
    ASSERT_EQ(host.presenter.failures.size(), 2U);
    EXPECT_EQ(host.presenter.failures[0].identifier, "KORVEX:virtualfilesystem:permissionDenied");
    EXPECT_EQ(host.presenter.failures[1].identifier, "KORVEX:virtualfilesystem:unsupportedProvider");
    for (const host::Failure& failure : host.presenter.failures)
        EXPECT_FALSE(failure.text.empty());
}

TEST_F(SessionRun, ErrorsOfOtherKindsAreUnexpectedAndKeepTheirText) {
    host.run("standard");
    ASSERT_EQ(host.presenter.failures.size(), 1U);
    EXPECT_EQ(host.presenter.failures[0].identifier, "KORVEX:host:unexpectedError");
    EXPECT_EQ(host.presenter.failures[0].text, u"out of order");
}

TEST_F(SessionRun, TheLastErrorAndWarningCanBeLookedAt) {
    host.run("failing\n[t, id] = lasterr;\nnoisy;\n[t, w] = lastwarn;");
    EXPECT_EQ(host.show("id"), "    KORVEX:COPYFILE:ReadOnly");
    EXPECT_EQ(host.show("w"), "    KORVEX:MKDIR:DirectoryExists");
}

TEST_F(SessionRun, ASyntaxErrorIsAFailureOfItsStatement) {
    EXPECT_TRUE(host.run("x = 'a\ny = 1").hasFailed);
    EXPECT_THAT(events(), ElementsAre("begin x = 'a", "failed KORVEX:host:syntax", "end", "begin y = 1",
                                      "y shown", "end"));
}

TEST_F(SessionRun, StopsAtTheFirstFailureOnlyWhenAskedTo) {
    EXPECT_EQ(host.run("failing\nx = 1", true).end, host::RunEnd::atFailure);
    EXPECT_FALSE(host.session.workspace().variables.contains("x"));
    EXPECT_EQ(host.run("failing\nx = 1", false).end, host::RunEnd::atEnd);
    EXPECT_TRUE(host.session.workspace().variables.contains("x"));
}

TEST_F(SessionRun, AGraphicsFunctionIsReachedThroughTheInterpreter) {
    interpreter::registerFunction(
        "korvex.graphics.internal.hgdelete",
        [](int, kxArray*[], int, const kxArray*[]) { throw std::runtime_error("none"); });
    host.run("handle");
    interpreter::registerFunction("korvex.graphics.internal.hgdelete", {});
    EXPECT_EQ(host.presenter.failures.at(0).text, u"none");
    host.run("handle");
    EXPECT_EQ(host.presenter.failures.at(1).identifier, "KORVEX:UndefinedFunction");
}

TEST_F(SessionRun, WhatTheEnvironmentIsToldComesWhereItHappens) {
    interpreter::registerFunction("korvex.graphics.internal.hgdelete",
                                  [](int, kxArray*[], int, const kxArray*[]) {});
    host.run("handle");
    interpreter::registerFunction("korvex.graphics.internal.hgdelete", {});
    EXPECT_THAT(events(), ElementsAre("begin handle", "told", "end"));
    using runtime::dispatcher::EnvironmentEvent;
    EXPECT_THAT(host.presenter.environmentEvents,
                ElementsAre(EnvironmentEvent{EnvironmentEvent::Kind::functionCalled,
                                             {u"korvex.graphics.internal.hgdelete"}}));
}

// -------------------------------------------------------------------------------- interrupts, the end

TEST_F(SessionRun, AnInterruptEndsTheStatementAfterItsOutputs) {
    EXPECT_EQ(host.run("x = stopped\ny = 1").end, host::RunEnd::atInterrupt);
    EXPECT_THAT(events(),
                ElementsAre("begin x = stopped", "x shown", "failed KORVEX:host:interrupted", "end"));
    EXPECT_FALSE(interpreter::isInterruptPending());
}

TEST_F(SessionRun, AnErrorOnTheWayOutOfAnInterruptedCommandIsTheInterrupt) {
    host.run("halfway");
    EXPECT_THAT(events(), ElementsAre("begin halfway", "failed KORVEX:host:interrupted", "end"));
}

TEST_F(SessionRun, ExitEndsTheRun) {
    EXPECT_EQ(host.run("exit\nx = 1").end, host::RunEnd::atExit);
    EXPECT_TRUE(host.session.isExitRequested());
    EXPECT_THAT(events(), ElementsAre("begin exit", "end"));
}

TEST_F(SessionRun, CommentsAndEmptyLinesAreToldToo) {
    host.run("% note\n\nx = 1;");
    EXPECT_THAT(events(), ElementsAre("plain % note", "plain ", "begin x = 1", "x set", "end"));
}

TEST_F(SessionRun, ShellOutputIsPrinted) {
    host.run("!echo hello");
    EXPECT_THAT(events(), testing::Contains("printed hello\n"));
}

TEST_F(SessionRun, AShellCommandThatDoesNotSucceedIsAWarning) {
    host.run("!true");
    EXPECT_THAT(events(), testing::Not(testing::Contains("warned KORVEX:host:shellStatus")));
    host.run("!exit 3");
    EXPECT_THAT(events(), testing::Contains("warned KORVEX:host:shellStatus"));
}

TEST_F(SessionRun, TheReceiversOfTheEnvironmentComeBackAtTheEnd) {
    std::u16string received;
    const auto earlier =
        interpreter::setOutputReceiver([&received](std::u16string_view text) { received += text; });
    { HostSession inner; }
    interpreter::writeOutput(u"still here");
    interpreter::setOutputReceiver(earlier);
    EXPECT_EQ(received, u"still here");
    runtime::dispatcher::requestPathRefresh();
    EXPECT_EQ(host.presenter.environmentEvents.size(), 1U);
}

}  // namespace
}  // namespace korvex::tests
