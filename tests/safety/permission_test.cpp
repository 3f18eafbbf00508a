// Owners, permission bits and access lists of what is copied and moved, for the superuser and for others.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "tests/safety/own_mounts.h"
#include "tests/safety/system_calls.h"
#include "tests/support/posix/ordinary_user.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace provider = foundation::storage::provider;

struct ::stat statusOf(const fs::path& path) {
    struct ::stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status;
}

mode_t bitsOf(const fs::path& path) { return statusOf(path).st_mode & 07777; }

/// Gives what is made in the folder other bits than its maker asks for: read and write for the owner, nothing
/// for anybody else. In the form in which the system keeps an access list.
void setDefaultAccessList(const fs::path& folder) {
    struct Entry {
        std::uint16_t tag;
        std::uint16_t permissions;
        std::uint32_t id;
    };
    constexpr std::uint32_t version = 2;
    constexpr std::uint32_t nobody = 0xFFFFFFFF;
    constexpr Entry entries[] = {{0x01, 6, nobody}, {0x04, 0, nobody}, {0x20, 0, nobody}};
    std::array<char, sizeof version + sizeof entries> list{};
    std::memcpy(list.data(), &version, sizeof version);
    std::memcpy(list.data() + sizeof version, entries, sizeof entries);
    EXPECT_EQ(::setxattr(folder.c_str(), "system.posix_acl_default", list.data(), list.size(), 0), 0);
}

class PermissionTest : public testing::Test {
protected:
    PermissionTest() {
        fs::create_directories(folder_);
        fs::create_directories(other_);
        writeContent(source_, "content");
    }
    ~PermissionTest() override {
        fs::remove_all(folder_);
        fs::remove_all(other_);
    }

    const fs::path folder_ = workDisk() / "permissions";
    const fs::path other_ = otherDisk() / "permissions";
    const fs::path source_ = folder_ / "source";
    const fs::path copy_ = other_ / "copy";
};

TEST_F(PermissionTest, CopyHasTheBitsOfItsSourceWhateverTheUmask) {
    for (const mode_t umask : {0U, 022U, 077U}) {
        const mode_t earlier = ::umask(umask);
        for (const mode_t bits : {0400U, 0444U, 0600U, 0644U, 0666U, 0755U, 0777U, 0070U, 01644U}) {
            ASSERT_EQ(::chmod(source_.c_str(), bits), 0);
            fileAt(source_).copyFile(fileAt(copy_), provider::ReplaceAny);
            EXPECT_EQ(bitsOf(copy_), bits);
            fs::remove(copy_);
        }
        ::umask(earlier);
    }
}

TEST_F(PermissionTest, DefaultAccessListOfTheFolderDoesNotChangeTheBits) {
    setDefaultAccessList(other_);
    writeContent(other_ / "made", "");
    ASSERT_EQ(bitsOf(other_ / "made"), 0600U);
    ASSERT_EQ(::chmod(source_.c_str(), 0664), 0);
    ASSERT_EQ(::chmod(folder_.c_str(), 0755), 0);
    folderAt(folder_).copyFolder(folderAt(copy_), provider::ReplaceWritable);
    EXPECT_EQ(bitsOf(copy_), 0755U);
    EXPECT_EQ(bitsOf(copy_ / "source"), 0664U);
}

/// An access list that lets one user in whom the permission bits keep out.
void setAccessListForOneUser(const fs::path& path, const char* attribute) {
    struct Entry {
        std::uint16_t tag;
        std::uint16_t permissions;
        std::uint32_t id;
    };
    constexpr std::uint32_t version = 2;
    constexpr std::uint32_t nobody = 0xFFFFFFFF;
    // The owner, the user of the number 0, the group, the mask, all others.
    constexpr Entry entries[] = {
        {0x01, 7, nobody}, {0x02, 7, 0}, {0x04, 5, nobody}, {0x10, 7, nobody}, {0x20, 0, nobody}};
    std::array<char, sizeof version + sizeof entries> list{};
    std::memcpy(list.data(), &version, sizeof version);
    std::memcpy(list.data() + sizeof version, entries, sizeof entries);
    ASSERT_EQ(::setxattr(path.c_str(), attribute, list.data(), list.size(), 0), 0);
}

std::string attributeOf(const fs::path& path, const char* attribute) {
    std::array<char, 256> value{};
    const ssize_t length = ::getxattr(path.c_str(), attribute, value.data(), value.size());
    return {value.data(), length < 0 ? 0 : static_cast<std::size_t>(length)};
}

constexpr const char* accessList = "system.posix_acl_access";
constexpr const char* defaultList = "system.posix_acl_default";

