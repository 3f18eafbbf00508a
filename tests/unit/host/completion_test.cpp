// What Tab makes of a line. A bar stands for the cursor.
#include "host/kwsh/completion.h"

#include <gmock/gmock.h>

#include <map>

#include "host/kwsh/argument_offers.h"
#include "host/kwsh/completion_words.h"
#include "host/kwsh/host_commands.h"
#include "host/kwsh/script_lines.h"
#include "host/kwsh/session.h"
#include "host/kwsh/values.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class KnownNames : public CompletionNames {
public:
    std::vector<std::u16string> variables() const override { return {u"answers", u"table"}; }
    std::vector<std::u16string> packages() const override { return {u"solvers"}; }
    std::vector<FolderEntry> entries(const std::u16string& folder) const override {
        const auto found = folders.find(folder);
        return found == folders.end() ? std::vector<FolderEntry>() : found->second;
    }

    std::map<std::u16string, std::vector<FolderEntry>> folders;
};

class CompletionTest : public testing::Test {
protected:
    Completion completionOf(std::u16string line, const std::u16string& before = {}) {
        const std::size_t cursor = line.find(u'|');
        line.erase(cursor, 1);
        line_ = line;
        return complete(before, line, cursor, names);
    }

    /// The line behind Tab, with the cursor in it.
    std::u16string tab(const std::u16string& line, const std::u16string& before = {}) {
        const Completion completion = completionOf(line, before);
        return line_.substr(0, completion.begin) + completion.text + u"|" + line_.substr(completion.end);
    }

    std::vector<std::u16string> offered(const std::u16string& line) { return completionOf(line).candidates; }

    /// The names of the current folder.
    void hold(std::vector<FolderEntry> entries) { names.folders[u""] = std::move(entries); }

    KnownNames names;

private:
    std::u16string line_;
};

// ---------------------------------------------------------------------------------------------- names

TEST_F(CompletionTest, NamesOfCommandsFunctionsAndVariables) {
    EXPECT_EQ(tab(u"copyf|"), u"copyfile|");
    EXPECT_EQ(tab(u"x = isfo|"), u"x = isfolder|");
    EXPECT_EQ(tab(u"size(answ|)"), u"size(answers|)");
    EXPECT_EQ(tab(u"y = {1, resh|"), u"y = {1, reshape|");
    EXPECT_EQ(tab(u"a = 1; warn|"), u"a = 1; warning|");
    EXPECT_THAT(offered(u"isf|"), ElementsAre(u"isfile", u"isfolder"));
    EXPECT_EQ(tab(u"isf|"), u"isf|");
    EXPECT_EQ(tab(u"is|"), u"is|");
}

TEST_F(CompletionTest, WordsOfBlocksBeginStatementsOnly) {
    EXPECT_EQ(tab(u"elsei|"), u"elseif|");
    EXPECT_EQ(tab(u"x = elsei|"), u"x = elsei|");
    EXPECT_EQ(tab(u"if isfo|"), u"if isfolder|");
}

TEST_F(CompletionTest, NothingWhereNoNameCanBegin) {
    for (const char16_t* line : {u"x.na|", u"12|", u"12 |", u"x(1)|", u"% isf|", u"!ls isf|", u"x = 1 % isf|",
                                 u"x = 1 ... isf|", u"isfile('a')|", u"x |"}) {
        EXPECT_THAT(offered(line), IsEmpty()) << runtime::text::toDisplayBytes(line);
    }
}

TEST_F(CompletionTest, NothingIsAsGoodAsUnknown) {
    EXPECT_THAT(offered(u"nosuchname|"), IsEmpty());
    EXPECT_EQ(tab(u"nosuchname|"), u"nosuchname|");
}

TEST_F(CompletionTest, AnEmptyLineOffersEverythingThatCanBeCalled) {
    EXPECT_GT(offered(u"|").size(), moduleCommandNames().size() + hostCommands().size());
}

TEST_F(CompletionTest, AVariableHidesTheCommandFormOfItsName) {
    hold({{u"notes.txt", false}});
    class Hiding : public KnownNames {
    public:
        std::vector<std::u16string> variables() const override { return {u"isfile"}; }
    };
    Hiding hiding;
    hiding.folders = names.folders;
    EXPECT_EQ(complete(u"", u"isfile no", 9, names).text, u"notes.txt ");
    EXPECT_TRUE(complete(u"", u"isfile no", 9, hiding).isEmpty());
}

