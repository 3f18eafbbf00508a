// Lines from the editor, and what Ctrl-C does between statements.
#include "host/kwsh/prompt.h"

#include "host/kwsh/environment_names.h"
#include "host/kwsh/line_buffer.h"

namespace korvex::host {
namespace {

constexpr const char* statementPrompt = ">> ";
constexpr const char* continuationPrompt = ".. ";

/// Ctrl-C was pressed while a line was being typed.
struct LineDropped {};

class EditorLines : public LineSource {
public:
    EditorLines(LineEditor& editor, const CompletionNames& names) : editor_(editor), names_(names) {}

    std::optional<std::u16string> nextLine(bool isContinuation) override {
        if (!isContinuation) begun_.clear();
        const auto completeHere = [this](std::u16string_view line, std::size_t cursor) {
            return complete(begun_, line, cursor, names_);
        };
        TypedLine line = editor_.read(isContinuation ? continuationPrompt : statementPrompt, completeHere);
        if (line.end == InputEnd::interrupt) throw LineDropped();
        if (line.end == InputEnd::endOfInput) return std::nullopt;
        if (line.text.find_first_not_of(u" \t") != std::u16string::npos) editor_.remember(line.text);
        begun_ += line.text + u'\n';
        return std::move(line.text);
    }

private:
    LineEditor& editor_;
    const CompletionNames& names_;
    /// The lines of the statement that was begun, each with its end.
    std::u16string begun_;
};

}  // namespace

void runPrompt(Session& session, LineEditor& editor, const std::function<void()>& beforeStatement) {
    const EnvironmentNames names(session.workspace());
    EditorLines lines(editor, names);
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
