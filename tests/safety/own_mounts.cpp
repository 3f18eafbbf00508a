// File systems of the test's own, and the main function that mounts them before anything else runs.
#include "tests/safety/own_mounts.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "platform/path_management.h"

namespace korvex::tests {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

/// Without the superuser's rights a process may mount in a name space of its own, where it has them.
void enterOwnNameSpace() {
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    if (::unshare(user == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0) fail("unshare");
    if (user != 0) {
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
        std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    }
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) fail("making the mounts private");
}

fs::path base;
fs::path disks[3];

void mountDisk(fs::path& disk, const char* name, const char* options) {
    disk = base / name;
    fs::create_directory(disk);
    if (::mount("none", disk.c_str(), "tmpfs", 0, options) != 0) fail("mounting a tmpfs");
}

void mountDisks() {
    std::string pattern = (fs::temp_directory_path() / "korvex-safety-").string() + std::string(6, 'X');
    if (::mkdtemp(pattern.data()) == nullptr) fail("making a scratch folder");
    base = pattern;
    enterOwnNameSpace();
    mountDisk(disks[0], "work", "size=512m");
    mountDisk(disks[1], "other", "size=512m");
    mountDisk(disks[2], "small", "size=2m");
}

void unmountDisks() {
    for (const fs::path& disk : disks) {
        ::umount2(disk.c_str(), MNT_DETACH);
    }
    fs::remove_all(base);
}

}  // namespace

const fs::path& workDisk() { return disks[0]; }
const fs::path& otherDisk() { return disks[1]; }
const fs::path& smallDisk() { return disks[2]; }

void setSmallDiskReadOnly(bool isReadOnly) {
    const unsigned long flags = MS_REMOUNT | (isReadOnly ? MS_RDONLY : 0);
    if (::mount("none", smallDisk().c_str(), "tmpfs", flags, "size=2m") != 0) fail("mounting again");
}

int repetitions(const char* variable, int usual) {
    const char* const value = std::getenv(variable);
    return value != nullptr ? std::atoi(value) : usual;
}

vfs::File fileAt(const fs::path& path) {
    return {Velquist::PathManagement::GetIRIFromString(path.u16string()),
            Velquist::KorvexStorageSystem::GetStorageSystemReference()};
}

vfs::Folder folderAt(const fs::path& path) {
    return {Velquist::PathManagement::GetIRIFromString(path.u16string()),
            Velquist::KorvexStorageSystem::GetStorageSystemReference()};
}

std::string contentOf(const fs::path& path) {
    // Through the buffer: character by character a thread sanitizer needs minutes.
    std::ostringstream content;
    const std::ifstream file(path, std::ios::binary);
    if (file) content << file.rdbuf();
    return std::move(content).str();
}

void writeContent(const fs::path& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

}  // namespace korvex::tests

int main(int argc, char* argv[]) {
    testing::InitGoogleTest(&argc, argv);
    try {
        korvex::tests::mountDisks();
    } catch (const std::exception& error) {
        std::cerr << "The safety tests need file systems of their own. " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    const int result = RUN_ALL_TESTS();
    korvex::tests::unmountDisks();
    return result;
}