// ------------------------------------------------------------------------------------------- option words

TEST_F(CompletionTest, OptionWordsOfTheBracketForm) {
    EXPECT_EQ(tab(u"copyfile('a', 'b', 'cop|"), u"copyfile('a', 'b', 'copylinkbehavior'|");
    EXPECT_EQ(tab(u"copyfile('a', 'b', 'cop|')"), u"copyfile('a', 'b', 'copylinkbehavior'|)");
    EXPECT_THAT(offered(u"copyfile('a', 'b', '|"), ElementsAre(u"f", u"writable", u"copylinkbehavior"));
    EXPECT_EQ(tab(u"[s, m] = copyfile(x, 'b', 'f', 'CopyLinkBehavior', 'p|"),
              u"[s, m] = copyfile(x, 'b', 'f', 'CopyLinkBehavior', 'preserve'|");
    EXPECT_EQ(tab(u"movefile('a', 'b', 'movelinkbehavior', 'r|"),
              u"movefile('a', 'b', 'movelinkbehavior', 'resolve'|");
    EXPECT_EQ(tab(u"recycle(\"of|"), u"recycle(\"off\"|");
}

TEST_F(CompletionTest, OptionWordsOfTheCommandForm) {
    EXPECT_EQ(tab(u"copyfile a b wri|"), u"copyfile a b writable |");
    EXPECT_EQ(tab(u"copyfile a b copylinkbehavior o|"), u"copyfile a b copylinkbehavior osdefault |");
    EXPECT_EQ(tab(u"recycle o|"), u"recycle o|");
    EXPECT_THAT(offered(u"recycle |"), ElementsAre(u"on", u"off"));
    EXPECT_THAT(offered(u"package |"), ElementsAre(u"add", u"remove", u"list", u"on", u"off"));
    EXPECT_EQ(tab(u"package remove s|"), u"package remove solvers |");
    EXPECT_EQ(tab(u"warning of|"), u"warning off |");
    EXPECT_EQ(tab(u"help movef|"), u"help movefile |");
    EXPECT_EQ(tab(u"help movefile err|"), u"help movefile errors |");
    EXPECT_EQ(tab(u"help('copyfile', 'lin|"), u"help('copyfile', 'links'|");
    EXPECT_EQ(tab(u"clear tab|"), u"clear table |");
    EXPECT_EQ(tab(u"WARNING of|"), u"WARNING of|");
}

TEST_F(CompletionTest, TheCaseOfAnOptionWordDoesNotCount) {
    EXPECT_EQ(tab(u"copyfile('a', 'b', 'COPY|"), u"copyfile('a', 'b', 'copylinkbehavior'|");
    EXPECT_EQ(tab(u"what -CASES|"), u"what -casesensitive |");
}

TEST_F(CompletionTest, OptionsThatNeedATruthValueAreOfferedInBracketsOnly) {
    EXPECT_EQ(tab(u"rmdir('d', 'res|"), u"rmdir('d', 'resolvesymboliclinks'|");
    EXPECT_THAT(offered(u"rmdir('d', 'resolvesymboliclinks', |"), ElementsAre(u"true", u"false"));
    EXPECT_EQ(tab(u"rmdir('d', 'resolvesymboliclinks', t|)"), u"rmdir('d', 'resolvesymboliclinks', true|)");
    EXPECT_EQ(tab(u"delete('a', 'resolvesymboliclinks', f|"), u"delete('a', 'resolvesymboliclinks', false|");
    EXPECT_THAT(offered(u"rmdir d res|"), IsEmpty());
    EXPECT_THAT(offered(u"rmdir d |"), ElementsAre(u"s"));
}

TEST_F(CompletionTest, EachAttributeOfAModeIsCompletedByItself) {
    EXPECT_EQ(tab(u"fileattrib('a', '+|"), u"fileattrib('a', '+|");
    EXPECT_THAT(offered(u"fileattrib('a', '+w -|"), ElementsAre(u"-w", u"-a", u"-h", u"-s"));
    EXPECT_EQ(tab(u"fileattrib('a', '+w -h|"), u"fileattrib('a', '+w -h'|");
    EXPECT_EQ(tab(u"fileattrib a '+w -h|"), u"fileattrib a '+w -h' |");
}

