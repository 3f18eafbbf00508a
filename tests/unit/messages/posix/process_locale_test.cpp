// The process's locale from the variables of its environment.
#include "runtime/messages/process_locale.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <string>

#include "platform/message_catalog.h"

namespace {

using korvex::runtime::messages::processLocaleName;

class ProcessLocale : public testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
            const char* value = std::getenv(name);
            earlier_[name] = value == nullptr ? std::nullopt : std::optional<std::string>(value);
            unsetenv(name);
        }
    }
    void TearDown() override {
        for (const auto& [name, value] : earlier_) {
            if (value) {
                setenv(name.c_str(), value->c_str(), 1);
            } else {
                unsetenv(name.c_str());
            }
        }
    }

private:
    std::map<std::string, std::optional<std::string>> earlier_;
};

TEST_F(ProcessLocale, IsEnglishWhenNothingIsSet) { EXPECT_EQ(processLocaleName(), "en"); }

TEST_F(ProcessLocale, TheStrongerVariableWins) {
    setenv("LANG", "fr_FR.UTF-8", 1);
    EXPECT_EQ(processLocaleName(), "fr_FR");
    setenv("LC_MESSAGES", "it_IT", 1);
    EXPECT_EQ(processLocaleName(), "it_IT");
    setenv("LC_ALL", "de_AT.UTF-8", 1);
    EXPECT_EQ(processLocaleName(), "de_AT");
}

TEST_F(ProcessLocale, AnEmptyVariableCountsAsNotSet) {
    setenv("LC_ALL", "", 1);
    setenv("LANG", "de_DE.UTF-8", 1);
    EXPECT_EQ(processLocaleName(), "de_DE");
}

TEST_F(ProcessLocale, CharacterSetAndModifierAreLeftOut) {
    setenv("LC_ALL", "de_DE.ISO-8859-15@euro", 1);
    EXPECT_EQ(processLocaleName(), "de_DE");
    setenv("LC_ALL", "de_DE@euro", 1);
    EXPECT_EQ(processLocaleName(), "de_DE");
}

TEST_F(ProcessLocale, TheNeutralLocalesMeanEnglish) {
    for (const char* name : {"C", "POSIX", "C.UTF-8", "C.utf8"}) {
        setenv("LC_ALL", name, 1);
        EXPECT_EQ(processLocaleName(), "en") << name;
    }
}

TEST_F(ProcessLocale, IsTheGlobalLocaleUnlessAnotherWasSet) {
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    EXPECT_EQ(fl::i18n::KwLocale::global().name(), "de_DE");
}

}  // namespace
