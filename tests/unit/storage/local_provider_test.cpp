// The local provider where disks are unfriendly: long paths, odd names, devices, links in circles, locked
// folders.
#include "runtime/storage/providers/local/local_provider.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/path_management.h"
#include "runtime/storage/location.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"
#include "runtime/text/encoding.h"
#include "tests/support/posix/ordinary_user.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::storage {
namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using posix::FileDescriptor;

class LocalProviderTest : public testing::Test {
protected:
    AbsoluteIRI at(const std::u16string& relative) const {
        return AbsoluteIRI(Velquist::PathManagement::GetIRIFromString(scratch_.text()), relative);
    }
    AbsoluteIRI atBytes(const std::string& relative) const { return at(text::fromBytes(relative)); }

    /// Makes `levels` folders of one name inside each other and a file at their end, without a long path.
    std::string makeDeepTree(const std::string& name, int levels) const {
        FileDescriptor folder(::open(scratch_.path().c_str(), O_PATH | O_DIRECTORY));
        std::string path;
        for (int i = 0; i < levels; ++i) {
            EXPECT_EQ(::mkdirat(folder.get(), name.c_str(), 0777), 0);
            folder = FileDescriptor(::openat(folder.get(), name.c_str(), O_PATH | O_DIRECTORY));
            path += name + '/';
        }
        FileDescriptor(::openat(folder.get(), "file", O_CREAT | O_WRONLY, 0666));
        return path;
    }

    tests::ScratchFolder scratch_;
    LocalProvider local_;
};

TEST_F(LocalProviderTest, PathsBeyondTheSystemsLimitAreAnswered) {
    const std::string path = makeDeepTree(std::string(200, 'd'), 50);
    ASSERT_GT(path.size(), 10000U);
    EXPECT_EQ(local_.existence(atBytes(path + "file")), provider::AsFile);
    EXPECT_EQ(local_.existence(atBytes(path + "nothing")), provider::AsNeither);
    EXPECT_EQ(local_.existence(atBytes(path)), provider::AsFolder);
    EXPECT_EQ(local_.existence(atBytes(path + "file/below")), provider::AsNeither);
    EXPECT_EQ(local_.extendedExistence(atBytes(path + "file")), provider::ExtendedFile);
}

TEST_F(LocalProviderTest, CanonicalFormOfALongPathResolvesLinksAndDots) {
    const std::string path = makeDeepTree(std::string(200, 'd'), 50);
    std::filesystem::create_directory_symlink(".", scratch_.path() / "self");
    const AbsoluteIRI expected = atBytes(path + "file");
    EXPECT_EQ(local_.canonicalLocation(atBytes("self/" + path + "./../" + std::string(200, 'd') + "/file")),
              expected);
}

TEST_F(LocalProviderTest, PathMadeLongByRepeatedDotsIsAnswered) {
    scratch_.writeFile("folder/file");
    std::string dots;
    for (int i = 0; i < 2000; ++i) {
        dots += "folder/../";
    }
    EXPECT_EQ(local_.existence(atBytes(dots + "folder/file")), provider::AsFile);
    EXPECT_EQ(local_.canonicalLocation(atBytes(dots + "folder/file")), at(u"folder/file"));
}

TEST_F(LocalProviderTest, NamesAreAnyBytes) {
    for (const std::string name : {"\xff\xfe",
                                   "a\xe9"
                                   "b",
                                   "\xed\xa0\x80", "line\nfeed", " ", "%20", "?*#"}) {
        scratch_.writeFile(name);
        EXPECT_EQ(local_.existence(atBytes(name)), provider::AsFile) << name;
        EXPECT_EQ(local_.canonicalLocation(atBytes(name)), atBytes(name)) << name;
    }
    EXPECT_EQ(local_.existence(atBytes("\xff")), provider::AsNeither);
}

TEST_F(LocalProviderTest, NamesOf255BytesAreTheLongest) {
    scratch_.writeFile(std::string(255, 'n'));
    EXPECT_EQ(local_.existence(atBytes(std::string(255, 'n'))), provider::AsFile);
    EXPECT_EQ(local_.existence(atBytes(std::string(256, 'n'))), provider::AsNeither);
}

TEST_F(LocalProviderTest, TextThatNoNameReadsAsIsNothing) {
    scratch_.writeFile("a");
    EXPECT_EQ(local_.existence(at(std::u16string(u"a\0b", 3))), provider::AsNeither);
    EXPECT_EQ(local_.existence(at(std::u16string(u"a\0", 2))), provider::AsNeither);
    EXPECT_EQ(local_.existence(at(std::u16string(1, 0xD800))), provider::AsNeither);
    EXPECT_EQ(local_.extendedExistence(at(std::u16string(u"a\0", 2))), provider::ExtendedNothing);
    EXPECT_THROW(local_.canonicalLocation(at(std::u16string(u"a\0", 2))), vfs::Exception);
}

