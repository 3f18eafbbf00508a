// docs/messages.md, and what makes it.
#include <gmock/gmock.h>

#include <algorithm>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "docs/generator/messages_document.h"
#include "runtime/messages/environment_messages.h"
#include "runtime/messages/host_messages.h"
#include "tests/packaging/text_files.h"

namespace korvex::tests {
namespace {

using testing::HasSubstr;

std::string generated() { return docs::messagesDocument(projectPath("runtime/messages/catalog")); }

/// How many lines begin with the row of an identifier.
std::ptrdiff_t rowsOf(const std::string& document, std::string_view identifier) {
    const std::string begin = "| `" + std::string(identifier) + "` ";
    return std::ranges::count_if(linesOf(document),
                                 [&begin](const std::string& line) { return line.starts_with(begin); });
}

template <class Vocabulary>
std::vector<std::string_view> identifiersOf() {
    return []<std::size_t... indices>(std::index_sequence<indices...>) {
        return std::vector{std::tuple_element_t<indices, Vocabulary>::fullIdentifier...};
    }
    (std::make_index_sequence<std::tuple_size_v<Vocabulary>>());
}

TEST(MessagesDocument, IsWhatTheCatalogSaysNow) {
    EXPECT_EQ(projectText("docs/messages.md"), generated())
        << "after a change of the catalog: cmake --build BUILD --target update_messages_doc";
}

TEST(MessagesDocument, HasARowForEveryMessage) {
    const std::string document = generated();
    for (const auto& identifiers :
         {identifiersOf<KORVEX::Vocabulary>(), identifiersOf<KORVEX::EnvironmentVocabulary>(),
          identifiersOf<KORVEX::HostVocabulary>()}) {
        EXPECT_FALSE(identifiers.empty());
        for (const std::string_view identifier : identifiers)
            EXPECT_EQ(rowsOf(document, identifier), 1) << identifier;
    }
}

TEST(MessagesDocument, ShowsTextsWithTheirPlaceholdersAndTheRemarkAboveThem) {
    const std::string document = generated();
    EXPECT_THAT(document,
                HasSubstr("\n## KORVEX:MKDIR\n\nPackage notices: {0} the folder that holds the new one"));
    EXPECT_THAT(document,
                HasSubstr("\n| `KORVEX:MKDIR:DirectoryExists` | 0 | The folder exists already. |\n"));
    EXPECT_THAT(document,
                HasSubstr("\n| `KORVEX:UndefinedFunction` (environment) | 1 | There is no function named "
                          "\"{0}\"."));
}

TEST(MessagesDocument, NeedsTheSourcesOfTheCatalog) {
    EXPECT_THROW(docs::messagesDocument(projectPath("runtime/messages")), std::runtime_error);
}

}  // namespace
}  // namespace korvex::tests
