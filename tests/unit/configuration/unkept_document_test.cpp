// Without a configuration folder documents last for the run.
#include "tests/unit/configuration/configuration_folder.h"

namespace korvex::runtime::configuration {
namespace {

class UnkeptDocumentTest : public ConfigurationTest {
protected:
    UnkeptDocumentTest() { setConfigurationFolder(u""); }
};

TEST_F(UnkeptDocumentTest, IsSharedByAllObjectsOfItsNameAndWritesNothing) {
    StoredDocument first = document();
    EXPECT_EQ(first.read(), nlohmann::json::object());
    EXPECT_EQ(first.update(setting("a", 1)), nlohmann::json({{"a", 1}}));
    EXPECT_EQ(document().read(), nlohmann::json({{"a", 1}}));
    EXPECT_EQ(StoredDocument("other.json", [](const auto&) { return true; }).read(),
              nlohmann::json::object());
    EXPECT_EQ(first.path(), u"");
    EXPECT_FALSE(std::filesystem::exists(folder()));
}

TEST_F(UnkeptDocumentTest, IsOutOfDateAfterAChangeThroughAnotherObject) {
    StoredDocument first = document();
    EXPECT_TRUE(first.isOutOfDate()) << "nothing was read yet";
    first.read();
    EXPECT_FALSE(first.isOutOfDate());
    StoredDocument second = document();
    second.update(setting("a", 1));
    EXPECT_FALSE(second.isOutOfDate());
    EXPECT_TRUE(first.isOutOfDate());
}

TEST_F(UnkeptDocumentTest, AnExceptionOfTheChangeChangesNothing) {
    StoredDocument stored = document();
    stored.update(setting("a", 1));
    EXPECT_THROW(stored.update([](nlohmann::json& changed) {
        changed["a"] = 2;
        throw std::runtime_error("changed my mind");
    }),
                 std::runtime_error);
    EXPECT_EQ(stored.read(), nlohmann::json({{"a", 1}}));
}

TEST_F(UnkeptDocumentTest, IsForgottenWhenAFolderIsSet) {
    StoredDocument stored = document();
    stored.update(setting("a", 1));
    setConfigurationFolder(folder().u16string());
    EXPECT_TRUE(stored.isOutOfDate());
    EXPECT_EQ(stored.read(), nlohmann::json::object());
    setConfigurationFolder(u"");
    EXPECT_TRUE(stored.isOutOfDate());
    EXPECT_EQ(stored.read(), nlohmann::json::object());
}

}  // namespace
}  // namespace korvex::runtime::configuration
