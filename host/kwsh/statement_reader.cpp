// Finds the statements in the lines; the lexer (lexer.cpp) reads what is inside of one.
#include "host/kwsh/statement_reader.h"

namespace korvex::host {
namespace {

bool isSeparator(char16_t unit) noexcept { return unit == u';' || unit == u','; }

std::u16string_view withoutBlanksAtEnd(std::u16string_view text) {
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

}  // namespace

StatementReader::StatementReader(LineSource& lines, CommandTest isCommand)
    : source_(lines), isCommand_(std::move(isCommand)) {}

void StatementReader::dropLine() { source_.clear(); }

std::optional<ScriptItem> StatementReader::next() {
    for (;;) {
        const bool isLineBegin = source_.isAtEnd();
        if (isLineBegin && !source_.startLine()) return std::nullopt;
        source_.skipBlanks();
        if (isLineBegin && (source_.isAtEnd() || source_.unit() == u'%')) {
            source_.skipToEnd();
            return PlainLine{std::u16string(source_.textFrom(0, source_.offset()))};
        }
        while (isSeparator(source_.unit()) || isBlank(source_.unit()))
            source_.advance();
        if (source_.unit() == u'%') source_.skipToEnd();
        if (!source_.isAtEnd()) return readStatement();
    }
}

SourceStatement StatementReader::readStatement() {
    SourceStatement statement;
    statement.line = source_.position().line;
    const std::size_t begin = source_.offset();
    try {
        readContent(statement, begin);
    } catch (const HostError& error) {
        statement.content = error.failure();
        source_.skipToEnd();
    }
    finish(statement, begin, source_.offset());
    return statement;
}

void StatementReader::readContent(SourceStatement& statement, std::size_t begin) {
    if (source_.unit() == u'!') {
        source_.advance();
        const std::size_t commandBegin = source_.offset();
        source_.skipToEnd();
        statement.content = ShellCommand{std::u16string(source_.textFrom(commandBegin, source_.offset()))};
        return;
    }
    std::string name = source_.takeName();
    if (isCommandForm(name)) {
        std::vector<std::u16string> words = readWords(source_);
        statement.content = CommandWords{std::move(name), std::move(words)};
        return;
    }
    source_.goTo(begin);
    statement.content = readTokens(source_);
}

bool StatementReader::isCommandForm(std::string_view name) const {
    if (name.empty() || !isBlank(source_.unit()) || !isCommand_(name)) return false;
    std::size_t ahead = 0;
    while (isBlank(source_.unit(ahead)))
        ++ahead;
    // Nothing behind the name is a call without arguments.
    constexpr std::u16string_view endsOrOpens = u"\n%;,(=";
    return endsOrOpens.find(source_.unit(ahead)) == std::u16string_view::npos;
}

void StatementReader::finish(SourceStatement& statement, std::size_t begin, std::size_t end) {
    statement.text = withoutBlanksAtEnd(source_.textFrom(begin, end));
    std::size_t typedEnd = begin + statement.text.size();
    if (source_.unit() == u';') {
        statement.isDisplaySuppressed = true;
        source_.advance();
        typedEnd = source_.offset();
    } else if (source_.unit() == u',') {
        source_.advance();
    }
    source_.skipBlanks();
    if (source_.unit() == u'%') {
        source_.skipToEnd();
        typedEnd = source_.offset();
    }
    statement.typedText = source_.textFrom(begin, typedEnd);
}

}  // namespace korvex::host
