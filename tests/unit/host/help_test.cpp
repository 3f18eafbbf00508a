// Manual pages: reading Markdown, laying it out, and finding what was asked for.
#include "host/kwsh/help.h"

#include <gmock/gmock.h>

#include "host/kwsh/command_module.h"
#include "host/kwsh/failure.h"
#include "host/kwsh/help_pages.h"
#include "host/kwsh/host_commands.h"
#include "host/kwsh/host_functions.h"
#include "host/kwsh/text_layout.h"
#include "host/kwsh/values.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr PageLook plain{80, false};

std::string bytesOf(const std::u16string& text) { return runtime::text::toDisplayBytes(text); }

std::string shown(std::u16string_view document, const PageLook& look = plain) {
    return bytesOf(layOut(readMarkdown(document), look));
}

std::string help(std::string_view name, std::string_view part = {}) {
    return bytesOf(helpOf(name, part, plain));
}

// ------------------------------------------------------------------------------------------ Markdown

TEST(Markdown, MarksInsideOfLinesGo) {
    EXPECT_EQ(plainText(u"`a*b` and **bold** [text](address) `[s] = f(x)`"), u"a*b and bold text [s] = f(x)");
    EXPECT_EQ(plainText(u"[s, m] and a ]( b"), u"[s, m] and a ]( b");
    EXPECT_EQ(plainText(u"`.` and `..`. `''` `a` `&`"), u"'.' and '..'. '' a '&'");
    EXPECT_EQ(plainText(u"`[]`, `{}` and `( )`"), u"[], {} and ( )");
}

TEST(Markdown, ParagraphsAndItemsAreWrapped) {
    EXPECT_EQ(shown(u"one two\nthree\n\nfour\n", {10, false}), "one two\nthree\n\nfour\n");
    EXPECT_EQ(shown(u"- one two\n  three\n- four\n\n1. five six\n", {8, false}),
              "- one\n  two\n  three\n- four\n1. five\n   six\n");
}

TEST(Markdown, CodeStaysAsItIs) {
    EXPECT_EQ(shown(u"```\n>> x = `1`\n\n  | y\n```\n"), "    >> x = `1`\n\n      | y\n");
}

TEST(Markdown, CommentsAreNotShown) { EXPECT_EQ(shown(u"<!-- session -->\na\n"), "a\n"); }

constexpr std::u16string_view table =
    u"| form | does |\n|---|---|\n| `f(x)` | this and that |\n| `g` | a\\|b |\n";

TEST(Markdown, ATableStandsInColumns) {
    EXPECT_EQ(shown(table), "  f(x)  this and that\n  g     a|b\n");
    EXPECT_EQ(shown(u"| letter | field |\n|---|---|\n| `w` | `UserWrite` |\n"),
              "  letter  field\n  w       UserWrite\n");
}

TEST(Markdown, CodeAloneInTheFirstColumnHasNoQuotes) {
    EXPECT_EQ(shown(u"|option|does|\n|---|---|\n|`-`|reads `-`|\n|`~`, `-`|both|\n"),
              "  option    does\n  -         reads '-'\n  '~', '-'  both\n");
}

TEST(Markdown, ALongCellGetsALineOfItsOwn) {
    EXPECT_EQ(shown(u"|form|does|\n|---|---|\n|f|one|\n|g|two|\n|a long form that is|three|\n", {36, false}),
              "  f  one\n  g  two\n  a long form that is\n     three\n");
}

TEST(Markdown, AWideTableIsAList) {
    EXPECT_EQ(shown(u"|identifier|when|what to do|\n|---|---|---|\n|KORVEX:A:b|it fails|wait and see||\n",
                    {30, false}),
              "  KORVEX:A:b\n      when: it fails\n      what to do: wait and see\n");
}

TEST(Markdown, HeadingsAndTitlesAreColouredWhenWanted) {
    EXPECT_EQ(shown(u"## Title\ntext\n", {80, true}), "\x1B[1mTitle\x1B[0m\ntext\n");
    EXPECT_EQ(shown(u"|a|b|\n|---|---|\n|c|d|\n", {80, true}),
              "  \x1B[1ma\x1B[0m  \x1B[1mb\x1B[0m\n  c  d\n");
}

// --------------------------------------------------------------------------------------------- pages

constexpr std::u16string_view document =
    u"# Title\nin front\n\n## one, two\n`one` does this. `two` does `that`\nand more. Rest.\n\n"
    u"### Details\n- more\n\n### Examples\n```\n>> one\n```\n## Long topic\ntext\n";

TEST(HelpPages, AreTheSectionsOfTheSecondLevel) {
    const std::vector<HelpPage> pages = readPages(document);
    ASSERT_EQ(pages.size(), 2U);
    EXPECT_THAT(pages[0].names, ElementsAre(u"one", u"two"));
    EXPECT_THAT(pages[1].names, ElementsAre(u"Long topic"));
    ASSERT_EQ(pages[0].sections.size(), 3U);
    EXPECT_EQ(pages[0].sections[1].title, u"Details");
}

