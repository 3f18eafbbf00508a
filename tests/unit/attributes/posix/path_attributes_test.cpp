// Attributes of one path: what is read, what is changed, and what is refused.
#include <unistd.h>

#include <string>

#include "platform/storage_vfs.h"
#include "runtime/dispatcher/current_folder.h"
#include "tests/support/posix/ordinary_user.h"
#include "tests/unit/attributes/posix/attribute_fixture.h"

namespace korvex::tests {
namespace {

namespace vfs = foundation::storage::vfs;
using fl::filesystem::AccessDenied;
using fl::filesystem::permissions;
using fl::filesystem::status;
using namespace std::string_literals;

constexpr file_status::perms addWrite = file_status::perms_add | file_status::owner_write;
constexpr file_status::perms removeWrite = file_status::perms_remove | file_status::owner_write;
constexpr file_status::perms hide = file_status::perms_add | file_status::hidden_file;
constexpr file_status::perms show = file_status::perms_remove | file_status::hidden_file;

/// Record 5 of Samba, with no bits and a time of creation.
const std::string recordWithTime = "\0\0\x05\0\x05\0\0\0\x11\0\0\0\0\0\0\0created!"s;

class PathAttributesTest : public AttributesTest {
protected:
    PathAttributesTest() { scratch_.writeFile("file"); }

