// Stored documents on disk: what is written when, damaged files, and noticing what others wrote.
#include <gmock/gmock.h>

#include <chrono>

#include "runtime/text/encoding.h"
#include "tests/unit/configuration/configuration_folder.h"

namespace korvex::runtime::configuration {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

class StoredDocumentTest : public ConfigurationTest {
protected:
    void write(const std::string& content) { scratch_.writeFile("config/" + name_, content); }
};

TEST_F(StoredDocumentTest, ReadsAsAnEmptyObjectWhereNothingIsAndMakesNothing) {
    EXPECT_EQ(document().read(), json::object());
    EXPECT_FALSE(std::filesystem::exists(folder()));
}

TEST_F(StoredDocumentTest, TheFolderIsMadeWithThoseAboveItWhenSomethingIsWritten) {
    setConfigurationFolder((folder() / "inner/most").u16string());
    document().update(setting("a", 1));
    EXPECT_EQ(document().read(), json({{"a", 1}}));
    EXPECT_TRUE(std::filesystem::exists(folder() / "inner/most" / name_));
}

TEST_F(StoredDocumentTest, ChangesAddUpAndNothingButTheLockStaysBeside) {
    document().update(setting("a", 1));
    EXPECT_EQ(document().update(setting("b", "x")), json({{"a", 1}, {"b", "x"}}));
    EXPECT_EQ(json::parse(contentOf(file())), json({{"a", 1}, {"b", "x"}}));
    EXPECT_THAT(entries(), ElementsAre("path.json", "path.json.lock"));
    EXPECT_EQ(document().path(), file().u16string());
}

TEST_F(StoredDocumentTest, AChangeThatLeavesTheDocumentAsItWasWritesNothing) {
    write("{\"a\":1}");
    EXPECT_EQ(document().update(setting("a", 1)), json({{"a", 1}}));
    EXPECT_EQ(contentOf(file()), "{\"a\":1}");
}

TEST_F(StoredDocumentTest, AnExceptionOfTheChangeIsPassedOnAndWritesNothing) {
    write("{}");
    const auto change = [](json& changed) {
        changed["a"] = 1;
        throw std::out_of_range("changed my mind");
    };
    EXPECT_THROW(document().update(change), std::out_of_range);
    EXPECT_EQ(contentOf(file()), "{}");
    EXPECT_EQ(document().update(setting("b", 2)), json({{"b", 2}})) << "the lock is free again";
}

TEST_F(StoredDocumentTest, AChangeThatMakesTheDocumentInvalidIsRefused) {
    write("{\"a\":1}");
    EXPECT_THROW(document().update(setting("shape", "wrong")), std::logic_error);
    EXPECT_THROW(document().update([](json& changed) { changed = 3; }), std::logic_error);
    EXPECT_THROW(document().update(setting("a", "\xFF")), json::exception);
    EXPECT_EQ(contentOf(file()), "{\"a\":1}");
    EXPECT_THAT(entries(), ElementsAre("path.json", "path.json.lock"));
}

// What stands in the file, and why it is damaged.
class DamagedDocumentTest : public StoredDocumentTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Contents, DamagedDocumentTest,
                         testing::Values("", "{\"a\": 1", "[1]", "null", "{\"shape\": \"wrong\"}",
                                         "{\"shape\": 3}", "{\"a\": \"\xFF\"}", "{} {}"));

TEST_P(DamagedDocumentTest, IsSetAsideReadAsEmptyAndWarnedAbout) {
    write(GetParam());
    EXPECT_EQ(document().read(), json::object());
    EXPECT_THAT(entries(), ElementsAre("path.json.damaged-1", "path.json.lock"));
    EXPECT_EQ(contentOf(folder() / "path.json.damaged-1"), GetParam());

    ASSERT_EQ(warnings_.size(), 1U);
    EXPECT_EQ(warnings_[0].identifier, "KORVEX:host:damagedConfiguration");
    const std::string shown = text::toDisplayBytes(warnings_[0].text);
    EXPECT_THAT(shown, HasSubstr("'" + file().string() + "'"));
    EXPECT_THAT(shown, HasSubstr("'" + file().string() + ".damaged-1'"));
    document().read();
    EXPECT_EQ(warnings_.size(), 1U) << "it is not damaged any more";
}

TEST_P(DamagedDocumentTest, IsSetAsideBeforeAChangeToo) {
    write(GetParam());
    EXPECT_EQ(document().update(setting("b", 2)), json({{"b", 2}}));
    EXPECT_EQ(contentOf(folder() / "path.json.damaged-1"), GetParam());
    EXPECT_EQ(warnings_.size(), 1U);
}

TEST_F(StoredDocumentTest, DamagedFilesNeverReplaceOneAnother) {
    scratch_.writeFile("config/path.json.damaged-2", "somebody's");
    for (const char* content : {"one", "two", "three"}) {
        write(content);
        document().read();
    }
    EXPECT_EQ(contentOf(folder() / "path.json.damaged-1"), "one");
    EXPECT_EQ(contentOf(folder() / "path.json.damaged-2"), "somebody's");
    EXPECT_EQ(contentOf(folder() / "path.json.damaged-3"), "two");
    EXPECT_EQ(contentOf(folder() / "path.json.damaged-4"), "three");
}