TEST_F(PermissionTest, FolderInheritsNoAccessFromWhereItIsCopiedOrMovedTo) {
    fs::create_directories(folder_ / "inner" / "deep");
    fs::create_directories(other_ / "merged");
    for (const fs::path& into : {other_, other_ / "merged"})
        setAccessListForOneUser(into, defaultList);
    fs::create_directory(other_ / "made");
    ASSERT_NE(attributeOf(other_ / "made", accessList), "");

    folderAt(folder_).copyFolder(folderAt(copy_), provider::ReplaceWritable);
    folderAt(folder_).copyFolder(folderAt(other_ / "merged"), provider::MergeFolder);
    folderAt(folder_).moveFolder(folderAt(other_ / "moved"), provider::ReplaceWritable);
    for (const char* name : {"copy", "copy/inner", "copy/inner/deep", "copy/source", "merged/inner",
                             "merged/inner/deep", "moved", "moved/inner", "moved/source"}) {
        EXPECT_EQ(attributeOf(other_ / name, accessList), "") << name;
        EXPECT_EQ(attributeOf(other_ / name, defaultList), "") << name;
    }
}

TEST_F(PermissionTest, AccessListsOfTheSourceAreKept) {
    for (const char* attribute : {accessList, defaultList})
        setAccessListForOneUser(folder_, attribute);
    setAccessListForOneUser(source_, accessList);
    folderAt(folder_).copyFolder(folderAt(copy_), provider::ReplaceWritable);
    for (const char* attribute : {accessList, defaultList}) {
        EXPECT_NE(attributeOf(copy_, attribute), "");
        EXPECT_EQ(attributeOf(copy_, attribute), attributeOf(folder_, attribute));
    }
    EXPECT_NE(attributeOf(copy_ / "source", accessList), "");
    EXPECT_EQ(attributeOf(copy_ / "source", accessList), attributeOf(source_, accessList));
}

TEST_F(PermissionTest, BitsThatLendRightsAreKeptWithTheOwnerOnly) {
    ASSERT_EQ(::chmod(source_.c_str(), 06755), 0);
    fileAt(source_).copyFile(fileAt(copy_), provider::ReplaceWritable);
    EXPECT_EQ(bitsOf(copy_), 06755U);

    // In a name space of its own the superuser of the tests may not give files away.
    const bool isOfAnother = ::chown(source_.c_str(), 1234, 4321) == 0;
    ASSERT_EQ(::chmod(source_.c_str(), 06755), 0);
    fileAt(source_).copyFile(fileAt(copy_), provider::ReplaceAny);
    EXPECT_EQ(statusOf(copy_).st_uid, ::geteuid());
    EXPECT_EQ(bitsOf(copy_), isOfAnother ? 0755U : 06755U);
}

TEST_F(PermissionTest, MoveToAnotherDiskKeepsOwnersWhereItMay) {
    ::chown(source_.c_str(), 1234, 4321);
    ::chown(folder_.c_str(), 1234, 4321);
    ASSERT_EQ(::chmod(source_.c_str(), 04750), 0);
    const struct ::stat before = statusOf(source_);
    folderAt(folder_).moveFolder(folderAt(copy_), provider::ReplaceWritable);
    for (const fs::path& moved : {copy_, copy_ / "source"}) {
        EXPECT_EQ(statusOf(moved).st_uid, before.st_uid);
        EXPECT_EQ(statusOf(moved).st_gid, before.st_gid);
    }
    EXPECT_EQ(bitsOf(copy_ / "source"), 04750U);
}

TEST_F(PermissionTest, OrdinaryUserCopiesAReadOnlyFileWithItsAttributes) {
    fs::permissions(workDisk().parent_path(), fs::perms(0711));
    ASSERT_EQ(::chmod(other_.c_str(), 0777), 0);
    const bool hasAttributes = ::setxattr(source_.c_str(), "user.colour", "red", 3, 0) == 0;
    ASSERT_EQ(::chmod(source_.c_str(), 0444), 0);
    {
        const OrdinaryUser user;
        fileAt(source_).copyFile(fileAt(copy_), provider::ReplaceWritable);
        fileAt(source_).copyFile(fileAt(other_ / "second"), provider::ReplaceWritable);
        fileAt(other_ / "second").moveFile(fileAt(copy_), provider::ReplaceAny);
    }
    EXPECT_EQ(contentOf(copy_), "content");
    EXPECT_EQ(bitsOf(copy_), 0444U);
    char value[8] = {};
    const ssize_t length = ::getxattr(copy_.c_str(), "user.colour", value, sizeof value);
    EXPECT_EQ(std::string(value, length < 0 ? 0 : static_cast<std::size_t>(length)),
              hasAttributes ? "red" : "");
}

TEST_F(PermissionTest, AccessListThatDoesNotArriveOpensNothing) {
    setAccessListForOneUser(source_, accessList);
    setAccessListForOneUser(folder_, accessList);
    ASSERT_EQ(bitsOf(source_), 0770U);
    {
        WatchedCalls watched;
        watched.fail(SystemCall::setAttribute, EOPNOTSUPP);
        folderAt(folder_).copyFolder(folderAt(copy_), provider::ReplaceWritable);
    }
    EXPECT_EQ(bitsOf(copy_), 0700U);
    EXPECT_EQ(bitsOf(copy_ / "source"), 0700U);
}

}  // namespace
}  // namespace korvex::tests
