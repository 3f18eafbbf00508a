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
    TypedLine read(const std::string& prompt) override {
        prompts.push_back(prompt);
        if (lines_.empty()) return {InputEnd::endOfInput, {}};
        TypedLine line = std::move(lines_.front());
        lines_.pop_front();
        return line;
    }
    void remember(const std::u16string& line) override { remembered.push_back(line); }

    std::vector<std::string> prompts;
    std::vector<std::u16string> remembered;

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

TEST(Prompt, EndsAtTheEndOfTheInputInsideOfAStatementToo) {
    ScriptedEditor editor({typed(u"x = {1")});
    EXPECT_THAT(talk(editor), ElementsAre("begin x = {1", "failed KORVEX:host:syntax", "end"));
}

}  // namespace
}  // namespace korvex::tests