TEST(HelpPages, ASummaryIsTheSentenceOfTheName) {
    const HelpPage page = readPages(document)[0];
    EXPECT_EQ(summaryOf(page, u"one"), u"does this");
    EXPECT_EQ(summaryOf(page, u"two"), u"does that and more");
    EXPECT_EQ(summaryOf(page, u"three"), u"");
}

TEST(HelpPages, ASectionIsFoundByTheBeginOfAWord) {
    const HelpPage page = readPages(document)[0];
    EXPECT_EQ(findSection(page, u"det"), &page.sections[1]);
    EXPECT_EQ(findSection(page, u"EXAMPLES"), &page.sections[2]);
    EXPECT_EQ(findSection(page, u"errors"), nullptr);
}

// ---------------------------------------------------------------------------------------------- help

std::vector<std::string> commandNames() {
    std::vector<std::string> names;
    for (const std::string_view name : moduleCommandNames())
        names.emplace_back(name);
    for (const HostCommand& command : hostCommands())
        names.emplace_back(command.name);
    return names;
}

TEST(Help, EveryCommandHasAPageThatBeginsWithWhatItDoes) {
    for (const std::string& name : commandNames()) {
        const HelpPage* const page = findPage(widen(name));
        ASSERT_NE(page, nullptr) << name;
        EXPECT_NE(summaryOf(*page, widen(name)), u"") << name;
        EXPECT_THAT(help(name), HasSubstr(name + " ")) << name;
    }
}

TEST(Help, EveryCommandOfTheModuleHasFormsAndErrors) {
    for (const std::string_view name : moduleCommandNames()) {
        EXPECT_THAT(help(name), HasSubstr(std::string(name) + "(")) << name;
        EXPECT_THAT(help(name, "errors"), HasSubstr("KORVEX:")) << name;
        EXPECT_THAT(help(name), Not(HasSubstr("KORVEX:string"))) << name;
    }
}

TEST(Help, TheOverviewNamesEverything) {
    const std::string overview = bytesOf(helpOverview(plain));
    for (const std::string& name : commandNames())
        EXPECT_THAT(overview, HasSubstr("\n  " + name + " "));
    for (const HostFunction& function : hostFunctions())
        EXPECT_THAT(overview, HasSubstr("\n  " + std::string(function.form)));
    EXPECT_THAT(overview, HasSubstr("Completion"));
}

TEST(Help, NoPageOfCommandsNamesOneThatDoesNotExist) {
    for (const HelpPage& page : commandPages()) {
        for (const std::u16string& name : page.names)
            EXPECT_TRUE(isModuleCommand(bytesOf(name))) << bytesOf(name);
    }
}

TEST(Help, LinesFitIntoTheWindow) {
    for (const std::size_t columns : {60U, 80U, 100U}) {
        for (const std::string_view name : moduleCommandNames()) {
            const std::u16string text = helpOf(name, "", {columns, false});
            for (std::size_t begin = 0; begin < text.size();) {
                const std::size_t end = text.find(u'\n', begin);
                const std::u16string line = text.substr(begin, end - begin);
                const bool isCode = line.starts_with(u"    >>");
                const bool isOneWord = line.find(u' ', line.find_first_not_of(u' ')) == std::u16string::npos;
                EXPECT_TRUE(isCode || isOneWord || widthOf(line) <= columns) << bytesOf(line);
                begin = end + 1;
            }
        }
    }
}

TEST(Help, PartsAreTold) {
    EXPECT_THAT(help("copyfile"), HasSubstr("help copyfile details, links, locations, errors or all"));
    EXPECT_THAT(help("copyfile", "links"), HasSubstr("preserve"));
    EXPECT_THAT(help("copyfile", "all"), HasSubstr("KORVEX:COPYFILE:FileNotFound"));
    EXPECT_THAT(help("copyfile", "warn"), HasSubstr("CopiedFileIntoPackage"));
}

TEST(Help, FunctionsAndTopicsHaveHelp) {
    EXPECT_EQ(help("numel"), "numel(x): the number of elements.\n");
    EXPECT_THAT(help("completion"), HasSubstr("Tab"));
    EXPECT_THAT(help("ctrl-c"), HasSubstr("interrupted"));
    EXPECT_EQ(help("ctrl-c"), help("Ctrl-C"));
}

TEST(Help, WhatIsNotThereIsAnError) {
    EXPECT_THROW(help("nothing"), HostError);
    EXPECT_THROW(help("copyfile", "nothing"), HostError);
    EXPECT_THROW(help("copyfile", "x"), HostError);
}

}  // namespace
}  // namespace korvex::host
