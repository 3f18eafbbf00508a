// Who may get at a copied file, and whose it is: at its end and on the way there.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/safety/own_mounts.h"
#include "tests/safety/system_calls.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

struct ::stat statusOf(const fs::path& path) {
    struct ::stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
}

mode_t bitsOf(const fs::path& path) { return statusOf(path).st_mode & 07777; }

bool hasAttribute(const fs::path& path, const char* name) {
    return ::getxattr(path.c_str(), name, nullptr, 0) >= 0;
}

/// Lets one more user read and write, in the form in which the system keeps an access list.
void setAccessList(const fs::path& path, const char* name) {
    struct Entry {
        std::uint16_t tag;
        std::uint16_t permissions;
        std::uint32_t id;
    };
    constexpr std::uint32_t version = 2;
    constexpr std::uint32_t nobody = 0xFFFFFFFF;
    const Entry entries[] = {
        {0x01, 7, nobody}, {0x02, 7, ::geteuid()}, {0x04, 0, nobody}, {0x10, 7, nobody}, {0x20, 0, nobody}};
    std::array<char, sizeof version + sizeof entries> list{};
    std::memcpy(list.data(), &version, sizeof version);
    std::memcpy(list.data() + sizeof version, entries, sizeof entries);
    EXPECT_EQ(::setxattr(path.c_str(), name, list.data(), list.size(), 0), 0);
}

constexpr const char* ofFile = "system.posix_acl_access";
constexpr const char* ofNewEntries = "system.posix_acl_default";

class FilePermissionTest : public testing::Test {
protected:
    FilePermissionTest() {
        for (const fs::path& folder : {folder_, other_})
            fs::create_directories(folder);
        writeContent(source_, "content");
    }
    ~FilePermissionTest() override {
        fs::remove_all(folder_);
        fs::remove_all(other_);
    }

    /// The file on the storage that the memory provides.
    vfs::File inMemory() const {
        const vfs::File file(vfs::AbsoluteIRI(u"memory://file-permission/file"),
                             Velquist::KorvexStorageSystem::GetStorageSystemReference());
        fileAt(source_).copyFile(file, provider::ReplaceAny);
        return file;
    }
    /// The only other entry of the folder of the copy.
    fs::path unfinished() const {
        for (const fs::directory_entry& entry : fs::directory_iterator(other_))
            if (entry.path() != copy_) return entry.path();
        return {};
    }

    const fs::path folder_ = workDisk() / "file-permission";
    const fs::path other_ = otherDisk() / "file-permission";
    const fs::path source_ = folder_ / "source";
    const fs::path copy_ = other_ / "copy";
};

TEST_F(FilePermissionTest, CopyHasNoAccessListThatItsSourceHasNot) {
    setAccessList(other_, ofNewEntries);
    writeContent(other_ / "made", "");
    ASSERT_TRUE(hasAttribute(other_ / "made", ofFile));
    for (const mode_t bits : {0640U, 0660U, 0664U, 0754U, 0644U, 0600U}) {
        ASSERT_EQ(::chmod(source_.c_str(), bits), 0);
        fileAt(source_).copyFile(fileAt(copy_), provider::ReplaceAny);
        EXPECT_FALSE(hasAttribute(copy_, ofFile));
        EXPECT_EQ(bitsOf(copy_), bits);
    }
    ASSERT_EQ(::chmod(folder_.c_str(), 0750), 0);
    folderAt(folder_).copyFolder(folderAt(other_ / "tree"), provider::ReplaceWritable);
    EXPECT_FALSE(hasAttribute(other_ / "tree", ofFile));
    EXPECT_FALSE(hasAttribute(other_ / "tree", ofNewEntries));
    EXPECT_FALSE(hasAttribute(other_ / "tree" / "source", ofFile));
    EXPECT_EQ(bitsOf(other_ / "tree"), 0750U);
}

TEST_F(FilePermissionTest, CopyHasTheAccessListOfItsSource) {
    setAccessList(source_, ofFile);
    setAccessList(folder_, ofNewEntries);
    fileAt(source_).copyFile(fileAt(copy_), provider::ReplaceAny);
    EXPECT_TRUE(hasAttribute(copy_, ofFile));
    folderAt(folder_).copyFolder(folderAt(other_ / "tree"), provider::ReplaceWritable);
    EXPECT_TRUE(hasAttribute(other_ / "tree", ofNewEntries));
    EXPECT_TRUE(hasAttribute(other_ / "tree" / "source", ofFile));
}

TEST_F(FilePermissionTest, NobodyElseReadsACopyOnTheWay) {
    setAccessList(other_, ofNewEntries);
    ASSERT_EQ(::chmod(source_.c_str(), 0640), 0);
    mode_t bits = 0777;
    WatchedCalls watched;
    watched.before(SystemCall::read, [&] { bits = bitsOf(copy_); });
    fileAt(source_).copyFile(fileAt(copy_), provider::ReplaceWritable);
    // The group's bits are what an access list gives at most.
    EXPECT_EQ(bits & 0077, 0U);
    EXPECT_EQ(bitsOf(copy_), 0640U);
}

