// Scripts: how lines are cut into statements, and statements into tokens and words. What was read is written
// and read again.
#include <optional>
#include <variant>
#include <vector>

#include "fuzz/support/fuzz_input.h"
#include "host/kwsh/parser.h"
#include "host/kwsh/script_lines.h"
#include "host/kwsh/statement_reader.h"
#include "host/kwsh/values.h"

namespace korvex::fuzz {

using namespace korvex::host;

namespace {

bool isCommand(std::string_view name) { return name == "copyfile" || name == "dir"; }

/// The lines of a text, as they are.
class TextAsLines : public LineSource {
public:
    explicit TextAsLines(std::u16string_view text) : rest_(text) {}

    std::optional<std::u16string> nextLine(bool) override {
        if (isAtEnd_) return std::nullopt;
        const std::size_t end = rest_.find(u'\n');
        isAtEnd_ = end == std::u16string_view::npos;
        const std::u16string line(rest_.substr(0, end));
        rest_.remove_prefix(isAtEnd_ ? rest_.size() : end + 1);
        return line;
    }

private:
    std::u16string_view rest_;
    bool isAtEnd_ = false;
};

/// The one statement that a text is; nothing when it is another number of them.
std::optional<SourceStatement> onlyStatement(const std::u16string& text) {
    TextAsLines lines(text);
    StatementReader reader(lines, isCommand);
    std::optional<ScriptItem> item = reader.next();
    if (!item || !std::holds_alternative<SourceStatement>(*item) || reader.next()) return std::nullopt;
    return std::get<SourceStatement>(std::move(*item));
}

// ---------------------------------------------------------------------------------- comparing, writing

bool areSame(const Token& a, const Token& b) {
    const bool standSame = a.kind == TokenKind::end || a.isAfterBlank == b.isAfterBlank;
    return a.kind == b.kind && a.text == b.text && a.number == b.number && standSame;
}

/// The text of a statement has none, what it hands to the shell may.
std::u16string_view withoutBlanksAtEnd(std::u16string_view text) {
    return text.substr(0, text.find_last_not_of(u" \t") + 1);
}

/// Of blocks only that they are some: their text is compared apart from this.
bool areSame(const SourceStatement& a, const SourceStatement& b) {
    if (a.content.index() != b.content.index()) return false;
    if (const auto* tokens = std::get_if<std::vector<Token>>(&a.content)) {
        const auto& others = std::get<std::vector<Token>>(b.content);
        return std::equal(tokens->begin(), tokens->end(), others.begin(), others.end(),
                          [](const Token& left, const Token& right) { return areSame(left, right); });
    }
    if (const auto* words = std::get_if<CommandWords>(&a.content)) {
        const auto& others = std::get<CommandWords>(b.content);
        return words->name == others.name && words->words == others.words;
    }
    if (const auto* command = std::get_if<ShellCommand>(&a.content)) {
        const std::u16string& other = std::get<ShellCommand>(b.content).command;
        return withoutBlanksAtEnd(command->command) == withoutBlanksAtEnd(other);
    }
    return true;
}

std::u16string quoted(const std::u16string& text, char16_t quote) {
    std::u16string result(1, quote);
    for (const char16_t unit : text)
        result.append(unit == quote ? 2 : 1, unit);
    return result += quote;
}

std::u16string writtenToken(const Token& token) {
    switch (token.kind) {
        case TokenKind::number: return widen(numberText(token.number));
        case TokenKind::charText: return quoted(token.text, u'\'');
        case TokenKind::stringText: return quoted(token.text, u'"');
        case TokenKind::rowEnd: return u"\n";
        default: return token.text;
    }
}

/// Nothing where a number stands at a point or at another number: written in another form it might take the
/// neighbour along.
std::optional<std::u16string> written(const std::vector<Token>& tokens) {
    const auto isNumber = [](const Token& token) { return token.kind == TokenKind::number; };
    const auto mayMelt = [&](const Token& token) { return isNumber(token) || token.text == u"."; };
    std::u16string text;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (i > 0 && tokens[i].isAfterBlank) text += u' ';
        const bool isGlued = i > 0 && !tokens[i].isAfterBlank && mayMelt(tokens[i]) && mayMelt(tokens[i - 1]);
        if (isGlued && (isNumber(tokens[i]) || isNumber(tokens[i - 1]))) return std::nullopt;
        text += writtenToken(tokens[i]);
    }
    return text;
}

std::u16string written(const CommandWords& command) {
    std::u16string text = widen(command.name);
    for (const std::u16string& word : command.words)
        text += u' ' + quoted(word, u'\'');
    return text;
}

/// Of a command's name alone what is behind it decides, blanks too, whether words follow or an expression.
bool beginsWithCommand(const SourceStatement& statement) {
    const auto* tokens = std::get_if<std::vector<Token>>(&statement.content);
    return tokens != nullptr && tokens->front().kind == TokenKind::name &&
           isCommand(std::string(tokens->front().text.begin(), tokens->front().text.end()));
}

// -------------------------------------------------------------------------------------- requirements

void requireSyntaxError(const Failure& failure, const std::u16string& text) {
    require(failure.identifier == "KORVEX:host:syntax", "what cannot be read is a syntax error", text);
    require(!failure.text.empty(), "a syntax error says what is wrong", text);
}

void examineTokens(const SourceStatement& statement, const std::vector<Token>& tokens) {
    require(!tokens.empty() && tokens.back().kind == TokenKind::end, "tokens end with their end mark",
            statement.text);
    try {
        (void)parseStatement(tokens);
    } catch (const HostError& error) {
        requireSyntaxError(error.failure(), statement.text);
    }
    // What it is for is seen at its begin: behind a mark it may read as something else.
    const bool beginsWithMark = statement.text.starts_with(u"...");
    const std::optional<std::u16string> text = written(tokens);
    if (beginsWithMark || !text) return;
    const std::optional<SourceStatement> again = onlyStatement(*text);
    require(again && areSame(*again, statement), "tokens that are written are read as they were", *text);
}

void examineStatement(const SourceStatement& statement) {
    const std::u16string& text = statement.text;
    require(!text.empty(), "a statement has a text", statement.typedText);
    require(statement.typedText.starts_with(text), "what was typed begins with the statement", text);
    if (const auto* failure = std::get_if<Failure>(&statement.content)) {
        return requireSyntaxError(*failure, text);
    }
    // At its end three points are a mark or a word by what stands behind them.
    if (beginsWithCommand(statement) || text.ends_with(u"...")) return;
    const std::optional<SourceStatement> again = onlyStatement(text);
    require(again && areSame(*again, statement), "a statement by itself reads as it did", text);
    require(again->text == text, "and its text is all of it", text);

    if (const auto* tokens = std::get_if<std::vector<Token>>(&statement.content)) {
        examineTokens(statement, *tokens);
    } else if (const auto* words = std::get_if<CommandWords>(&statement.content)) {
        // Without words the name is a call.
        if (words->words.empty()) return;
        const std::optional<SourceStatement> rewritten = onlyStatement(written(*words));
        require(rewritten && areSame(*rewritten, statement), "words that are quoted are the same", text);
    }
}

}  // namespace

void examine(std::string_view input) {
    TextLines lines{std::string(input)};
    StatementReader reader(lines, isCommand);
    std::size_t line = 0;
    std::size_t items = 0;
    while (const std::optional<ScriptItem> item = reader.next()) {
        require(++items <= input.size() + 1, "every item takes at least a byte");
        const auto* statement = std::get_if<SourceStatement>(&*item);
        if (!statement) continue;
        require(statement->line >= line, "statements come in the order of their lines", statement->text);
        line = statement->line;
        examineStatement(*statement);
    }
}

}  // namespace korvex::fuzz
