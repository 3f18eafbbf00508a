// Warnings: who sees them, and which are switched off.
#include "runtime/interpreter/warnings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/kx.h"
#include "platform/message_identifiers.h"
#include "runtime/messages/locale.h"

namespace {

namespace interpreter = korvex::runtime::interpreter;
using interpreter::isWarningEnabled;
using interpreter::lastWarning;
using interpreter::setWarningEnabled;

constexpr const char* folderExists = "KORVEX:MKDIR:DirectoryExists";
constexpr const char* takenOffPath = "KORVEX:RMDIR:RemovedFromPath";

class Warnings : public testing::Test {
protected:
    void SetUp() override {
        korvex::runtime::messages::setGlobalLocale("en");
        earlier_ = interpreter::setWarningReceiver(
            [this](const interpreter::Warning& warning) { shown_.push_back(warning); });
        setWarningEnabled("all", true);
        interpreter::clearLastWarning();
    }
    void TearDown() override {
        interpreter::setWarningReceiver(earlier_);
        setWarningEnabled("all", true);
        interpreter::clearLastWarning();
        korvex::runtime::messages::setGlobalLocale("");
    }

    static void warnThatFolderExists() { kxWarningMsgId(KORVEX::MKDIR::DirectoryExists()); }
    static void warnThatFolderLeftPath() { kxWarningMsgId(KORVEX::RMDIR::RemovedFromPath(u"/data/a")); }

    std::vector<interpreter::Warning> shown_;

private:
    interpreter::WarningReceiver earlier_;
};

TEST_F(Warnings, AWarningIsShownWithIdentifierAndText) {
    warnThatFolderLeftPath();
    ASSERT_EQ(shown_.size(), 1U);
    EXPECT_EQ(shown_[0].identifier, takenOffPath);
    EXPECT_EQ(shown_[0].text,
              u"The folder \"/data/a\" was taken off the search path because it was removed.");
}

TEST_F(Warnings, TheLastOneIsRemembered) {
    EXPECT_EQ(lastWarning().identifier, "");
    warnThatFolderLeftPath();
    warnThatFolderExists();
    EXPECT_EQ(lastWarning().identifier, folderExists);
    EXPECT_EQ(lastWarning().text, u"The folder exists already.");
    interpreter::clearLastWarning();
    EXPECT_EQ(lastWarning().identifier, "");
    EXPECT_EQ(lastWarning().text, u"");
}

TEST_F(Warnings, OneThatIsSwitchedOffIsNeitherShownNorRemembered) {
    setWarningEnabled(folderExists, false);
    warnThatFolderLeftPath();
    warnThatFolderExists();
    EXPECT_EQ(shown_.size(), 1U);
    EXPECT_EQ(lastWarning().identifier, takenOffPath);
    EXPECT_FALSE(isWarningEnabled(folderExists));
    EXPECT_TRUE(isWarningEnabled(takenOffPath));
}

TEST_F(Warnings, OneThatIsSwitchedOnAgainIsShown) {
    setWarningEnabled(folderExists, false);
    setWarningEnabled(folderExists, true);
    warnThatFolderExists();
    EXPECT_EQ(shown_.size(), 1U);
}

TEST_F(Warnings, AllCanBeSwitchedOffButForSingleOnes) {
    setWarningEnabled("all", false);
    setWarningEnabled(takenOffPath, true);
    warnThatFolderExists();
    EXPECT_TRUE(shown_.empty());
    warnThatFolderLeftPath();
    EXPECT_EQ(shown_.size(), 1U);
}

TEST_F(Warnings, SwitchingAllForgetsWhatWasSaidOfSingleOnes) {
    setWarningEnabled(folderExists, false);
    setWarningEnabled("all", true);
    EXPECT_TRUE(isWarningEnabled(folderExists));
    setWarningEnabled(takenOffPath, true);
    setWarningEnabled("all", false);
    EXPECT_FALSE(isWarningEnabled(takenOffPath));
    EXPECT_FALSE(isWarningEnabled("all"));
}

TEST_F(Warnings, WithoutAReceiverTheyAreOnlyRemembered) {
    EXPECT_TRUE(interpreter::setWarningReceiver(nullptr));
    warnThatFolderExists();
    EXPECT_TRUE(shown_.empty());
    EXPECT_EQ(lastWarning().identifier, folderExists);
}

TEST_F(Warnings, AReceiverMayReplaceItself) {
    int calls = 0;
    interpreter::setWarningReceiver([&calls](const interpreter::Warning&) {
        ++calls;
        interpreter::setWarningReceiver(nullptr);
    });
    warnThatFolderExists();
    warnThatFolderExists();
    EXPECT_EQ(calls, 1);
}

}  // namespace