TEST_F(LocalProviderTest, LinksAreFollowedOrToldApart) {
    scratch_.writeFile("file");
    scratch_.makeFolder("folder");
    std::filesystem::create_symlink("file", scratch_.path() / "toFile");
    std::filesystem::create_symlink("folder", scratch_.path() / "toFolder");
    std::filesystem::create_symlink("nothing", scratch_.path() / "broken");
    std::filesystem::create_symlink("circle", scratch_.path() / "circle");

    EXPECT_EQ(local_.existence(at(u"toFile")), provider::AsFile);
    EXPECT_EQ(local_.existence(at(u"toFolder")), provider::AsFolder);
    EXPECT_EQ(local_.existence(at(u"broken")), provider::AsNeither);
    EXPECT_EQ(local_.existence(at(u"circle")), provider::AsNeither);
    EXPECT_EQ(local_.extendedExistence(at(u"toFile")), provider::ExtendedLinkToFile);
    EXPECT_EQ(local_.extendedExistence(at(u"toFolder")), provider::ExtendedLinkToFolder);
    EXPECT_EQ(local_.extendedExistence(at(u"broken")), provider::ExtendedBrokenLink);
    EXPECT_EQ(local_.extendedExistence(at(u"circle")), provider::ExtendedBrokenLink);
}

TEST_F(LocalProviderTest, PipesAndDevicesCountAsFiles) {
    ASSERT_EQ(::mkfifo((scratch_.path() / "pipe").c_str(), 0666), 0);
    EXPECT_EQ(local_.existence(at(u"pipe")), provider::AsFile);
    EXPECT_EQ(local_.extendedExistence(at(u"pipe")), provider::ExtendedDevice);
    EXPECT_EQ(local_.extendedExistence(AbsoluteIRI(u"file:///dev/null")), provider::ExtendedDevice);
}

TEST_F(LocalProviderTest, CanonicalFormOfWhatIsNotThereIsNotFound) {
    scratch_.writeFile("file");
    for (const char16_t* name : {u"nothing", u"file/below", u"file/..", u"no/../file"}) {
        try {
            local_.canonicalLocation(at(name));
            FAIL() << "found";
        } catch (const vfs::Exception& error) {
            EXPECT_EQ(error.getErrorCode(), vfs::resourceNotFound);
            EXPECT_EQ(error.getLocation(), at(name));
        }
    }
}

TEST_F(LocalProviderTest, HostOfAnotherMachineHoldsNothing) {
    EXPECT_EQ(local_.existence(AbsoluteIRI(u"file://server/tmp")), provider::AsNeither);
    EXPECT_EQ(local_.existence(AbsoluteIRI(u"file://localhost/")), provider::AsFolder);
}

TEST_F(LocalProviderTest, WhatCannotBeThereIsAsWritableAsItsFolder) {
    const std::string deep = makeDeepTree(std::string(200, 'd'), 50);
    ASSERT_EQ(::symlink("circle", (scratch_.path() / "circle").c_str()), 0);
    for (const std::string& name : {std::string("nothing"), std::string("circle"), std::string(300, 'n'),
                                    deep + "nothing", deep + "file"}) {
        EXPECT_TRUE(local_.isWritable(atBytes(name)));
    }
    const std::string missing = std::string(200, 'm') + '/';
    std::string missingDeep;
    for (int level = 0; level < 50; ++level)
        missingDeep += missing;
    for (const std::string& name : {missing + "nothing", missingDeep + "nothing",
                                    std::string("circle/nothing"), deep + "file/nothing"}) {
        EXPECT_FALSE(local_.isWritable(atBytes(name)));
    }
}

TEST_F(LocalProviderTest, LockedFolderRaisesPermissionDenied) {
    scratch_.writeFile("locked/file");
    std::filesystem::permissions(scratch_.path(), std::filesystem::perms::all);
    std::filesystem::permissions(scratch_.path() / "locked", std::filesystem::perms::none);
    const tests::OrdinaryUser user;
    try {
        local_.existence(at(u"locked/file"));
        FAIL() << "answered";
    } catch (const vfs::Exception& error) {
        EXPECT_EQ(error.getErrorCode(), vfs::permissionDenied);
        EXPECT_EQ(error.getSystemText(), "Permission denied");
    }
    EXPECT_EQ(local_.existence(at(u"locked")), provider::AsFolder);
}

}  // namespace
}  // namespace korvex::runtime::storage