TEST_F(FilePermissionTest, NobodyElseReadsAStreamOnTheWay) {
    writeContent(copy_, "old");
    ASSERT_EQ(::chmod(copy_.c_str(), 0640), 0);
    mode_t bits = 0777;
    WatchedCalls watched;
    watched.before(SystemCall::changeBits, [&] { bits = bitsOf(unfinished()); });
    const vfs::File file = inMemory();
    file.copyFile(fileAt(copy_), provider::ReplaceWritable);
    EXPECT_EQ(bits, 0600U);
    EXPECT_EQ(bitsOf(copy_), 0640U);
    file.removeFile();
}

TEST_F(FilePermissionTest, StreamHandsOwnerAndAccessListOfTheOldFileOn) {
    const vfs::File file = inMemory();
    writeContent(copy_, "old");
    setAccessList(copy_, ofFile);
    ::chown(copy_.c_str(), 1234, 4321);
    const struct ::stat before = statusOf(copy_);
    file.copyFile(fileAt(copy_), provider::ReplaceWritable);
    EXPECT_EQ(contentOf(copy_), "content");
    EXPECT_TRUE(hasAttribute(copy_, ofFile));
    EXPECT_EQ(statusOf(copy_).st_mode, before.st_mode);
    EXPECT_EQ(statusOf(copy_).st_uid, before.st_uid);
    EXPECT_EQ(statusOf(copy_).st_gid, before.st_gid);
    ASSERT_EQ(::removexattr(copy_.c_str(), ofFile), 0);
    setAccessList(other_, ofNewEntries);
    file.copyFile(fileAt(copy_), provider::ReplaceWritable);
    EXPECT_FALSE(hasAttribute(copy_, ofFile));
    file.removeFile();
}

TEST_F(FilePermissionTest, WritableFileThatReplacesAReadOnlyOneIsWritable) {
    const vfs::File file = inMemory();
    writeContent(copy_, "old");
    ASSERT_EQ(::chmod(copy_.c_str(), 0444), 0);
    file.copyFile(fileAt(copy_), provider::ReplaceAny);
    EXPECT_EQ(bitsOf(copy_), 0644U);
    file.setWritable(false);
    file.copyFile(fileAt(copy_), provider::ReplaceAny);
    EXPECT_EQ(bitsOf(copy_), 0444U);
    file.removeFile();
}

TEST_F(FilePermissionTest, FileThatIsReplacedKeepsItsOwner) {
    writeContent(copy_, "old");
    // In a name space of its own the superuser of the tests may not give files away.
    ::chown(copy_.c_str(), 1234, 4321);
    const struct ::stat before = statusOf(copy_);
    for (const std::size_t size : {std::size_t{7}, std::size_t{300'000}}) {
        writeContent(source_, std::string(size, 'x'));
        ASSERT_EQ(::chmod(source_.c_str(), 04755), 0);
        fileAt(source_).copyFile(fileAt(copy_), provider::ReplaceAny);
        EXPECT_EQ(fs::file_size(copy_), size);
        EXPECT_EQ(statusOf(copy_).st_uid, before.st_uid);
        EXPECT_EQ(statusOf(copy_).st_gid, before.st_gid);
        EXPECT_EQ(bitsOf(copy_), before.st_uid == ::geteuid() ? 04755U : 0755U);
    }
}

TEST_F(FilePermissionTest, MoveToAnotherDiskKeepsWhatLendsRightsAndWhoseLinksAre) {
    fs::create_symlink("source", folder_ / "link");
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    for (const char* const name : {"source", "link", "pipe"})
        ::lchown((folder_ / name).c_str(), 1234, 4321);
    // The right to bind small ports, in the form in which the system keeps it.
    constexpr std::array<std::uint32_t, 5> capability{0x02000001, 1U << 10, 0, 0, 0};
    ::setxattr(source_.c_str(), "security.capability", capability.data(), sizeof capability, 0);
    const bool isLent = hasAttribute(source_, "security.capability");
    const struct ::stat before = statusOf(source_);

    folderAt(folder_).moveFolder(folderAt(other_ / "moved"), provider::ReplaceWritable);
    for (const char* const name : {"source", "link", "pipe"}) {
        EXPECT_EQ(statusOf(other_ / "moved" / name).st_uid, before.st_uid) << name;
        EXPECT_EQ(statusOf(other_ / "moved" / name).st_gid, before.st_gid) << name;
    }
    EXPECT_EQ(hasAttribute(other_ / "moved" / "source", "security.capability"), isLent);
}

}  // namespace
}  // namespace korvex::tests
