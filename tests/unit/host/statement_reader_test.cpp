// Cutting lines into statements, and statements into tokens and words.
#include "host/kwsh/statement_reader.h"

#include <gmock/gmock.h>

#include "host/kwsh/script_lines.h"

namespace korvex::host {
namespace {

using testing::ElementsAre;

bool isCommand(std::string_view name) { return name == "copyfile" || name == "dir"; }

std::vector<ScriptItem> itemsOf(std::string text) {
    TextLines lines(std::move(text));
    StatementReader reader(lines, isCommand);
    std::vector<ScriptItem> items;
    while (std::optional<ScriptItem> item = reader.next())
        items.push_back(std::move(*item));
    return items;
}

std::vector<std::u16string> textsOf(std::string text) {
    std::vector<std::u16string> texts;
    for (const ScriptItem& item : itemsOf(std::move(text))) {
        if (const auto* statement = std::get_if<SourceStatement>(&item)) texts.push_back(statement->text);
    }
    return texts;
}

SourceStatement onlyStatement(std::string text) {
    std::vector<ScriptItem> items = itemsOf(std::move(text));
    EXPECT_EQ(items.size(), 1U);
    return std::get<SourceStatement>(items.at(0));
}

std::vector<std::u16string> wordsOf(std::string text) {
    return std::get<CommandWords>(onlyStatement(std::move(text)).content).words;
}

std::u16string syntaxErrorOf(std::string text) {
    const SourceStatement statement = onlyStatement(std::move(text));
    const Failure& failure = std::get<Failure>(statement.content);
    EXPECT_EQ(failure.identifier, "KORVEX:host:syntax");
    return failure.text;
}

TEST(StatementReader, LinesSemicolonsAndCommasSeparate) {
    EXPECT_THAT(textsOf("a = 1; b = 2, c\nd"), ElementsAre(u"a = 1", u"b = 2", u"c", u"d"));
}

TEST(StatementReader, SeparatorsInsideOfBracketsAndQuotesBelongToTheStatement) {
    EXPECT_THAT(textsOf("f(1, 'a;b', \"c,d\"); [1, 2; 3, 4]"),
                ElementsAre(u"f(1, 'a;b', \"c,d\")", u"[1, 2; 3, 4]"));
}

TEST(StatementReader, ASemicolonSuppressesTheDisplayOfItsStatementOnly) {
    const std::vector<ScriptItem> items = itemsOf("a = 1; b = 2\n");
    EXPECT_TRUE(std::get<SourceStatement>(items.at(0)).isDisplaySuppressed);
    EXPECT_FALSE(std::get<SourceStatement>(items.at(1)).isDisplaySuppressed);
}

TEST(StatementReader, TheTypedTextKeepsSemicolonAndComment) {
    const SourceStatement statement = onlyStatement("  x = 1 ;  % why");
    EXPECT_EQ(statement.text, u"x = 1");
    EXPECT_EQ(statement.typedText, u"x = 1 ;  % why");
}

TEST(StatementReader, EmptyLinesAndCommentsArePlainLines) {
    const std::vector<ScriptItem> items = itemsOf("% top\n\n  % in\n");
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(std::get<PlainLine>(items[0]).text, u"% top");
    EXPECT_EQ(std::get<PlainLine>(items[1]).text, u"");
}

TEST(StatementReader, LineNumbersAreThoseOfTheFirstLine) {
    const std::vector<ScriptItem> items = itemsOf("\nx = [1\n2]\ny\n");
    EXPECT_EQ(std::get<SourceStatement>(items.at(1)).line, 2U);
    EXPECT_EQ(std::get<SourceStatement>(items.at(2)).line, 4U);
}

TEST(StatementReader, DotsContinueALineAndBeginAComment) {
    EXPECT_THAT(textsOf("x = f(1, ... here it goes on\n 2)"),
                ElementsAre(u"x = f(1, ... here it goes on\n 2)"));
    EXPECT_THAT(textsOf("x = [1 ...'never closed\n 2]"), ElementsAre(u"x = [1 ...'never closed\n 2]"));
    EXPECT_THAT(textsOf("x = 1...\n"), ElementsAre(u"x = 1..."));
    EXPECT_THAT(textsOf("x = '...'\ny"), ElementsAre(u"x = '...'", u"y"));
}

TEST(StatementReader, ALineEndBehindACommaInsideOfParenthesesGoesOn) {
    const SourceStatement statement = onlyStatement("f(1, % first\n\n2)");
    const auto& tokens = std::get<std::vector<Token>>(statement.content);
    ASSERT_EQ(tokens.size(), 7U);
    EXPECT_EQ(tokens[4].kind, TokenKind::number);
    EXPECT_EQ(tokens[4].position.line, 3U);
    EXPECT_EQ(syntaxErrorOf("f(1,"), u"In line 1, column 2: this '(' is never closed.");
}

TEST(StatementReader, OperatorsOfTwoUnitsAreOneToken) {
    const SourceStatement statement = onlyStatement("x=~a==b~=c<=d>=e&&f||g<-1");
    std::u16string symbols;
    for (const Token& token : std::get<std::vector<Token>>(statement.content)) {
        if (token.kind == TokenKind::symbol) symbols += token.text + u' ';
    }
    EXPECT_EQ(symbols, u"= ~ == ~= <= >= && || < - ");
}

TEST(StatementReader, ALineEndBehindWhatConnectsConditionsGoesOnInsideOfParentheses) {
    EXPECT_EQ(itemsOf("x = (a && % first\n b ||\n c)\ny").size(), 2U);
    EXPECT_EQ(syntaxErrorOf("x = (a =="), u"In line 1, column 5: this '(' is never closed.");
}

TEST(StatementReader, ALineEndInsideOfSquareBracketsIsARowEnd) {
    const SourceStatement statement = onlyStatement("[1 % first\n2]");
    const auto& tokens = std::get<std::vector<Token>>(statement.content);
    ASSERT_EQ(tokens.size(), 6U);
    EXPECT_EQ(tokens[2].kind, TokenKind::rowEnd);
}

TEST(StatementReader, CarriageReturnsAndAByteOrderMarkDoNotShow) {
    EXPECT_THAT(textsOf("\xEF\xBB\xBFx = 1\r\ny\r\n"), ElementsAre(u"x = 1", u"y"));
}

TEST(StatementReader, AnExclamationMarkTakesTheRestOfTheLine) {
    const std::vector<ScriptItem> items = itemsOf("x = 1; !ls; rm % no comment\ny");
    const auto& statement = std::get<SourceStatement>(items.at(1));
    EXPECT_EQ(std::get<ShellCommand>(statement.content).command, u"ls; rm % no comment");
    EXPECT_FALSE(statement.isDisplaySuppressed);
    EXPECT_EQ(items.size(), 3U);
}

// ---------------------------------------------------------------------------------------- command form

TEST(CommandForm, WordsEndAtBlanks) {
    EXPECT_THAT(wordsOf("copyfile a.txt\t d  f"), ElementsAre(u"a.txt", u"d", u"f"));
}

TEST(CommandForm, QuotesKeepBlanksAndSeparators) {
    EXPECT_THAT(wordsOf("copyfile 'a b' \"c;d\" e','f 'it''s' ''"),
                ElementsAre(u"a b", u"c;d", u"e,f", u"it's", u""));
}

TEST(CommandForm, NeedsABlankAndNoBracketOrEqualsSignBehindIt) {
    for (const char* text : {"copyfile(a)", "copyfile (a)", "copyfile = 3", "copyfile", "copyfile ",
                             "copyfile % x", "copyfile.x", "other a b"}) {
        const std::vector<ScriptItem> items = itemsOf(text);
        const auto& statement = std::get<SourceStatement>(items.at(0));
        EXPECT_FALSE(std::holds_alternative<CommandWords>(statement.content)) << text;
    }
}

TEST(CommandForm, AnOperatorWithABlankBehindItMakesAnExpression) {
    for (const char* text :
         {"dir == 3", "dir ~= 3", "dir < x", "dir >= x", "dir && x", "dir  ||\tx", "dir ==3"}) {
        EXPECT_FALSE(std::holds_alternative<CommandWords>(onlyStatement(text).content)) << text;
    }
    EXPECT_THAT(wordsOf("dir <x"), ElementsAre(u"<x"));
    EXPECT_THAT(wordsOf("dir ~x ~ y"), ElementsAre(u"~x", u"~", u"y"));
    EXPECT_THAT(wordsOf("dir ~=x"), ElementsAre(u"~=x"));
}

TEST(CommandForm, SeparatorsEndItAndPercentSignsBeginACommentBehindABlank) {
    EXPECT_THAT(textsOf("copyfile a b; dir c, dir d"), ElementsAre(u"copyfile a b", u"dir c", u"dir d"));
    EXPECT_THAT(wordsOf("dir 100%.txt % all"), ElementsAre(u"100%.txt"));
}

TEST(CommandForm, GoesOnBehindDotsThatStandAlone) {
    EXPECT_THAT(wordsOf("copyfile a ...\n  b"), ElementsAre(u"a", u"b"));
    EXPECT_THAT(wordsOf("copyfile a ... and then; to, 'b\n  b"), ElementsAre(u"a", u"b"));
    EXPECT_THAT(wordsOf("copyfile .../a b..."), ElementsAre(u".../a", u"b..."));
    EXPECT_THAT(wordsOf("... behind a mark\n copyfile a b"), ElementsAre(u"a", u"b"));
    EXPECT_THAT(wordsOf("copyfile [a % ]"), ElementsAre(u"[a"));
}

TEST(CommandForm, BracketsThatCloseKeepSeparators) {
    EXPECT_THAT(wordsOf("dir {a,b}"), ElementsAre(u"{a,b}"));
    EXPECT_THAT(wordsOf("dir a[(1;2),3].txt x"), ElementsAre(u"a[(1;2),3].txt", u"x"));
    EXPECT_THAT(wordsOf("dir {'}',b}"), ElementsAre(u"{},b}"));
    EXPECT_THAT(wordsOf("dir {a, b}"), ElementsAre(u"{a,", u"b}"));
    EXPECT_THAT(textsOf("dir {a, b"), ElementsAre(u"dir {a", u"b"));
    EXPECT_THAT(textsOf("dir {a,b}, dir a}, c"), ElementsAre(u"dir {a,b}", u"dir a}", u"c"));
}

TEST(CommandForm, AQuoteWithoutEndIsASyntaxError) {
    EXPECT_EQ(syntaxErrorOf("dir 'a b"), u"In line 1, column 5: the text that begins here has no closing '.");
}

// ---------------------------------------------------------------------------------------- bad input

TEST(BadInput, ErrorsNameThePlace) {
    EXPECT_EQ(syntaxErrorOf("x = 'a"), u"In line 1, column 5: the text that begins here has no closing '.");
    EXPECT_EQ(syntaxErrorOf("x = f(1"), u"In line 1, column 6: this '(' is never closed.");
    EXPECT_EQ(syntaxErrorOf("x = [1\n 2"), u"In line 1, column 5: this '[' is never closed.");
    EXPECT_EQ(syntaxErrorOf("x = 1)"), u"In line 1, column 6: ')' closes nothing here.");
    EXPECT_EQ(syntaxErrorOf("x = {1]"), u"In line 1, column 7: ']' closes nothing here.");
    EXPECT_EQ(syntaxErrorOf("x = 3a"), u"In line 1, column 5: this is no number that can be read.");
    EXPECT_EQ(syntaxErrorOf("x = $"), u"In line 1, column 5: the character '$' has no meaning here.");
    EXPECT_EQ(syntaxErrorOf("\U0001F600"),
              u"In line 1, column 1: the character '\U0001F600' has no meaning here.");
    EXPECT_EQ(syntaxErrorOf("\x1B"), u"In line 1, column 1: the character '\u241B' has no meaning here.");
    EXPECT_EQ(syntaxErrorOf("x = 1 ..."),
              u"In line 1, column 7: no line follows the '...' that continues this one.");
}

TEST(BadInput, AStatementThatCannotBeReadTakesItsLineAndNoMore) {
    const std::vector<ScriptItem> items = itemsOf("x = 'a; y\nz");
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(std::get<SourceStatement>(items[0]).text, u"x = 'a; y");
    EXPECT_EQ(std::get<SourceStatement>(items[1]).text, u"z");
}

TEST(BadInput, BracketsNestedAHundredThousandTimesAreRefused) {
    EXPECT_EQ(syntaxErrorOf(std::string(100000, '[')),
              u"In line 1, column 101: brackets are nested too deeply.");
    EXPECT_EQ(syntaxErrorOf("x" + std::string(100000, '(')),
              u"In line 1, column 102: brackets are nested too deeply.");
}

TEST(BadInput, AnyBytesAreReadToTheEnd) {
    std::string bytes;
    for (int value = 0; value < 256; ++value)
        bytes += static_cast<char>(value);
    for (int value = 255; value >= 0; --value)
        bytes += static_cast<char>(value);
    EXPECT_FALSE(itemsOf(bytes).empty());
}

TEST(StatementReader, DroppingTheLineForgetsTheRestOfIt) {
    TextLines lines("x = 1; y = 2\nz");
    StatementReader reader(lines, isCommand);
    reader.next();
    reader.dropLine();
    EXPECT_EQ(std::get<SourceStatement>(*reader.next()).text, u"z");
}

}  // namespace
}  // namespace korvex::host
