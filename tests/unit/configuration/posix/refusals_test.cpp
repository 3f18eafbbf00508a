// What the system refuses: unreadable files, read-only files and folders, full disks. The file stays as it
// was.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <optional>

#include "tests/support/posix/ordinary_user.h"
#include "tests/unit/configuration/configuration_folder.h"
#include "tests/unit/configuration/posix/child_process.h"

namespace korvex::runtime::configuration {
namespace {

namespace fs = std::filesystem;
using korvex::tests::ChildProcess;
using korvex::tests::OrdinaryUser;
using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

class RefusalTest : public ConfigurationTest {
protected:
    /// The text with which an operation is refused; empty when it is not.
    template <class Operation>
    static std::string refusalOf(const Operation& operation) {
        try {
            operation();
        } catch (const ConfigurationError& error) {
            return error.what();
        }
        return {};
    }
    std::string refusalOfReading() const {
        return refusalOf([this] { document().read(); });
    }
    std::string refusalOfChanging() const {
        return refusalOf([this] { document().update(setting("a", 2)); });
    }

    void write(const std::string& content, fs::perms rights = fs::perms::owner_all) {
        fs::permissions(scratch_.writeFile("config/" + name_, content), rights);
    }

    void takeWriteRightsFromFolder() {
        fs::permissions(folder(), fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                        fs::perm_options::remove);
    }

    /// The configuration folder for everybody, since an ordinary user acts in some tests.
    void openFolderToAll() { fs::permissions(scratch_.makeFolder("config"), fs::perms::all); }
};

TEST_F(RefusalTest, AFileThatCannotBeReadIsNamedAndNeverReplaced) {
    openFolderToAll();
    write("{\"a\": 1}", fs::perms::none);
    {
        const OrdinaryUser user;
        EXPECT_THAT(refusalOfReading(), AllOf(HasSubstr(file().string()), HasSubstr("Permission denied")));
        EXPECT_THAT(refusalOfChanging(), AllOf(HasSubstr(file().string()), HasSubstr("Permission denied")));
    }
    EXPECT_EQ(contentOf(file()), "{\"a\": 1}");
}

TEST_F(RefusalTest, AFileMarkedReadOnlyIsReadAndNeverReplaced) {
    write("{\"a\": 1}", fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    EXPECT_EQ(document().read(), json({{"a", 1}}));
    EXPECT_THAT(refusalOfChanging(), AllOf(HasSubstr(file().string()), HasSubstr("Permission denied")));
    EXPECT_EQ(contentOf(file()), "{\"a\": 1}");
    EXPECT_THAT(entries(), ElementsAre("path.json", "path.json.lock"));
}

TEST_F(RefusalTest, InAReadOnlyFolderFilesAreReadAndNotChanged) {
    write("{\"a\": 1}", fs::perms::all);
    takeWriteRightsFromFolder();
    const OrdinaryUser user;
    EXPECT_EQ(document().read(), json({{"a", 1}}));
    EXPECT_THAT(refusalOfChanging(), AllOf(HasSubstr(file().string()), HasSubstr("Permission denied")));
    EXPECT_EQ(document().read(), json({{"a", 1}}));
}

TEST_F(RefusalTest, ADamagedFileInAReadOnlyFolderStaysAndIsReported) {
    write("damaged", fs::perms::all);
    takeWriteRightsFromFolder();
    const OrdinaryUser user;
    EXPECT_THAT(refusalOfReading(), AllOf(HasSubstr(file().string()), HasSubstr("damaged")));
    EXPECT_NE(refusalOfChanging(), "");
    EXPECT_EQ(contentOf(file()), "damaged");
    EXPECT_TRUE(warnings_.empty());
}

TEST_F(RefusalTest, AFolderThatCannotBeMadeIsReported) {
    setConfigurationFolder((scratch_.writeFile("file") / "config").u16string());
    EXPECT_THAT(refusalOfChanging(), HasSubstr("Not a directory"));
    EXPECT_THAT(refusalOfReading(), HasSubstr("Not a directory"));
}

TEST_F(RefusalTest, AFolderOrPipeInPlaceOfTheFileIsRefusedAndStays) {
    scratch_.makeFolder("config/path.json");
    EXPECT_THAT(refusalOfReading(), HasSubstr("Is a directory"));
    EXPECT_THAT(refusalOfChanging(), HasSubstr("Is a directory"));
    fs::remove(file());
    ASSERT_EQ(::mkfifo(file().c_str(), 0600), 0);
    EXPECT_THAT(refusalOfReading(), HasSubstr("Not a regular file"));
    EXPECT_THAT(refusalOfChanging(), HasSubstr("Not a regular file"));
    EXPECT_TRUE(fs::is_fifo(file()));
}

TEST_F(RefusalTest, ALinkToADeviceIsRefusedAndTheDeviceStays) {
    scratch_.makeFolder("config");
    fs::create_symlink("/dev/null", file());
    EXPECT_THAT(refusalOfChanging(), HasSubstr("Not a regular file"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(RefusalTest, ANameThatNoFileCanHaveIsRefused) {
    const char16_t strayUnit = 0xD800;
    setConfigurationFolder(folder().u16string() + strayUnit);
    EXPECT_NE(refusalOfReading(), "");
    EXPECT_NE(refusalOfChanging(), "");
}

TEST_F(RefusalTest, OnAFullDiskTheOldDocumentStaysAndNothingIsLeftBeside) {
    document().update(setting("a", 1));
    ChildProcess onFullDisk([this] {
        ::signal(SIGXFSZ, SIG_IGN);
        const ::rlimit bytesOfAFile{4096, 4096};
        ::setrlimit(RLIMIT_FSIZE, &bytesOfAFile);
        const std::string refusal =
            refusalOf([this] { document().update(setting("long", std::string(100000, 'x'))); });
        if (refusal.find("File too large") == std::string::npos) throw std::runtime_error(refusal);
        document().update(setting("b", 2));
    });
    EXPECT_EQ(onFullDisk.end(), 0);
    EXPECT_EQ(document().read(), json({{"a", 1}, {"b", 2}}));
    EXPECT_THAT(entries(), ElementsAre("path.json", "path.json.lock"));
}

TEST_F(RefusalTest, WhatCannotBeLookedAtIsOutOfDate) {
    StoredDocument stored = document();
    stored.update(setting("a", 1));
    fs::permissions(folder(), fs::perms::none);
    const OrdinaryUser user;
    EXPECT_TRUE(stored.isOutOfDate());
    EXPECT_THROW(stored.read(), ConfigurationError);
}

}  // namespace
}  // namespace korvex::runtime::configuration
