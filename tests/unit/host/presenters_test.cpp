// The two presenters for people, and the way from a transcript back to its script.
#include <gtest/gtest.h>

#include <sstream>

#include "host/kwsh/script_lines.h"
#include "host/kwsh/session.h"
#include "host/kwsh/shell_output.h"
#include "host/kwsh/stream_presenter.h"
#include "host/kwsh/transcript_presenter.h"
#include "host/kwsh/values.h"
#include "runtime/text/encoding.h"
#include "tests/sessions/session_file.h"
#include "tests/unit/host/host_fixture.h"

namespace korvex::host {
namespace {

TEST(StreamPresenter, ErrorsAndWarningsGoToTheirOwnStream) {
    std::ostringstream output;
    std::ostringstream errors;
    StreamPresenter presenter(output, errors);
    presenter.printed(u"text\n");
    presenter.warned({"KORVEX:A:b", u"careful"});
    presenter.result("x", makeDouble(1).get(), true);
    presenter.result("y", makeDouble(2).get(), false);
    presenter.failed({"KORVEX:C:d", u"wrong"});
    EXPECT_EQ(output.str(), "text\nx =\n    1\n");
    EXPECT_EQ(errors.str(), "Warning: careful\n  (KORVEX:A:b)\nError: wrong\n  (KORVEX:C:d)\n");
}

TEST(StreamPresenter, ControlCharactersOfMessagesAreShownByPictures) {
    std::ostringstream output;
    std::ostringstream errors;
    StreamPresenter presenter(output, errors);
    presenter.printed(u"\u001B[31mas it is\n");
    presenter.warned({"KORVEX:A:b", u"a\u001B[2J\nb\r\n"});
    presenter.failed({"KORVEX:C:d", u"\u007F"});
    EXPECT_EQ(output.str(), "\x1B[31mas it is\n");
    EXPECT_EQ(errors.str(),
              "Warning: a\u241B[2J\nb\u240D\n\n  (KORVEX:A:b)\nError: \u2421\n  (KORVEX:C:d)\n");
}

TEST(StreamPresenter, OnlyMessagesAreColoured) {
    std::ostringstream output;
    std::ostringstream errors;
    StreamPresenter presenter(output, errors, true);
    presenter.printed(u"text\n");
    presenter.warned({"KORVEX:A:b", u"careful"});
    presenter.result("x", makeDouble(1).get(), true);
    presenter.failed({"KORVEX:C:d", u"wrong"});
    EXPECT_EQ(output.str(), "text\nx =\n    1\n");
    EXPECT_EQ(errors.str(),
              "\x1B[1;33mWarning:\x1B[0m careful\n  \x1B[2m(KORVEX:A:b)\x1B[0m\n"
              "\x1B[1;31mError:\x1B[0m wrong\n  \x1B[2m(KORVEX:C:d)\x1B[0m\n");
}

TEST(StreamPresenter, WhatItShowsBeginsOnALineOfItsOwn) {
    std::ostringstream all;
    StreamPresenter presenter(all, all);
    presenter.printed(u"no line end");
    presenter.failed({"id", u"wrong"});
    presenter.printed(u"again");
    presenter.statementEnds();
    EXPECT_EQ(all.str(), "no line end\nError: wrong\n  (id)\nagain\n");
}

std::string transcriptOf(std::string script, std::u16string_view printed) {
    std::ostringstream output;
    TranscriptPresenter presenter(output);
    TextLines lines(std::move(script));
    StatementReader reader(lines, isCommandName);
    while (const std::optional<ScriptItem> item = reader.next()) {
        if (const auto* line = std::get_if<PlainLine>(&*item)) {
            presenter.plainLine(line->text);
            continue;
        }
        presenter.statementBegins(std::get<SourceStatement>(*item));
        presenter.printed(printed);
        presenter.statementEnds();
    }
    return output.str();
}

TEST(Transcript, StatementsAndTheirContinuationsAreMarked) {
    EXPECT_EQ(transcriptOf("x = [1\n\n2]; % two\n", u""), ">> x = [1\n..\n.. 2]; % two\n");
}

TEST(Transcript, PlainLinesStandAsTheyAre) {
    EXPECT_EQ(transcriptOf("% why\n\n   % indented\n", u""), "% why\n\n% indented\n");
}

TEST(Transcript, OutputThatLooksLikeScriptIsMarked) {
    EXPECT_EQ(transcriptOf("x", u">> a\n.. b\n% c\n\\ d\n\\\n>>\nplain"),
              ">> x\n\\ >> a\n\\ .. b\n\\ % c\n\\ \\ d\n\\ \\\n\\ >>\nplain\n");
}

TEST(Transcript, EmptyOutputLinesAtTheEndAreMarked) {
    EXPECT_EQ(transcriptOf("x", u"\na\n\n\nb\n\n\n"), ">> x\n\na\n\n\nb\n\\\n\\\n");
}

/// Scripts whose transcripts are hard to tell apart from what they print.
class TranscriptRoundTrip : public testing::TestWithParam<const char16_t*> {};

TEST_P(TranscriptRoundTrip, GivesTheScriptBack) {
    const std::string script = "% first\n\nx = [1 % row\n\n 2];\n\n\ny = 2 % last\n\n";
    EXPECT_EQ(tests::scriptOf(tests::linesOf(transcriptOf(script, GetParam()))), script);
}

INSTANTIATE_TEST_SUITE_P(Outputs, TranscriptRoundTrip,
                         testing::Values(u"", u"a", u"\n", u"\n\n", u"a\n\n", u"\n\na\n", u">> x\n", u"% c\n",
                                         u"..\n", u"\\\n", u"a\n\n>> b\n\n\n% c\n"));

TEST(Transcript, ABlockIsTypedAtOnceAndWhatItGaveFollows) {
    std::ostringstream output;
    TranscriptPresenter presenter(output);
    tests::HostSession host(presenter);
    host.run("for k = [1 2]\n  % turn\n\n  k\nend % done\nx = 3;\n");
    EXPECT_EQ(
        output.str(),
        ">> for k = [1 2]\n..   % turn\n..\n..   k\n.. end % done\nk =\n    1\nk =\n    2\n>> x = 3;\n");
}

TEST(Transcript, ABlockComesBackAsItWasTyped) {
    const std::string script =
        "% first\nif 1 % one\n\n  % note\n  !echo; echo '>> x'; echo\n  if 0, end; end % two\n\ny = 2; try, "
        "z, "
        "end; y\n";
    const std::string read =
        "% first\nif 1 % one\n\n  % note\n  !echo; echo '>> x'; echo\n  if 0, end; end % two\n\ny = 2;\ntry, "
        "z, "
        "end;\ny\n";
    std::ostringstream output;
    TranscriptPresenter presenter(output);
    tests::HostSession host(presenter);
    host.run(script);
    EXPECT_EQ(tests::scriptOf(tests::linesOf(output.str())), read);
}

TEST(SessionFile, ADifferenceShowsTheLinesOfBothSides) {
    EXPECT_EQ(tests::difference({"a", "b", "c"}, {"a", "x", "y", "c"}),
              "expected:\n  2: b\nactual:\n  2: x\n  3: y\n");
    EXPECT_EQ(tests::difference({"a"}, {"a", "b"}),
              "expected: nothing there, before line 2\nactual:\n  2: b\n");
    EXPECT_EQ(tests::difference({"a"}, {"a"}), "");
}

TEST(ShellOutput, ACharacterInPiecesIsPutTogether) {
    ShellOutput output;
    EXPECT_EQ(output.complete("a\xF0\x9F"), u"a");
    EXPECT_EQ(output.complete("\x98"), u"");
    EXPECT_EQ(output.complete("\x80z\xC3"), u"\U0001F600z");
    EXPECT_EQ(output.rest(), (std::u16string{0xDCC3}));
}

TEST(ShellOutput, BytesThatAreNoTextPassAtOnce) {
    ShellOutput output;
    EXPECT_EQ(output.complete("\xFF"), runtime::text::fromBytes("\xFF"));
    EXPECT_EQ(output.complete("\x80\x80\x80\x80"), runtime::text::fromBytes("\x80\x80\x80\x80"));
}

}  // namespace
}  // namespace korvex::host
