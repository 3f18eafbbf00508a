// Pipes, sockets and devices in the way of a merge: they are never replaced, and named where they stand.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <ostream>

#include "runtime/process/posix/file_descriptor.h"
#include "tests/safety/own_mounts.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

void makePipe(const fs::path& path) { ASSERT_EQ(::mkfifo(path.c_str(), 0666), 0); }

void makeSocket(const fs::path& path) {
    const runtime::process::FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    struct ::sockaddr_un address {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.native().size(), sizeof address.sun_path);
    std::strcpy(address.sun_path, path.c_str());
    ASSERT_EQ(::bind(socket.get(), reinterpret_cast<const struct ::sockaddr*>(&address), sizeof address), 0);
}

/// In a name space of its own the superuser of the tests may make no device: then a pipe stands for it.
void makeDevice(const fs::path& path) {
    if (::mknod(path.c_str(), S_IFCHR | 0666, makedev(1, 3)) != 0) makePipe(path);
}

/// What meets the special file, in a folder "inner" of the source.
void putFile(const fs::path& path) { writeContent(path, "content"); }
void putFolder(const fs::path& path) { fs::create_directories(path / "below"); }
void putLink(const fs::path& path) { fs::create_symlink("nothing", path); }

struct Meeting {
    const char* name;
    void (*makeSpecial)(const fs::path&);
    void (*put)(const fs::path&);
};

std::ostream& operator<<(std::ostream& stream, const Meeting& meeting) { return stream << meeting.name; }

class SpecialFileTest : public testing::TestWithParam<Meeting> {
protected:
    ~SpecialFileTest() override {
        fs::remove_all(source_);
        fs::remove_all(workDisk() / "target");
        fs::remove_all(otherDisk() / "target");
    }
    const fs::path source_ = workDisk() / "special";
};

INSTANTIATE_TEST_SUITE_P(Meetings, SpecialFileTest,
                         testing::Values(Meeting{"FileOnPipe", makePipe, putFile},
                                         Meeting{"FolderOnPipe", makePipe, putFolder},
                                         Meeting{"LinkOnPipe", makePipe, putLink},
                                         Meeting{"PipeOnPipe", makePipe, makePipe},
                                         Meeting{"FileOnSocket", makeSocket, putFile},
                                         Meeting{"FolderOnSocket", makeSocket, putFolder},
                                         Meeting{"FileOnDevice", makeDevice, putFile},
                                         Meeting{"FolderOnDevice", makeDevice, putFolder}),
                         [](const auto& tested) { return tested.param.name; });

TEST_P(SpecialFileTest, StopsAMergeAndIsNamed) {
    fs::create_directories(source_ / "inner");
    GetParam().put(source_ / "inner" / "name");
    for (const fs::path& disk : {workDisk(), otherDisk()}) {
        const fs::path target = disk / "target";
        fs::create_directories(target / "inner");
        GetParam().makeSpecial(target / "inner" / "name");
        const fs::file_type kind = fs::symlink_status(target / "inner" / "name").type();
        for (const auto policy : {provider::ReplaceAny, provider::MergeFolder}) {
            for (const bool isCopy : {true, false}) {
                fs::path where;
                EXPECT_EQ(codeRaisedBy(
                              [&] {
                                  isCopy ? folderAt(source_).copyFolder(folderAt(target), policy)
                                         : folderAt(source_).moveFolder(folderAt(target), policy);
                              },
                              &where),
                          vfs::resourceAlreadyExists);
                EXPECT_EQ(where, target / "inner" / "name");
                EXPECT_EQ(fs::symlink_status(target / "inner" / "name").type(), kind);
                EXPECT_TRUE(fs::exists(fs::symlink_status(source_ / "inner" / "name")));
            }
        }
    }
}

}  // namespace
}  // namespace korvex::tests
