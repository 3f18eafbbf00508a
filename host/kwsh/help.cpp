// Overview, and what is shown of a page.
#include "host/kwsh/help.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "host/kwsh/failure.h"
#include "host/kwsh/help_pages.h"
#include "host/kwsh/host_functions.h"
#include "host/kwsh/session.h"
#include "host/kwsh/values.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

constexpr std::u16string_view examples = u"Examples";

std::u16string textOf(std::string_view name) { return runtime::text::fromBytes(name); }

bool isCommand(const std::u16string& name) { return isCommandName(runtime::text::toDisplayBytes(name)); }

MarkdownBlock paragraphOf(std::u16string text) {
    MarkdownBlock block;
    block.text = std::move(text);
    return block;
}

MarkdownBlock headingOf(std::u16string text) {
    MarkdownBlock block = paragraphOf(std::move(text));
    block.kind = BlockKind::heading;
    return block;
}

/// A table without titles.
MarkdownBlock listOf(std::vector<std::vector<std::u16string>> rows) {
    MarkdownBlock block;
    block.kind = BlockKind::table;
    block.rows.push_back({u"form", u""});
    std::ranges::move(rows, std::back_inserter(block.rows));
    return block;
}

// -------------------------------------------------------------------------------------------- overview

MarkdownBlock commandsOf(const std::vector<HelpPage>& pages) {
    std::vector<std::vector<std::u16string>> rows;
    for (const HelpPage& page : pages) {
        for (const std::u16string& name : page.names) {
            if (isCommand(name)) rows.push_back({name, summaryOf(page, name)});
        }
    }
    return listOf(std::move(rows));
}

MarkdownBlock functionList() {
    std::vector<std::vector<std::u16string>> rows;
    for (const HostFunction& function : hostFunctions())
        rows.push_back({widen(function.form), widen(function.meaning)});
    return listOf(std::move(rows));
}

/// The pages that are no command's.
MarkdownBlock topicList() {
    std::u16string topics;
    for (const HelpPage& page : hostPages()) {
        if (isCommand(page.names.front())) continue;
        if (!topics.empty()) topics += u", ";
        topics += page.title;
    }
    return paragraphOf(std::move(topics));
}

// ------------------------------------------------------------------------------------------------ pages

/// What can be asked for beside what is shown at once: "help copyfile details, links or all".
std::u16string furtherParts(const HelpPage& page, const std::u16string& name) {
    std::u16string text;
    for (const std::u16string& part : partsOf(page)) {
        if (isSameWord(part, examples)) continue;
        if (!text.empty()) text += part == wholePage ? u" or " : u", ";
        text += part;
    }
    return text.empty() ? text : u"help " + name + u' ' + text;
}

std::vector<MarkdownBlock> shownAtOnce(const HelpPage& page, const std::u16string& name) {
    std::vector<MarkdownBlock> blocks;
    for (const HelpSection& section : page.sections) {
        if (!section.title.empty() && section.title != examples) continue;
        std::ranges::copy(section.blocks, std::back_inserter(blocks));
    }
    const std::u16string parts = furtherParts(page, name);
    if (!parts.empty()) blocks.push_back(paragraphOf(u"More: " + parts));
    return blocks;
}

[[noreturn]] void raiseNoPart(const HelpPage& page, const std::u16string& name, std::string_view part) {
    const std::u16string parts = furtherParts(page, name);
    if (parts.empty()) throw HostError("noHelp", messages::noHelpParts(name));
    throw HostError("noHelp", messages::noHelpPart(name, textOf(part), parts));
}

std::vector<MarkdownBlock> blocksOf(const HelpPage& page, const std::u16string& name, std::string_view part) {
    if (part.empty()) return shownAtOnce(page, name);
    std::vector<MarkdownBlock> blocks;
    if (isSameWord(textOf(part), wholePage)) {
        for (const HelpSection& section : page.sections)
            std::ranges::copy(section.blocks, std::back_inserter(blocks));
        return blocks;
    }
    const HelpSection* section = findSection(page, textOf(part));
    if (section == nullptr) raiseNoPart(page, name, part);
    return section->blocks;
}

}  // namespace

std::u16string helpOverview(const PageLook& look) {
    const std::vector<MarkdownBlock> blocks = {
        headingOf(u"Files and folders (more with: help NAME)"),
        commandsOf(commandPages()),
        headingOf(u"The session"),
        commandsOf(hostPages()),
        headingOf(u"Functions"),
        functionList(),
        headingOf(u"Topics (help TOPIC)"),
        topicList(),
    };
    return layOut(blocks, look);
}

std::u16string helpOf(std::string_view name, std::string_view part, const PageLook& look) {
    const std::u16string text = textOf(name);
    if (const HostFunction* function = findHostFunction(name)) {
        if (!part.empty()) throw HostError("noHelp", messages::noHelpParts(text));
        return layOut(
            std::vector{paragraphOf(widen(function->form) + u": " + widen(function->meaning) + u".")}, look);
    }
    const HelpPage* page = findPage(text);
    if (page == nullptr) throw HostError("noHelp", messages::noHelp(text));
    return layOut(blocksOf(*page, text, part), look);
}

}  // namespace korvex::host