TEST_F(CompletionTest, WordsThatStandBesideFilesNeedABeginning) {
    hold({{u"data", true}});
    EXPECT_THAT(offered(u"what |"), ElementsAre(u"data/"));
    EXPECT_THAT(offered(u"what -|"), ElementsAre(u"-casesensitive", u"-caseinsensitive"));
    EXPECT_EQ(tab(u"what -|"), u"what -case|");
}

// ---------------------------------------------------------------------------------------------- files

TEST_F(CompletionTest, FilesAndFoldersOfTheCurrentFolder) {
    hold({{u"data", true}, {u"notes.txt", false}});
    EXPECT_EQ(tab(u"copyfile no|"), u"copyfile notes.txt |");
    EXPECT_EQ(tab(u"copyfile no| b"), u"copyfile notes.txt| b");
    EXPECT_EQ(tab(u"copyfile da|"), u"copyfile data/|");
    EXPECT_EQ(tab(u"x = isfile('no|"), u"x = isfile('notes.txt'|");
    EXPECT_EQ(tab(u"isfile(\"no|\")"), u"isfile(\"notes.txt\"|)");
    EXPECT_EQ(tab(u"isfolder('da|')"), u"isfolder('data/|')");
    EXPECT_THAT(offered(u"dir |"), ElementsAre(u"data/", u"notes.txt"));
}

TEST_F(CompletionTest, QuotesArePutWhereATextIsNeeded) {
    hold({{u"notes.txt", false}});
    EXPECT_EQ(tab(u"isfile(no|"), u"isfile('notes.txt'|");
    EXPECT_EQ(tab(u"isfile(|"), u"isfile('notes.txt'|");
    EXPECT_EQ(tab(u"isfile(ta|"), u"isfile(table|");
}

TEST_F(CompletionTest, NamesThatNeedQuotesGetThem) {
    hold({{u"two words", false}, {u"my folder", true}, {u"it's", false}, {u"a;b", false}});
    EXPECT_EQ(tab(u"delete tw|"), u"delete 'two words' |");
    EXPECT_EQ(tab(u"delete 'tw|"), u"delete 'two words' |");
    EXPECT_EQ(tab(u"delete 'tw|'"), u"delete 'two words' |");
    EXPECT_EQ(tab(u"dir my|"), u"dir 'my folder/|");
    EXPECT_EQ(tab(u"delete it|"), u"delete 'it''s' |");
    EXPECT_EQ(tab(u"delete('it|"), u"delete('it''s'|");
    EXPECT_EQ(tab(u"delete(\"it|"), u"delete(\"it's\"|");
    EXPECT_EQ(tab(u"delete a|"), u"delete 'a;b' |");
}

TEST_F(CompletionTest, AWordThatBeginsLikeSomethingElseIsQuoted) {
    hold({{u"%note", false}, {u"...more", false}});
    EXPECT_EQ(tab(u"delete '%|"), u"delete '%note' |");
    EXPECT_EQ(tab(u"delete a '...|"), u"delete a '...more' |");
    EXPECT_TRUE(needsQuotes(u"=a", true));
    EXPECT_FALSE(needsQuotes(u"=a", false));
    EXPECT_FALSE(needsQuotes(u"a=b%c", true));
    EXPECT_TRUE(needsQuotes(u"f(1)", false));
}

TEST_F(CompletionTest, FoldersBelowOthers) {
    names.folders[u"my data/"] = {{u"one.txt", false}, {u"raw", true}};
    names.folders[u"../"] = {{u"beside", true}};
    names.folders[u"/"] = {{u"tmp", true}};
    EXPECT_EQ(tab(u"cd 'my data/ra|"), u"cd 'my data/raw/|");
    EXPECT_EQ(tab(u"isfile('my data/o|"), u"isfile('my data/one.txt'|");
    EXPECT_THAT(offered(u"isfile('my data/|"), ElementsAre(u"one.txt", u"raw/"));
    EXPECT_EQ(tab(u"cd ../be|"), u"cd ../beside/|");
    EXPECT_EQ(tab(u"cd ..|"), u"cd ../|");
    EXPECT_EQ(tab(u"cd /t|"), u"cd /tmp/|");
}

TEST_F(CompletionTest, FoldersOfALocation) {
    names.folders[u"memory://box/"] = {{u"two%20words", false}, {u"sub", true}};
    EXPECT_EQ(tab(u"copyfile memory://box/t|"), u"copyfile memory://box/two%20words |");
    EXPECT_EQ(tab(u"copyfile('memory://box/s|"), u"copyfile('memory://box/sub/|");
}

