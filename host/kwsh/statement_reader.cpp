// Finds the statements in the lines; the lexer (lexer.cpp) reads what is inside of one.
#include "host/kwsh/statement_reader.h"

#include <algorithm>

#include "host/kwsh/block_builder.h"
#include "host/kwsh/values.h"

namespace korvex::host {
namespace {

bool isSeparator(char16_t unit) noexcept { return unit == u';' || unit == u','; }

std::u16string_view withoutBlanksAtEnd(std::u16string_view text) {
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// What stands on the line behind these words belongs to them; behind the others begins a statement.
bool takesTokens(BlockWord word) { return word != BlockWord::elseWord && word != BlockWord::tryWord; }

}  // namespace

bool isBlockHead(const SourceStatement& statement) {
    return std::holds_alternative<BlockPart>(statement.content);
}

StatementReader::StatementReader(LineSource& lines, CommandTest isCommand)
    : source_(lines), isCommand_(std::move(isCommand)) {}

void StatementReader::dropLine() { source_.clear(); }

std::optional<ScriptItem> StatementReader::next() {
    std::optional<ScriptItem> item = nextItem(false);
    if (!item) return item;
    auto* statement = std::get_if<SourceStatement>(&*item);
    if (statement == nullptr || !isBlockHead(*statement)) return item;
    return readBlock(std::move(*statement));
}

std::optional<ScriptItem> StatementReader::nextItem(bool isInsideBlock) {
    for (;;) {
        const bool isLineBegin = source_.isAtEnd();
        // The text of a block stays together.
        if (isLineBegin && !(isInsideBlock ? source_.continueLine() : source_.startLine()))
            return std::nullopt;
        const std::size_t begin = source_.offset();
        source_.skipBlanks();
        if (isLineBegin && (source_.isAtEnd() || source_.unit() == u'%')) {
            source_.skipToEnd();
            return PlainLine{std::u16string(source_.textFrom(begin, source_.offset()))};
        }
        while (isSeparator(source_.unit()) || isBlank(source_.unit()))
            source_.advance();
        if (source_.unit() == u'%') source_.skipToEnd();
        if (!source_.isAtEnd()) return readStatement(isInsideBlock);
    }
}

SourceStatement StatementReader::readBlock(SourceStatement head) {
    SourceStatement block;
    block.line = head.line;
    Extent extent = extent_;
    BlockBuilder builder;
    builder.add(std::move(head));
    while (builder.isOpen()) {
        std::optional<ScriptItem> item = nextItem(true);
        if (!item) {
            extent.typedEnd = source_.offset();
            break;
        }
        if (auto* statement = std::get_if<SourceStatement>(&*item)) {
            builder.add(std::move(*statement));
            extent.end = extent_.end;
            extent.typedEnd = extent_.typedEnd;
        }
    }
    try {
        block.content = builder.take();
    } catch (const HostError& error) {
        block.content = error.failure();
    }
    setTexts(block, extent);
    return block;
}

SourceStatement StatementReader::readStatement(bool isInsideBlock) {
    SourceStatement statement;
    statement.line = source_.position().line;
    extent_.begin = source_.offset();
    try {
        readContent(statement);
    } catch (const HostError& error) {
        statement.content = error.failure();
        if (isInsideBlock) {
            skipBrokenStatement();
        } else {
            source_.skipToEnd();
        }
    }
    extent_.end = source_.offset();
    finish(statement);
    return statement;
}

void StatementReader::readContent(SourceStatement& statement) {
    // Behind a mark that it begins with shows what a statement is.
    while (source_.isAtContinuationMark()) {
        source_.followContinuationMark();
        source_.skipBlanks();
    }
    const Position position = source_.position();
    if (source_.unit() == u'!') {
        source_.advance();
        const std::size_t commandBegin = source_.offset();
        source_.skipToEnd();
        statement.content = ShellCommand{std::u16string(source_.textFrom(commandBegin, source_.offset()))};
        return;
    }
    std::string name = source_.takeName();
    if (const std::optional<BlockWord> word = blockWordOf(name)) {
        if (isAssigned()) throw syntaxError(messages::wordIsNoVariable(widen(name)), position);
        statement.content = readPart(*word, position);
        return;
    }
    if (isCommandForm(name)) {
        std::vector<std::u16string> words = readWords(source_);
        statement.content = CommandWords{std::move(name), std::move(words)};
        return;
    }
    source_.goTo(extent_.begin);
    statement.content = readTokens(source_);
}

BlockPart StatementReader::readPart(BlockWord word, const Position& position) {
    BlockPart part;
    part.word = word;
    part.position = position;
    if (!takesTokens(word)) return part;
    try {
        part.tokens = readTokens(source_);
    } catch (const HostError& error) {
        // It opens or closes its block all the same: what stands in there must not be run by itself.
        part.failure = error.failure();
        skipBrokenStatement();
    }
    return part;
}

void StatementReader::skipBrokenStatement() {
    // What is glued to a number is no word.
    while (isNameUnit(source_.unit()))
        source_.advance();
    while (!source_.isAtEnd() && !isSeparator(source_.unit())) {
        const std::size_t here = source_.offset();
        const char16_t unit = source_.unit();
        if (unit == u'%') return source_.skipToEnd();
        const std::string name = source_.takeName();
        if (blockWordOf(name) == BlockWord::endWord) return source_.goTo(here);
        if (!name.empty()) continue;
        source_.advance();
        if (unit != u'\'' && unit != u'"') continue;
        while (!source_.isAtEnd() && source_.unit() != unit)
            source_.advance();
    }
}

std::size_t StatementReader::blanksHere() const {
    std::size_t count = 0;
    while (isBlank(source_.unit(count)))
        ++count;
    return count;
}

bool StatementReader::isAssigned() const {
    const std::size_t ahead = blanksHere();
    return source_.unit(ahead) == u'=' && source_.unit(ahead + 1) != u'=';
}

bool StatementReader::isCommandForm(std::string_view name) const {
    if (name.empty() || !isBlank(source_.unit()) || !isCommand_(name)) return false;
    const std::size_t ahead = blanksHere();
    // Nothing behind the name is a call without arguments.
    constexpr std::u16string_view endsOrOpens = u"\n%;,(=";
    return endsOrOpens.find(source_.unit(ahead)) == std::u16string_view::npos && !isAtOperator(ahead);
}

bool StatementReader::isAtOperator(std::size_t ahead) const {
    return std::ranges::any_of(operators, [&](const SpelledOperator& candidate) {
        const std::u16string_view spelling = candidate.spelling;
        for (std::size_t at = 0; at < spelling.size(); ++at) {
            if (source_.unit(ahead + at) != spelling[at]) return false;
        }
        return isBlank(source_.unit(ahead + spelling.size()));
    });
}

void StatementReader::finish(SourceStatement& statement) {
    extent_.end = extent_.begin + withoutBlanksAtEnd(source_.textFrom(extent_.begin, extent_.end)).size();
    extent_.typedEnd = extent_.end;
    if (source_.unit() == u';') {
        statement.isDisplaySuppressed = true;
        source_.advance();
        extent_.typedEnd = source_.offset();
    } else if (source_.unit() == u',') {
        source_.advance();
    }
    source_.skipBlanks();
    if (source_.unit() == u'%') {
        source_.skipToEnd();
        extent_.typedEnd = source_.offset();
    }
    setTexts(statement, extent_);
}

void StatementReader::setTexts(SourceStatement& statement, const Extent& extent) const {
    statement.text = source_.textFrom(extent.begin, extent.end);
    statement.typedText = source_.textFrom(extent.begin, extent.typedEnd);
}

}  // namespace korvex::host
