// The vocabulary against the catalog: each message class has an entry with its arguments in every language,
// and no entry is without a class.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "platform/message_catalog.h"
#include "platform/message_identifiers.h"
#include "runtime/messages/bundles.h"
#include "runtime/messages/environment_messages.h"
#include "runtime/messages/host_messages.h"

namespace {

using fl::i18n::KwLocale;
using fl::i18n::MessageCatalog;
using korvex::runtime::messages::entryKeys;

using AllMessages =
    decltype(std::tuple_cat(std::declval<KORVEX::Vocabulary>(), std::declval<KORVEX::EnvironmentVocabulary>(),
                            std::declval<KORVEX::HostVocabulary>()));

// The catalog's name of a language, and the locale that asks for it.
struct Language {
    const char* bundle;
    const char* locale;
};
constexpr std::array<Language, 2> languages{{{"root", "en"}, {"de", "de"}}};

/// What an argument reads like in the samples. No catalog text holds a bracket of this kind.
std::string argumentMark(std::size_t index) { return "[argument " + std::to_string(index) + "]"; }

template <class Text>
Text argumentText(std::size_t index) {
    const std::string mark = argumentMark(index);
    return Text(mark.begin(), mark.end());
}

template <class Message, std::size_t... indices>
Message sampleWithArguments(std::index_sequence<indices...>) {
    return Message(argumentText<typename Message::Text>(indices)...);
}

template <class Message>
Message sample() {
    return sampleWithArguments<Message>(std::make_index_sequence<Message::argumentCount>());
}

/// Calls the visitor with a sample of every class in a tuple.
template <class Tuple, class Visitor>
void forEachMessage(const Visitor& visitor) {
    [&visitor]<std::size_t... indices>(std::index_sequence<indices...>) {
        (visitor(sample<std::tuple_element_t<indices, Tuple>>()), ...);
    }
    (std::make_index_sequence<std::tuple_size_v<Tuple>>());
}

std::set<std::string> identifiersOfAllClasses() {
    std::set<std::string> identifiers;
    forEachMessage<AllMessages>([&](const auto& message) { identifiers.insert(message.identifier()); });
    return identifiers;
}

std::u16string wide(const std::string& text) { return fl::i18n::to_ustring(text); }

std::size_t classesDeclaredIn(const char* header) {
    std::ifstream file(header);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const std::regex declaration(R"((struct\s+\w+\s*:|using\s+\w+\s*=)\s*resource_core::Message<)");
    return static_cast<std::size_t>(
        std::distance(std::sregex_iterator(text.begin(), text.end(), declaration), std::sregex_iterator()));
}

TEST(CatalogCompleteness, EveryClassHasAnEntryInEveryLanguage) {
    for (const Language& language : languages) {
        forEachMessage<AllMessages>([&](const auto& message) {
            const auto keys = entryKeys(message.component, language.bundle);
            EXPECT_TRUE(std::binary_search(keys.begin(), keys.end(), message.key))
                << message.identifier() << " in " << language.bundle;
        });
    }
}

TEST(CatalogCompleteness, EveryEntryShowsEachArgumentOfItsClassAndNoOther) {
    for (const Language& language : languages) {
        forEachMessage<AllMessages>([&](const auto& message) {
            const std::u16string text = MessageCatalog::get_message(message, KwLocale(language.locale));
            for (std::size_t i = 0; i < message.args.size(); ++i) {
                EXPECT_NE(text.find(wide(argumentMark(i))), std::u16string::npos)
                    << message.identifier() << " does not show argument " << i << " in " << language.locale;
            }
            EXPECT_EQ(text.find_first_of(u"{}"), std::u16string::npos)
                << message.identifier() << " has a placeholder too many in " << language.locale;
        });
    }
}

TEST(CatalogCompleteness, NoEntryIsEmptyOrReadsLikeAMissingOne) {
    for (const Language& language : languages) {
        forEachMessage<AllMessages>([&](const auto& message) {
            const std::u16string text = MessageCatalog::get_message(message, KwLocale(language.locale));
            EXPECT_FALSE(text.empty()) << message.identifier();
            EXPECT_EQ(text.find(wide(message.identifier())), std::u16string::npos) << message.identifier();
        });
    }
}

TEST(CatalogCompleteness, GermanReadsDifferentlyFromEnglish) {
    forEachMessage<AllMessages>([](const auto& message) {
        EXPECT_NE(MessageCatalog::get_message(message, KwLocale("de")),
                  MessageCatalog::get_message(message, KwLocale("en")))
            << message.identifier();
    });
}

TEST(CatalogCompleteness, EveryEntryOfEveryBundleBelongsToAClass) {
    const std::set<std::string> identifiers = identifiersOfAllClasses();
    for (const Language& language : languages) {
        std::set<std::string> entries;
        for (const auto& folder : std::filesystem::directory_iterator(KORVEX_CATALOG_FOLDER)) {
            std::string component = folder.path().filename().string();
            std::replace(component.begin(), component.end(), '_', ':');
            for (const std::string& key : entryKeys(component, language.bundle)) {
                entries.insert(component + ':' + key);
            }
        }
        EXPECT_THAT(entries, testing::ContainerEq(identifiers)) << language.bundle;
    }
}

TEST(CatalogCompleteness, TheVocabulariesListEveryClassOfTheirHeadersOnce) {
    EXPECT_EQ(std::tuple_size_v<KORVEX::Vocabulary>, classesDeclaredIn(KORVEX_VOCABULARY_HEADER));
    EXPECT_EQ(std::tuple_size_v<KORVEX::EnvironmentVocabulary>,
              classesDeclaredIn(KORVEX_ENVIRONMENT_VOCABULARY_HEADER));
    EXPECT_EQ(std::tuple_size_v<KORVEX::HostVocabulary>, classesDeclaredIn(KORVEX_HOST_VOCABULARY_HEADER));
    EXPECT_EQ(identifiersOfAllClasses().size(), std::tuple_size_v<AllMessages>);
}

}  // namespace