TEST_F(CompletionTest, WhatAllHaveInCommonIsInserted) {
    hold({{u"results 1.txt", false}, {u"results 2.txt", false}});
    EXPECT_EQ(tab(u"delete re|"), u"delete 'results |");
    EXPECT_EQ(tab(u"delete('re|"), u"delete('results |");
    EXPECT_EQ(tab(u"delete(resu|"), u"delete('results |");
    EXPECT_EQ(tab(u"delete('results |"), u"delete('results |");
    EXPECT_THAT(offered(u"delete 're|"), ElementsAre(u"results 1.txt", u"results 2.txt"));
}

TEST_F(CompletionTest, APairOfUnitsIsNotCut) {
    hold({{u"\U0001F600", false}, {u"\U0001F601", false}});
    EXPECT_EQ(tab(u"delete |"), u"delete |");
}

TEST_F(CompletionTest, NamesOfAnyBytesAreCompleted) {
    hold({{{u'a', 0xDCFF, u'b'}, false}});
    EXPECT_EQ(tab(u"delete a|"), std::u16string(u"delete a") + char16_t{0xDCFF} + u"b |");
}

TEST_F(CompletionTest, HiddenFilesAreOfferedBehindADot) {
    hold({{u".hidden", false}, {u"shown", false}});
    EXPECT_THAT(offered(u"delete |"), ElementsAre(u"shown"));
    EXPECT_THAT(offered(u"delete .|"), ElementsAre(u".hidden"));
}

TEST_F(CompletionTest, NamesThatNoLineCanHoldAreLeftOut) {
    hold({{u"a\nb", false}, {u"a\tb", false}});
    EXPECT_THAT(offered(u"delete a|"), IsEmpty());
}

TEST_F(CompletionTest, CommandsTakeWhatFitsThem) {
    hold({{u"data", true}, {u"solve.k", false}, {u"solve.txt", false}});
    EXPECT_THAT(offered(u"cd |"), ElementsAre(u"data/"));
    EXPECT_THAT(offered(u"load |"), ElementsAre(u"data/", u"solve.k"));
    EXPECT_THAT(offered(u"pwd |"), IsEmpty());
    EXPECT_THAT(offered(u"recycle('on', '|"), IsEmpty());
}

TEST_F(CompletionTest, AnyOtherTextIsTakenForAFile) {
    hold({{u"notes.txt", false}});
    EXPECT_EQ(tab(u"x = {'no|"), u"x = {'notes.txt'|");
    EXPECT_EQ(tab(u"isfile({'a', 'no|"), u"isfile({'a', 'notes.txt'|");
    EXPECT_EQ(tab(u"x = 'no|"), u"x = 'notes.txt'|");
}

// ------------------------------------------------------------------------------------------ statements

TEST_F(CompletionTest, TheLastStatementOfTheLineCounts) {
    hold({{u"notes.txt", false}});
    EXPECT_EQ(tab(u"delete f(1;2).txt no|"), u"delete f(1;2).txt notes.txt |");
    EXPECT_EQ(tab(u"cd data; delete no|"), u"cd data; delete notes.txt |");
    EXPECT_EQ(tab(u"x = 'a;b', recycle of|"), u"x = 'a;b', recycle off |");
    EXPECT_EQ(tab(u"delete 'a;b' no|"), u"delete 'a;b' notes.txt |");
}

TEST_F(CompletionTest, EarlierLinesOfTheStatementCount) {
    EXPECT_EQ(tab(u"'cop|", u"copyfile('a', 'b', ...\n"), u"'copylinkbehavior'|");
    EXPECT_EQ(tab(u"wri|", u"copyfile a b ... first\n"), u"writable |");
    EXPECT_EQ(tab(u"  recycle of|", u"for x = {'a', 'b'}\n"), u"  recycle off |");
    EXPECT_EQ(tab(u"isfo|", u"x = {1\n"), u"isfolder|");
}

TEST_F(CompletionTest, TheRestOfTheLineStays) {
    EXPECT_EQ(tab(u"copyf|('a', 'b')"), u"copyfile|('a', 'b')");
    EXPECT_EQ(tab(u"recycle('of|'); x = 1"), u"recycle('off'|); x = 1");
}

// ------------------------------------------------------------------------------ what the reader makes of it

