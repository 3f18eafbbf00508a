// The conversation, with an editor that types for the test.
#include "host/kwsh/prompt.h"

#include <gmock/gmock.h>

#include <deque>

#include "tests/unit/host/host_fixture.h"

namespace korvex::tests {
namespace {

using host::InputEnd;
using host::TypedLine;
using testing::ElementsAre;

class ScriptedEditor : public host::LineEditor {
public:
    explicit ScriptedEditor(std::deque<TypedLine> lines) : lines_(std::move(lines)) {}
    TypedLine read(const std::string& prompt, const host::CompleteLine& complete) override {
        prompts.push_back(prompt);
        if (lines_.empty()) return {InputEnd::endOfInput, {}};
        TypedLine line = std::move(lines_.front());
        lines_.pop_front();
        completed.push_back(complete(line.text, line.text.size()).text);
        return line;
    }
    void remember(const std::u16string& line) override { remembered.push_back(line); }

    std::vector<std::string> prompts;
    std::vector<std::u16string> remembered;
    /// What Tab makes of the end of each line.
    std::vector<std::u16string> completed;

private:
    std::deque<TypedLine> lines_;
};

TypedLine typed(std::u16string text) { return {InputEnd::line, std::move(text)}; }
TypedLine interrupt() { return {InputEnd::interrupt, {}}; }

std::vector<std::string> talk(ScriptedEditor& editor) {
    HostSession host;
    host::runPrompt(host.session, editor, [] {});
    return host.presenter.events;
}

TEST(Prompt, AsksForTheRestOfAStatement) {
    ScriptedEditor editor({typed(u"x = [1"), typed(u"2]"), typed(u"exit"), typed(u"never")});
    EXPECT_THAT(talk(editor), ElementsAre("begin x = [1\n2]", "x shown", "end", "begin exit", "end"));
    EXPECT_THAT(editor.prompts, ElementsAre(">> ", ".. ", ">> "));
}

TEST(Prompt, AsksOnUntilABlockIsClosed) {
    ScriptedEditor editor(
        {typed(u"for k = [1 2]"), typed(u""), typed(u"  if k, end"), typed(u"end; x = 3;"), typed(u"x;")});
    EXPECT_THAT(talk(editor), testing::Contains("x set").Times(2));
    EXPECT_THAT(editor.prompts, ElementsAre(">> ", ".. ", ".. ", ".. ", ">> ", ">> "));
}

TEST(Prompt, InterruptDropsABlockThatIsBeingTyped) {
    ScriptedEditor editor(
        {typed(u"if true"), typed(u"x = 1;"), interrupt(), typed(u"end"), typed(u"y = 2;")});
    EXPECT_THAT(talk(editor),
                ElementsAre("begin end", "failed KORVEX:host:syntax", "end", "begin y = 2", "y set", "end"));
}

TEST(Prompt, InterruptDropsWhatIsBeingTyped) {
    ScriptedEditor editor({typed(u"x = {1"), interrupt(), interrupt(), typed(u"y = 2;")});
    EXPECT_THAT(talk(editor), ElementsAre("begin y = 2", "y set", "end"));
    EXPECT_THAT(editor.prompts, ElementsAre(">> ", ".. ", ">> ", ">> ", ">> "));
}

TEST(Prompt, GoesOnAfterAnErrorWithoutTheRestOfTheLine) {
    ScriptedEditor editor({typed(u"nothing; x = 1"), typed(u"y = 2;")});
    EXPECT_THAT(talk(editor), ElementsAre("begin nothing", "failed KORVEX:UndefinedFunction", "end",
                                          "begin y = 2", "y set", "end"));
}

TEST(Prompt, RemembersLinesThatAreNotEmpty) {
    ScriptedEditor editor({typed(u"x = 1;"), typed(u""), typed(u"   "), typed(u"% note")});
    talk(editor);
    EXPECT_THAT(editor.remembered, ElementsAre(u"x = 1;", u"% note"));
}

TEST(Prompt, CompletesWithTheVariablesAndTheLinesBefore) {
    ScriptedEditor editor({typed(u"answers = 1; answ"), typed(u"x = answ"), typed(u"recycle('on', ..."),
                           typed(u"'of"), typed(u"recycle(..."), typed(u"'of")});
    talk(editor);
    EXPECT_THAT(editor.completed, ElementsAre(u"answ", u"answers", u"", u"'of", u"", u"'off'"));
}

TEST(Prompt, EndsAtTheEndOfTheInputInsideOfAStatementToo) {
    ScriptedEditor editor({typed(u"x = {1")});
    EXPECT_THAT(talk(editor), ElementsAre("begin x = {1", "failed KORVEX:host:syntax", "end"));
}

}  // namespace
}  // namespace korvex::tests
