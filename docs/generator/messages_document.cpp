// From the message classes to a table for each component. The texts are asked of the catalog itself, with
// placeholders for arguments, so they read as a user sees them.
#include "docs/generator/messages_document.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/message_catalog.h"
#include "runtime/messages/environment_messages.h"
#include "runtime/messages/host_messages.h"
#include "runtime/text/encoding.h"

namespace korvex::docs {
namespace {

constexpr std::string_view introduction =
    R"(# Messages

Every text that the commands and their environment show, by identifier. Scripts test identifiers; texts are for people
and come in English and German (`LC_ALL`, `LC_MESSAGES`, `LANG`). `{0}` and `{1}` stand for the arguments of a message,
and what they are is said above each table. [commands.md](commands.md) tells when a command raises which.

A message class is named as its identifier, `KORVEX::MKDIR::DirectoryExists` for `KORVEX:MKDIR:DirectoryExists`, and its
constructor takes the arguments. The classes of the commands stand in `platform/message_identifiers.h`. Those marked
"environment" are the interpreter's and the runtime's (`runtime/messages/environment_messages.h`). Those marked "kwsh"
(`runtime/messages/host_messages.h`) are texts, and parts of texts, of statements that `kwsh` cannot make sense of; their
errors come under fewer identifiers, such as `KORVEX:host:syntax`.

An error may have another identifier than the message that its text is from: `copyfile('')` raises
`KORVEX:COPYFILE:IllegalName` with the text of `KORVEX:FileManip:IllegalName`.

This file is made from the catalog: `cmake --build BUILD --target update_messages_doc`.
)";

enum class Declared { byPlatform, byEnvironment, byHost };

/// What a row says about who declares the class.
constexpr std::string_view markOf(Declared declared) {
    switch (declared) {
        case Declared::byEnvironment: return " (environment)";
        case Declared::byHost: return " (kwsh)";
        case Declared::byPlatform: break;
    }
    return "";
}

struct Row {
    std::string key;
    Declared declared;
    std::size_t argumentCount;
    std::u16string text;
};

using RowsOfComponents = std::map<std::string, std::vector<Row>>;

template <class Text>
Text placeholder(std::size_t index) {
    const std::string text = '{' + std::to_string(index) + '}';
    return Text(text.begin(), text.end());
}

template <class Message, std::size_t... indices>
Message withPlaceholders(std::index_sequence<indices...>) {
    return Message(placeholder<typename Message::Text>(indices)...);
}

template <class Message>
void addRow(RowsOfComponents& rows, Declared declared) {
    const Message message = withPlaceholders<Message>(std::make_index_sequence<Message::argumentCount>());
    rows[message.component].push_back(
        {message.key, declared, Message::argumentCount,
         fl::i18n::MessageCatalog::get_message(message, fl::i18n::KwLocale("en"))});
}

template <class Vocabulary>
void addRows(RowsOfComponents& rows, Declared declared) {
    [&]<std::size_t... indices>(std::index_sequence<indices...>) {
        (addRow<std::tuple_element_t<indices, Vocabulary>>(rows, declared), ...);
    }
    (std::make_index_sequence<std::tuple_size_v<Vocabulary>>());
}

/// The comment that the component's file begins with, as one paragraph, without the component's name in
/// front.
std::string remarkOf(const std::string& component, const std::filesystem::path& catalogFolder) {
    std::string folder = component;
    std::replace(folder.begin(), folder.end(), ':', '_');
    std::ifstream file(catalogFolder / folder / "root.txt");
    if (!file) throw std::runtime_error("the catalog has no file for " + component);

    constexpr std::string_view commentSign = "// ";
    std::string remark;
    for (std::string line; std::getline(file, line) && line.starts_with(commentSign);) {
        remark += (remark.empty() ? "" : " ") + line.substr(commentSign.size());
    }
    const std::string name = component + ". ";
    return remark.starts_with(name) ? remark.substr(name.size()) : remark;
}

/// What would end a cell, or be read as markup, is written so that it is shown.
std::string cellText(const std::u16string& text) {
    constexpr std::array<std::pair<char, std::string_view>, 6> written{
        {{'|', "\\|"}, {'\n', "<br>"}, {'<', "&lt;"}, {'*', "\\*"}, {'_', "\\_"}, {'`', "\\`"}}};
    std::string cell;
    for (const char letter : runtime::text::toDisplayBytes(text)) {
        const auto found = std::ranges::find(written, letter, &std::pair<char, std::string_view>::first);
        if (found != written.end()) {
            cell += found->second;
        } else {
            cell += letter;
        }
    }
    return cell;
}

std::string tableOf(const std::string& component, std::vector<Row> rows) {
    std::ranges::sort(rows, {}, &Row::key);
    std::string table = "| identifier | arguments | text |\n|---|---|---|\n";
    for (const Row& row : rows) {
        table += "| `" + component + ':' + row.key + '`' + std::string(markOf(row.declared)) + " | " +
                 std::to_string(row.argumentCount) + " | " + cellText(row.text) + " |\n";
    }
    return table;
}

}  // namespace

std::string messagesDocument(const std::filesystem::path& catalogFolder) {
    RowsOfComponents components;
    addRows<KORVEX::Vocabulary>(components, Declared::byPlatform);
    addRows<KORVEX::EnvironmentVocabulary>(components, Declared::byEnvironment);
    addRows<KORVEX::HostVocabulary>(components, Declared::byHost);

    std::string document(introduction);
    for (const auto& [component, rows] : components) {
        document += "\n## " + component + "\n\n" + remarkOf(component, catalogFolder) + "\n\n" +
                    tableOf(component, rows);
    }
    return document;
}

}  // namespace korvex::docs
