// Settings: the levels, what is kept from run to run, and what becomes of a damaged file.
#include <ostream>
#include <stdexcept>

#include "runtime/configuration/stored_document.h"
#include "tests/unit/settings/settings_fixture.h"

namespace korvex::runtime::settings_tree {
namespace {

using configuration::ConfigurationError;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(SettingsTest, AsShippedFilesAreDeletedPermanently) {
    EXPECT_TRUE(value());
    EXPECT_TRUE(value(u"factory"));
    EXPECT_FALSE(std::filesystem::exists(folder())) << "a question writes nothing";
}

TEST_F(SettingsTest, LevelsAreAskedInTheirOrder) {
    set(false, u"user");
    EXPECT_FALSE(value());
    set(true, u"temporary");
    EXPECT_TRUE(value());
    EXPECT_TRUE(value(u"temporary"));
    EXPECT_FALSE(value(u"user"));
    EXPECT_TRUE(value(u"factory"));
    forgetTemporaryValues();
    EXPECT_FALSE(value());
}

TEST_F(SettingsTest, LevelWithoutAValueHasNone) {
    EXPECT_THROW(value(u"user"), std::runtime_error);
    EXPECT_THROW(value(u"temporary"), std::runtime_error);
    EXPECT_THROW(value(u"system"), std::runtime_error);
}

TEST_F(SettingsTest, NothingIsStoredAsShippedOrAtALevelThatThereIsNot) {
    for (const char16_t* level : {u"factory", u"", u"system"})
        EXPECT_THROW(set(false, level), std::runtime_error);
    EXPECT_TRUE(value());
    EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(SettingsTest, WhatThereIsNotIsRefused) {
    EXPECT_THROW(root()->getSettingsByFullName(u"nothing"), std::runtime_error);
    EXPECT_THROW(group()->getSettingsByFullName(u"nothing"), std::runtime_error);
    EXPECT_THROW(group()->get<bool>(u"Nothing", u""), std::runtime_error);
    EXPECT_THROW(group()->set<bool>(u"Nothing", true, u"user"), std::runtime_error);
    EXPECT_THROW(root()->get<bool>(key_, u""), std::runtime_error);
    EXPECT_THROW(root()->set<bool>(key_, true, u"user"), std::runtime_error);
}

TEST_F(SettingsTest, ValueOfTheUserIsOnDiskAtOnce) {
    set(false);
    EXPECT_EQ(contentOf(file()),
              "{\n    \"korvex\": {\n        \"DeleteFilesPermanently\": false\n    }\n}\n");
}

TEST_F(SettingsTest, WhatAnotherProgramHasWrittenCountsWithTheNextQuestion) {
    const auto held = group();
    EXPECT_TRUE(held->get<bool>(key_, u""));
    write(R"({"korvex": {"DeleteFilesPermanently": false}})");
    EXPECT_FALSE(held->get<bool>(key_, u""));
}

TEST_F(SettingsTest, GroupsAndKeysOfOtherVersionsAreKept) {
    write(R"({"other": {"a": 1}, "korvex": {"Later": [1, 2]}})");
    set(false);
    EXPECT_THAT(contentOf(file()), AllOf(HasSubstr("\"other\""), HasSubstr("\"Later\"")));
    EXPECT_FALSE(value());
}

TEST_F(SettingsTest, ValueOfThisRunIsNotKept) {
    set(false, u"temporary");
    EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(SettingsTest, WithoutAFolderAValueLastsForThisRun) {
    configuration::setConfigurationFolder(u"");
    set(false);
    EXPECT_FALSE(value());
    EXPECT_FALSE(value(u"user"));
    EXPECT_FALSE(std::filesystem::exists(folder()));
}

TEST_F(SettingsTest, FileThatCannotBeReadIsAnErrorThatNamesIt) {
    std::filesystem::create_directories(file());
    try {
        value();
        ADD_FAILURE() << "a value out of nowhere";
    } catch (const ConfigurationError& error) {
        EXPECT_THAT(error.what(), HasSubstr(file().string()));
    }
}

TEST_F(SettingsTest, FileThatCannotBeWrittenStaysAsItIs) {
    write(R"({"korvex": {"DeleteFilesPermanently": false}})");
    std::filesystem::permissions(file(), std::filesystem::perms::owner_read);
    EXPECT_THROW(set(true), ConfigurationError);
    EXPECT_FALSE(value());
}

struct Damage {
    const char* name;
    std::string content;
};

void PrintTo(const Damage& damage, std::ostream* stream) { *stream << damage.name; }

const Damage damages[] = {
    {"Empty", ""},
    {"Cut", "{"},
    {"List", "[]"},
    {"NoJson", "damaged"},
    {"NoGroup", R"({"korvex": true})"},
    {"NoGroupEither", R"({"other": 1})"},
    {"Text", R"({"korvex": {"DeleteFilesPermanently": "yes"}})"},
    {"Number", R"({"korvex": {"DeleteFilesPermanently": 0}})"},
    {"Null", R"({"korvex": {"DeleteFilesPermanently": null}})"},
};

class DamagedSettingsTest : public SettingsTest, public testing::WithParamInterface<Damage> {};

INSTANTIATE_TEST_SUITE_P(Contents, DamagedSettingsTest, testing::ValuesIn(damages),
                         [](const auto& damage) { return std::string(damage.param.name); });

TEST_P(DamagedSettingsTest, FileIsNamedAndSetAsideAndReadsAsShipped) {
    write(GetParam().content);
    EXPECT_TRUE(value());
    const std::string aside = file().string() + ".damaged-1";
    EXPECT_THAT(warnings_, ElementsAre(AllOf(HasSubstr("KORVEX:host:damagedConfiguration"),
                                             HasSubstr(file().string()), HasSubstr(aside))));
    EXPECT_EQ(contentOf(aside), GetParam().content);
    EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_P(DamagedSettingsTest, FileIsNotOverwrittenByAChange) {
    write(GetParam().content);
    set(false);
    EXPECT_EQ(contentOf(file().string() + ".damaged-1"), GetParam().content);
    EXPECT_FALSE(value());
    EXPECT_EQ(warnings_.size(), 1U);
}

TEST_F(SettingsTest, EachDamagedFileIsKept) {
    for (const char* content : {"one", "two"}) {
        write(content);
        EXPECT_TRUE(value());
    }
    EXPECT_EQ(contentOf(file().string() + ".damaged-1"), "one");
    EXPECT_EQ(contentOf(file().string() + ".damaged-2"), "two");
    EXPECT_THAT(warnings_, testing::SizeIs(2));
}

}  // namespace
}  // namespace korvex::runtime::settings_tree