TEST_F(StoredDocumentTest, AFileThatIsNestedWithoutEndIsADamagedOne) {
    constexpr std::size_t levels = 200'000;
    const std::string content = "{\"a\":" + std::string(levels, '[') + std::string(levels, ']') + '}';
    write(content);
    EXPECT_EQ(document().update(setting("b", 2)), json({{"b", 2}}));
    EXPECT_EQ(contentOf(folder() / "path.json.damaged-1"), content);
    EXPECT_EQ(warnings_.size(), 1U);
}

TEST_F(StoredDocumentTest, AFileThatIsNestedAsAPersonMightIsWhole) {
    const std::string content = "{\"a\":" + std::string(50, '[') + std::string(50, ']') + '}';
    write(content);
    EXPECT_EQ(document().read(), json::parse(content));
    EXPECT_TRUE(warnings_.empty());
}

TEST_F(StoredDocumentTest, AnExceptionOfTheChangeLeavesADamagedFileAside) {
    write("damaged");
    const auto change = [](json&) { throw std::out_of_range("changed my mind"); };
    EXPECT_THROW(document().update(change), std::out_of_range);
    EXPECT_THAT(entries(), ElementsAre("path.json.damaged-1", "path.json.lock"));
    EXPECT_EQ(warnings_.size(), 1U);
}

TEST_F(StoredDocumentTest, WarnsWhenTheLockIsFreeAgain) {
    write("damaged");
    json seen;
    interpreter::setWarningReceiver(
        [&](const interpreter::Warning&) { seen = document().update(setting("by", "receiver")); });
    EXPECT_EQ(document().update(setting("a", 1)), json({{"a", 1}, {"by", "receiver"}}));
    EXPECT_EQ(seen, json({{"by", "receiver"}}));
}

TEST_F(StoredDocumentTest, IsOutOfDateUntilItWasRead) {
    StoredDocument stored = document();
    EXPECT_TRUE(stored.isOutOfDate());
    stored.read();
    EXPECT_FALSE(stored.isOutOfDate());
}

TEST_F(StoredDocumentTest, IsOutOfDateWhenTheFileComesChangesOrGoes) {
    StoredDocument stored = document();
    stored.read();
    write("{\"a\": 1}");
    EXPECT_TRUE(stored.isOutOfDate());
    EXPECT_EQ(stored.read(), json({{"a", 1}}));
    EXPECT_FALSE(stored.isOutOfDate());
    write("{\"a\": 12}");
    EXPECT_TRUE(stored.isOutOfDate());
    stored.read();
    std::filesystem::remove(file());
    EXPECT_TRUE(stored.isOutOfDate());
    EXPECT_EQ(stored.read(), json::object());
    EXPECT_FALSE(stored.isOutOfDate());
}

TEST_F(StoredDocumentTest, ItsOwnChangeDoesNotMakeItOutOfDate) {
    StoredDocument stored = document();
    stored.update(setting("a", 1));
    EXPECT_FALSE(stored.isOutOfDate());
    stored.update(setting("a", 1));
    EXPECT_FALSE(stored.isOutOfDate());
}

TEST_F(StoredDocumentTest, EveryOneOfManyQuickChangesOfTheSameSizeIsNoticed) {
    StoredDocument reader = document();
    StoredDocument writer = document();
    for (int round = 0; round < 50; ++round) {
        writer.update(setting("a", round % 2));
        ASSERT_TRUE(reader.isOutOfDate()) << round;
        ASSERT_EQ(reader.read(), json({{"a", round % 2}}));
        // Two further ones before the next look: the disk may give the file its earlier number again.
        writer.update(setting("a", 2));
        writer.update(setting("a", 3));
        ASSERT_TRUE(reader.isOutOfDate()) << round;
        reader.read();
    }
}

TEST_F(StoredDocumentTest, EveryChangeHasALaterTimeThanTheOneBeforeAlsoWhenTheClockWasSetBack) {
    document().update(setting("a", 1));
    const auto future = std::filesystem::file_time_type::clock::now() + std::chrono::hours(1);
    std::filesystem::last_write_time(file(), future);
    document().update(setting("a", 2));
    const auto second = std::filesystem::last_write_time(file());
    EXPECT_GT(second, future);
    document().update(setting("a", 3));
    EXPECT_GT(std::filesystem::last_write_time(file()), second);
}

TEST_F(StoredDocumentTest, IsOutOfDateWhenAnotherFolderIsSet) {
    StoredDocument stored = document();
    stored.update(setting("a", 1));
    setConfigurationFolder((scratch_.path() / "other").u16string());
    EXPECT_TRUE(stored.isOutOfDate());
    EXPECT_EQ(stored.read(), json::object());
    setConfigurationFolder(folder().u16string());
    EXPECT_TRUE(stored.isOutOfDate());
    EXPECT_EQ(stored.read(), json({{"a", 1}}));
}

}  // namespace
}  // namespace korvex::runtime::configuration
