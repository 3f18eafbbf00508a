// Configuration files and folders that are links, and the rights of what is made.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/unit/configuration/configuration_folder.h"

namespace korvex::runtime::configuration {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::ElementsAre;

class LinkedDocumentTest : public ConfigurationTest {
protected:
    /// Makes the configuration file a link.
    void link(const fs::path& target) {
        scratch_.makeFolder("config");
        scratch_.makeFolder("elsewhere");
        fs::create_symlink(target, file());
    }
};

TEST_F(LinkedDocumentTest, WhatTheLinkLeadsToIsReplacedAndTheLinkStays) {
    link("../elsewhere/kept.json");
    scratch_.writeFile("elsewhere/kept.json", "{\"a\": 1}");
    document().update(setting("b", 2));
    EXPECT_EQ(fs::read_symlink(file()), "../elsewhere/kept.json");
    EXPECT_EQ(json::parse(contentOf(scratch_.path() / "elsewhere/kept.json")), json({{"a", 1}, {"b", 2}}));
    EXPECT_THAT(entries(), ElementsAre("path.json"));
}

TEST_F(LinkedDocumentTest, ChainsOfLinksAreFollowedToTheirEnd) {
    link(scratch_.path() / "elsewhere/second");
    fs::create_symlink("third", scratch_.path() / "elsewhere/second");
    document().update(setting("a", 1));
    EXPECT_TRUE(fs::is_symlink(scratch_.path() / "elsewhere/second"));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(scratch_.path() / "elsewhere/third")));
    EXPECT_EQ(document().read(), json({{"a", 1}}));
}

TEST_F(LinkedDocumentTest, ADamagedFileIsSetAsideWhereItStands) {
    link("../elsewhere/kept.json");
    scratch_.writeFile("elsewhere/kept.json", "damaged");
    EXPECT_EQ(document().read(), json::object());
    EXPECT_EQ(contentOf(scratch_.path() / "elsewhere/kept.json.damaged-1"), "damaged");
    EXPECT_EQ(warnings_.size(), 1U);
    document().update(setting("a", 1));
    EXPECT_TRUE(fs::is_symlink(file()));
    EXPECT_EQ(json::parse(contentOf(scratch_.path() / "elsewhere/kept.json")), json({{"a", 1}}));
}

TEST_F(LinkedDocumentTest, LinksInACircleAreRefusedAndStay) {
    link("path.json");
    EXPECT_THROW(document().read(), ConfigurationError);
    EXPECT_THROW(document().update(setting("a", 1)), ConfigurationError);
    EXPECT_EQ(fs::read_symlink(file()), "path.json");
}

TEST_F(LinkedDocumentTest, AFolderThatIsALinkServes) {
    scratch_.makeFolder("elsewhere");
    fs::create_directory_symlink("elsewhere", folder());
    document().update(setting("a", 1));
    EXPECT_TRUE(fs::exists(scratch_.path() / "elsewhere/path.json"));
    EXPECT_TRUE(fs::is_symlink(folder()));
}

TEST_F(LinkedDocumentTest, FilesAndFoldersThatAreMadeAreForTheUserAlone) {
    const ::mode_t earlier = ::umask(0);
    setConfigurationFolder((folder() / "inner").u16string());
    document().update(setting("a", 1));
    document().update(setting("a", 2));
    ::umask(earlier);
    const auto rights = [](const fs::path& path) { return fs::status(path).permissions(); };
    EXPECT_EQ(rights(folder()), fs::perms::owner_all);
    EXPECT_EQ(rights(folder() / "inner"), fs::perms::owner_all);
    EXPECT_EQ(rights(folder() / "inner/path.json"), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(rights(folder() / "inner/path.json.lock"), fs::perms::owner_read | fs::perms::owner_write);
}

}  // namespace
}  // namespace korvex::runtime::configuration
