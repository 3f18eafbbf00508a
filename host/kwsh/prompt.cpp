// Lines from the editor, and what Ctrl-C does between statements.
#include "host/kwsh/prompt.h"

#include "host/kwsh/line_buffer.h"

namespace korvex::host {
namespace {

constexpr const char* statementPrompt = ">> ";
constexpr const char* continuationPrompt = ".. ";

/// Ctrl-C was pressed while a line was being typed.
struct LineDropped {};

class EditorLines : public LineSource {
public:
    explicit EditorLines(LineEditor& editor) : editor_(editor) {}

    std::optional<std::u16string> nextLine(bool isContinuation) override {
        TypedLine line = editor_.read(isContinuation ? continuationPrompt : statementPrompt);
        if (line.end == InputEnd::interrupt) throw LineDropped();
        if (line.end == InputEnd::endOfInput) return std::nullopt;
        if (line.text.find_first_not_of(u" \t") != std::u16string::npos) editor_.remember(line.text);
        return std::move(line.text);
    }

private:
    LineEditor& editor_;
};

}  // namespace

void runPrompt(Session& session, LineEditor& editor, const std::function<void()>& beforeStatement) {
    EditorLines lines(editor);
    StatementReader reader(lines, isCommandName);
    while (!session.isExitRequested()) {
        try {
            const std::optional<ScriptItem> item = reader.next();
            if (!item) return;
            beforeStatement();
            const auto* statement = std::get_if<SourceStatement>(&*item);
            if (statement != nullptr && !session.run(*statement)) reader.dropLine();
        } catch (const LineDropped&) {
            reader.dropLine();
        }
    }
}

}  // namespace korvex::host