    bool has(const std::string& name, file_status::perms attribute) const {
        return (status(at(name)).permissions() & attribute) != 0;
    }
    static vfs::ErrorCode codeOf(const std::u16string& path, file_status::perms mask) {
        try {
            permissions(path, mask);
        } catch (const vfs::Exception& failure) {
            return failure.getErrorCode();
        }
        return static_cast<vfs::ErrorCode>(-1);
    }
};

TEST_F(PathAttributesTest, ANewFileMayBeWrittenAndHasNothingElse) {
    EXPECT_EQ(status(at("file")).permissions(), file_status::owner_write);
    EXPECT_FALSE(status(at("file")).is_directory());
    EXPECT_TRUE(status(scratch_.text()).is_directory());
}

TEST_F(PathAttributesTest, OnlyTheOwnersWriteBitCounts) {
    setMode("file", 0577);
    EXPECT_FALSE(has("file", file_status::owner_write));
    setMode("file", 0200);
    EXPECT_TRUE(has("file", file_status::owner_write));
}

TEST_F(PathAttributesTest, OnlyTheOwnersWriteBitIsChanged) {
    setMode("file", 04577);
    permissions(at("file"), addWrite);
    EXPECT_EQ(modeOf("file"), 04777U);
    permissions(at("file"), removeWrite);
    EXPECT_EQ(modeOf("file"), 04577U);
}

TEST_F(PathAttributesTest, WhatALinkLeadsToIsHiddenByItsOwnName) {
    scratch_.writeFile(".dot");
    std::filesystem::create_symlink("file", scratch_.path() / ".link");
    std::filesystem::create_symlink(".dot", scratch_.path() / "link");
    EXPECT_FALSE(has(".link", file_status::hidden_file));
    EXPECT_TRUE(has("link", file_status::hidden_file));
    permissions(at(".link"), file_status::perms_add | file_status::system_file);
    permissions(at("link"), file_status::perms_add | file_status::system_file);
    EXPECT_EQ(storedOf("file"), "0x4");
    EXPECT_EQ(storedOf(".dot"), "0x6");
}

TEST_F(PathAttributesTest, HiddenArchiveAndSystemAreWrittenAsOthersReadThem) {
    permissions(at("file"), hide);
    EXPECT_EQ(storedOf("file"), "0x2");
    permissions(at("file"), file_status::perms_add | file_status::archive_file | file_status::system_file);
    EXPECT_EQ(storedOf("file"), "0x26");
    permissions(at("file"), show);
    EXPECT_EQ(storedOf("file"), "0x24");
    EXPECT_EQ(status(at("file")).permissions(),
              file_status::owner_write | file_status::archive_file | file_status::system_file);
}

TEST_F(PathAttributesTest, TheLastOneThatGoesTakesTheStoredAttributeWithIt) {
    permissions(at("file"), hide);
    permissions(at("file"), show);
    EXPECT_EQ(storedOf("file"), "none");
    permissions(at("file"), show);
    EXPECT_EQ(storedOf("file"), "none");
}

TEST_F(PathAttributesTest, WhatOthersStoredIsReadAndKept) {
    store("file", recordWithTime);
    EXPECT_FALSE(has("file", file_status::hidden_file));
    permissions(at("file"), hide);
    EXPECT_TRUE(has("file", file_status::hidden_file));
    EXPECT_NE(storedOf("file").find("created!"), std::string::npos);
    store("file", "0x5");
    permissions(at("file"), hide);
    EXPECT_EQ(storedOf("file"), "0x7");
}

TEST_F(PathAttributesTest, WhatOthersStoredInAFormThatIsNotKnownIsLeftAlone) {
    std::string newer = recordWithTime;
    newer[2] = newer[4] = '\x06';
    store("file", newer);
    EXPECT_EQ(status(at("file")).permissions(), file_status::owner_write);
    EXPECT_EQ(codeOf(at("file"), hide), vfs::unsupportedOperation);
    // It may well say that the file is hidden.
    EXPECT_EQ(codeOf(at("file"), show), vfs::unsupportedOperation);
    permissions(at("file"), removeWrite);
    EXPECT_EQ(storedOf("file"), newer);
}

TEST_F(PathAttributesTest, FoldersKeepAttributesToo) {
    permissions(scratch_.text(), file_status::perms_add | file_status::system_file);
    EXPECT_TRUE((status(scratch_.text()).permissions() & file_status::system_file) != 0);
}

TEST_F(PathAttributesTest, ANameThatBeginsWithADotIsHidden) {
    scratch_.writeFile(".file");
    EXPECT_TRUE(has(".file", file_status::hidden_file));
    permissions(at(".file"), show);
    EXPECT_TRUE(has(".file", file_status::hidden_file));
    EXPECT_FALSE(has("file", file_status::hidden_file));
    EXPECT_FALSE(has(".", file_status::hidden_file));
    EXPECT_FALSE(has("..", file_status::hidden_file));
}

TEST_F(PathAttributesTest, OfANameThatBeginsWithADotOthersReadWhatIsAskedFor) {
    constexpr file_status::perms markSystem = file_status::perms_add | file_status::system_file;
    for (const char* name : {".system", ".shown", ".hidden"})
        scratch_.writeFile(name);
    permissions(at(".system"), markSystem);
    EXPECT_EQ(storedOf(".system"), "0x6");
    permissions(at(".system"), show);
    EXPECT_EQ(storedOf(".system"), "0x4");
    permissions(at(".system"), file_status::perms_remove | file_status::system_file);
    EXPECT_EQ(storedOf(".system"), "0x0");
    permissions(at(".system"), markSystem);
    EXPECT_EQ(storedOf(".system"), "0x4");

    permissions(at(".shown"), file_status::perms_remove | file_status::system_file);
    EXPECT_EQ(storedOf(".shown"), "none");
    permissions(at(".shown"), show);
    EXPECT_EQ(storedOf(".shown"), "0x0");
    permissions(at(".hidden"), hide);
    EXPECT_EQ(storedOf(".hidden"), "0x2");
}

TEST_F(PathAttributesTest, ALinkAnswersForWhatItLeadsTo) {
    std::filesystem::create_symlink("file", scratch_.path() / "link");
    permissions(at("link"), removeWrite);
    EXPECT_EQ(modeOf("file") & 0200U, 0U);
    permissions(at("link"), hide);
    EXPECT_EQ(storedOf("file"), "0x2");
    EXPECT_EQ(status(at("link")).permissions(), file_status::hidden_file);
}

TEST_F(PathAttributesTest, ALinkThatLeadsNowhereAnswersForItselfAndCannotBeChanged) {
    std::filesystem::create_symlink("nothing", scratch_.path() / "link");
    EXPECT_EQ(status(at("link")).permissions(), file_status::owner_write);
    EXPECT_EQ(codeOf(at("link"), addWrite), vfs::resourceNotFound);
}

TEST_F(PathAttributesTest, WhatIsNotThereHasNoAttributes) {
    EXPECT_THROW(status(at("nothing")), vfs::Exception);
    EXPECT_EQ(codeOf(at("nothing"), addWrite), vfs::resourceNotFound);
}

TEST_F(PathAttributesTest, WhereNoAttributesAreStoredTheyAreClearAndCannotBeSet) {
    ASSERT_EQ(::mkfifo((scratch_.path() / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(status(at("pipe")).permissions(), file_status::owner_write);
    EXPECT_EQ(codeOf(at("pipe"), hide), vfs::unsupportedOperation);
    permissions(at("pipe"), show);
    permissions(at("pipe"), removeWrite);
    EXPECT_EQ(modeOf("pipe"), 0400U);
    EXPECT_EQ(codeOf(u"/proc/version", hide), vfs::unsupportedOperation);
    EXPECT_EQ(status(u"/proc/version").permissions() & file_status::hidden_file, file_status::no_perms);
}

TEST_F(PathAttributesTest, ARelativePathIsTakenAgainstTheCurrentFolder) {
    runtime::dispatcher::setCurrentFolderPath(scratch_.text());
    permissions(u"file", removeWrite);
    EXPECT_EQ(status(u"file").permissions(), file_status::no_perms);
    runtime::dispatcher::setCurrentFolderPath(u"/");
}

TEST_F(PathAttributesTest, NamesThatAreNoTextWork) {
    scratch_.writeFile("no\xFFtext");
    const std::u16string path = scratch_.text() + u"/no" + char16_t(0xDCFF) + u"text";
    permissions(path, hide);
    EXPECT_EQ(storedOf("no\xFFtext"), "0x2");
    EXPECT_TRUE((status(path).permissions() & file_status::hidden_file) != 0);
}

/// The file belongs to the process's own user, the rest of the test runs as an ordinary one.
class ForeignFileTest : public PathAttributesTest {
protected:
    ForeignFileTest() {
        store("file", "0x2");
        setMode("file", 0444);
        setMode("", 0777);
    }
};

/// A change that is none is allowed to everybody: whatever were written would be refused.
TEST_F(ForeignFileTest, WhatStandsAlreadyIsNotTouched) {
    setMode("file", 0644);
    const OrdinaryUser user;
    permissions(at("file"), hide | file_status::owner_write);
    permissions(at("file"), file_status::perms_remove | file_status::system_file);
    EXPECT_EQ(modeOf("file"), 0644U);
    EXPECT_EQ(storedOf("file"), "0x2");
}

TEST_F(ForeignFileTest, MayBeLookedAtAndNotChanged) {
    // To an ordinary user who runs the test the file is no foreign one, but those of the system are.
    if (::geteuid() != 0) {
        EXPECT_THROW(permissions(u"/etc/passwd", hide), AccessDenied);
    } else {
        const OrdinaryUser user;
        EXPECT_EQ(status(at("file")).permissions(), file_status::hidden_file);
        EXPECT_THROW(permissions(at("file"), addWrite), AccessDenied);
        EXPECT_THROW(permissions(at("file"), show), AccessDenied);
    }
    EXPECT_EQ(modeOf("file"), 0444U);
    EXPECT_EQ(storedOf("file"), "0x2");
}

TEST_F(ForeignFileTest, ThatMayNotBeReadHidesWhatIsStored) {
    setMode("file", 0200);
    const OrdinaryUser user;
    EXPECT_EQ(status(at("file")).permissions(), file_status::owner_write);
    EXPECT_THROW(permissions(at("file"), show), AccessDenied);
}

TEST_F(ForeignFileTest, InAFolderThatMayNotBeEnteredIsNotSeen) {
    setMode("", 0600);
    const OrdinaryUser user;
    EXPECT_THROW(status(at("file")), AccessDenied);
    EXPECT_THROW(permissions(at("file"), addWrite), AccessDenied);
}

TEST_F(PathAttributesTest, TheOwnerHidesAFileThatIsProtectedFromWritingAndItStaysSo) {
    setMode("", 0777);
    const OrdinaryUser user;
    scratch_.writeFile("own");
    setMode("own", 0547);
    permissions(at("own"), hide);
    EXPECT_EQ(storedOf("own"), "0x2");
    EXPECT_EQ(modeOf("own"), 0547U);
    permissions(at("own"), addWrite | file_status::archive_file);
    EXPECT_EQ(modeOf("own"), 0747U);
    permissions(at("own"), removeWrite | file_status::hidden_file);
    EXPECT_EQ(storedOf("own"), "0x20");
    EXPECT_EQ(modeOf("own"), 0547U);
}

TEST_F(PathAttributesTest, TheOwnerHidesAFolderThatIsProtectedFromWritingAndItStaysSo) {
    setMode("", 0777);
    const OrdinaryUser user;
    scratch_.makeFolder("own");
    setMode("own", 01551);
    permissions(at("own"), hide);
    EXPECT_EQ(storedOf("own"), "0x2");
    EXPECT_EQ(modeOf("own"), 01551U);
}

TEST_F(PathAttributesTest, AFileOfWhichOnlyTheModeMayBeSeenGetsItsWriteBit) {
    setMode("", 0777);
    const OrdinaryUser user;
    scratch_.writeFile("own");
    setMode("own", 0);
    permissions(at("own"), addWrite);
    EXPECT_EQ(modeOf("own"), 0200U);
    EXPECT_THROW(permissions(at("own"), hide), AccessDenied);
    permissions(at("own"), removeWrite);
    EXPECT_EQ(modeOf("own"), 0U);
}

}  // namespace
}  // namespace korvex::tests
