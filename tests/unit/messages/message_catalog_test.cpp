// Texts from the catalog: which language is found, how arguments are put in, what a missing entry reads like.
#include "platform/message_catalog.h"

#include <gtest/gtest.h>
#include <unicode/uloc.h>

#include <string>
#include <thread>
#include <vector>

#include "platform/message_identifiers.h"
#include "runtime/messages/bundles.h"
#include "runtime/messages/locale.h"
#include "runtime/messages/process_locale.h"

namespace {

using fl::i18n::KwLocale;
using fl::i18n::MessageCatalog;
using korvex::runtime::messages::entryPattern;
using korvex::runtime::messages::setGlobalLocale;
using resource_core::BaseMsgID;
using resource_core::MessageArgument;

const std::u16string english = u"The folder exists already.";
const std::u16string german = u"Der Ordner ist schon vorhanden.";

std::u16string folderExists(const std::string& locale) {
    return MessageCatalog::get_message(KORVEX::MKDIR::DirectoryExists(), KwLocale(locale));
}

BaseMsgID record(const std::string& component, const std::string& key,
                 const std::vector<std::u16string>& arguments = {}) {
    BaseMsgID message{{}, component, key};
    for (const std::u16string& argument : arguments)
        message.args.emplace_back(argument);
    return message;
}

/// ICU's default locale, which stands for the machine's, for the length of a scope.
class MachineLocale {
public:
    explicit MachineLocale(const char* name) : earlier_(uloc_getDefault()) { set(name); }
    ~MachineLocale() { set(earlier_.c_str()); }
    MachineLocale(const MachineLocale&) = delete;
    MachineLocale& operator=(const MachineLocale&) = delete;

private:
    static void set(const char* name) {
        UErrorCode status = U_ZERO_ERROR;
        uloc_setDefault(name, &status);
    }
    std::string earlier_;
};

TEST(MessageCatalogTest, ALocaleIsServedByItsLanguageAndAnyOtherByEnglish) {
    EXPECT_EQ(folderExists("de"), german);
    EXPECT_EQ(folderExists("de_AT"), german);
    EXPECT_EQ(folderExists("de-CH"), german);
    EXPECT_EQ(folderExists("de_DE@collation=phonebook"), german);
    EXPECT_EQ(folderExists("en"), english);
    EXPECT_EQ(folderExists("en_GB"), english);
    EXPECT_EQ(folderExists("fr_FR"), english);
    EXPECT_EQ(folderExists("C"), english);
    EXPECT_EQ(folderExists(""), english);
    EXPECT_EQ(folderExists("no such locale / at all"), english);
    EXPECT_EQ(folderExists(std::string(1000, 'x')), english);
}

TEST(MessageCatalogTest, TheMachinesLocaleDoesNotStandInForTheOneThatWasAskedFor) {
    const MachineLocale machine("de_DE");
    EXPECT_EQ(folderExists("en"), english);
    EXPECT_EQ(folderExists("en_US"), english);
    EXPECT_EQ(folderExists("fr"), english);
}

TEST(MessageCatalogTest, APathStandsInQuotes) {
    const KORVEX::FILE::FileNotFound message(u"C:\\data\\a b.txt");
    EXPECT_NE(MessageCatalog::get_message(message, KwLocale("en")).find(u"\"C:\\data\\a b.txt\""),
              std::u16string::npos);
    EXPECT_NE(MessageCatalog::get_message(message, KwLocale("de")).find(u"\u201EC:\\data\\a b.txt\u201C"),
              std::u16string::npos);
}

TEST(MessageCatalogTest, ArgumentsAreTakenAsTheyAre) {
    const auto header = [](const std::u16string& label, const std::u16string& folder) {
        return MessageCatalog::get_message(KORVEX::what::NotcurrDir(label, folder), KwLocale("en"));
    };
    EXPECT_EQ(header(u"{1}", u"it's '{0}'"), u"{1} in folder it's '{0}'");
    EXPECT_EQ(header(u"", u""), u" in folder ");
    EXPECT_EQ(header(u"1234567.5", u"0"), u"1234567.5 in folder 0");
}

TEST(MessageCatalogTest, UnpairedSurrogatesInArgumentsSurvive) {
    const std::u16string name = u"undecodable \xDCFF and \xD800 here";
    EXPECT_EQ(MessageCatalog::get_message(KORVEX::dir::filesFoundIn(name), KwLocale("en")),
              u"Files found in " + name + u":");
}

TEST(MessageCatalogTest, NarrowArgumentsAreUtf8) {
    const KORVEX::io::common::validation::InternalError message("gr\xC3\xBCn");
    EXPECT_NE(MessageCatalog::get_message(message, KwLocale("en")).find(u": gr\u00FCn."),
              std::u16string::npos);
}

TEST(MessageCatalogTest, OptionLettersKeepTheirApostrophes) {
    const KORVEX::FILE::ReadOnly message(u"a");
    EXPECT_NE(MessageCatalog::get_message(message, KwLocale("en")).find(u"'f'"), std::u16string::npos);
    EXPECT_NE(MessageCatalog::get_message(message, KwLocale("de")).find(u"'f'"), std::u16string::npos);
}

TEST(MessageCatalogTest, AMissingEntryReadsAsItsIdentifierAndArguments) {
    const KwLocale locale("en");
    EXPECT_EQ(MessageCatalog::get_message(record("KORVEX:FILE", "Nope"), locale), u"KORVEX:FILE:Nope");
    EXPECT_EQ(MessageCatalog::get_message(record("KORVEX:FILE", "Nope", {u"a", u"b"}), locale),
              u"KORVEX:FILE:Nope (a, b)");
    EXPECT_EQ(MessageCatalog::get_message(record("Unknown:part", "Nope", {u"a"}), locale),
              u"Unknown:part:Nope (a)");
    EXPECT_EQ(MessageCatalog::get_message(record("", ""), locale), u":");
}

TEST(MessageCatalogTest, OnlyARealComponentLeadsToABundle) {
    EXPECT_TRUE(entryPattern("KORVEX:FILE", "PATHMAX", "en").has_value());
    EXPECT_FALSE(entryPattern("KORVEX_FILE", "PATHMAX", "en").has_value());
    EXPECT_FALSE(entryPattern("../KORVEX:FILE", "PATHMAX", "en").has_value());
    EXPECT_FALSE(entryPattern("KORVEX:FILE", "", "en").has_value());
}

TEST(MessageCatalogTest, AnEntryWithTooFewArgumentsStillReads) {
    EXPECT_EQ(MessageCatalog::get_message(record("KORVEX:dir", "filesFoundIn"), KwLocale("en")),
              u"Files found in {0}:");
}

TEST(MessageCatalogTest, TheGlobalLocaleIsTheOneThatWasSetOrThatOfTheProcess) {
    setGlobalLocale("de_AT");
    EXPECT_EQ(KwLocale::global().name(), "de_AT");
    setGlobalLocale("");
    EXPECT_EQ(KwLocale::global().name(), korvex::runtime::messages::processLocaleName());
}

TEST(MessageCatalogTest, TextsCanBeReadFromSeveralThreads) {
    std::vector<std::u16string> texts(8);
    std::vector<std::thread> readers;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        readers.emplace_back([&texts, i] { texts[i] = folderExists(i % 2 == 0 ? "de_LI" : "en_AU"); });
    }
    for (std::thread& reader : readers)
        reader.join();
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(texts[i], i % 2 == 0 ? german : english);
}

TEST(ToUstring, TakesUtf8) {
    EXPECT_EQ(fl::i18n::to_ustring("\xC3\xA4\xF0\x9F\x98\x80"), u"\u00E4\U0001F600");
}

}  // namespace