/// Names that a line can hold and that mean something else when they are written carelessly.
const std::vector<std::u16string> difficultNames = {
    u"two words", u"it's",  u"'quoted'", u"a\"b", u"\"b\"",  u"a;b",        u"a,b",         u";",
    u"%note",     u"a%b",   u"a %b",     u"(a",   u"a)",     u"f(1;2)",     u"[x",          u"{y}",
    u"=",         u"=a",    u"==",       u"!x",   u"~",      u"-s",         u"...",         u"...a",
    u"a...",      u"a ...", u"+p",       u"@c",   u"\u00FC", u"\U0001F600", {u'a', 0xDCFF}, u" a",
    u"a ",        u"''",    u"a''b",     u"in",   u"if",
};

/// The arguments of the one statement of a line.
std::vector<std::u16string> argumentsIn(const std::u16string& line) {
    TextLines lines(runtime::text::toBytes(line).value());
    StatementReader reader(lines, isCommandName);
    const std::optional<ScriptItem> item = reader.next();
    EXPECT_FALSE(reader.next()) << runtime::text::toDisplayBytes(line);
    const SourceStatement& statement = std::get<SourceStatement>(*item);
    if (const auto* words = std::get_if<CommandWords>(&statement.content)) return words->words;
    std::vector<std::u16string> texts;
    for (const Token& token : std::get<std::vector<Token>>(statement.content)) {
        if (token.kind == TokenKind::charText) texts.push_back(token.text);
    }
    return texts;
}

TEST_F(CompletionTest, TheReaderFindsTheNameThatWasCompleted) {
    for (const std::u16string& name : difficultNames) {
        hold({{name, false}});
        const std::u16string begin = name.starts_with(u'.') ? u"'." : u"";
        const Completion word = completionOf(u"isfile " + begin + u"|");
        const std::u16string line = u"isfile " + word.text;
        EXPECT_THAT(argumentsIn(line), ElementsAre(name)) << runtime::text::toDisplayBytes(line);
        const Completion second = completionOf(u"copyfile a " + begin + u"|");
        EXPECT_THAT(argumentsIn(u"copyfile a " + second.text), ElementsAre(u"a", name));
        const Completion text =
            completionOf(u"isfile('" + name.substr(0, 1) + (name[0] == u'\'' ? u"'|" : u"|"));
        EXPECT_THAT(argumentsIn(u"isfile(" + text.text + u")"), ElementsAre(name));
    }
}

TEST_F(CompletionTest, WhereverTheCursorIsTheReplacementIsAroundIt) {
    hold({{u"notes.txt", false}, {u"my folder", true}});
    for (const std::u16string& line :
         {std::u16string(u"[s, ~] = copyfile('it''s', \"b\", 'f'); delete 'a b' c % end"),
          std::u16string(u"x = {1, 'a'; [2 3], struct().name(4){5}} ... more"), std::u16string(u"!ls 'a"),
          std::u16string(u"delete {a,b} (c ... d"), std::u16string(u"))]}'\"'")}) {
        for (std::size_t cursor = 0; cursor <= line.size(); ++cursor) {
            const Completion completion = complete(u"for k = [1 ...\n", line, cursor, names);
            EXPECT_LE(completion.begin, cursor);
            EXPECT_GE(completion.end, cursor);
            EXPECT_LE(completion.end, line.size());
        }
    }
}

// ---------------------------------------------------------------------------------------------- tables

TEST_F(CompletionTest, EveryCommandOfTheTableExists) {
    for (const std::u16string& name : calledNames()) {
        for (std::size_t at = 0; at < 5; ++at) {
            const std::vector<std::optional<std::u16string>> earlier(at);
            const std::string command = runtime::text::toDisplayBytes(name);
            const ArgumentOffer* const offer = offerFor(command, earlier);
            EXPECT_TRUE(offer == nullptr || isCommandName(offer->command)) << command;
        }
    }
    for (const std::string_view command : moduleCommandNames())
        EXPECT_NE(offerFor(command, {}), nullptr) << command;
}

TEST(CandidateList, StandsInColumnsAndStopsSomewhere) {
    EXPECT_EQ(candidateList({u"a", u"bb", u"c"}, 80), u"a   bb  c\n");
    EXPECT_EQ(candidateList({u"a", u"bb", u"c"}, 4), u"a\nbb\nc\n");
    const std::vector<std::u16string> many(1203, u"name");
    EXPECT_THAT(runtime::text::toDisplayBytes(candidateList(many, 80)),
                testing::EndsWith("... and 1003 more\n"));
}

}  // namespace
}  // namespace korvex::host
