// What local copies ask of the file systems that they meet, and the times that they carry.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <limits>

#include "platform/path_management.h"
#include "runtime/storage/providers/local/posix/copy_abilities.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"
#include "runtime/storage/providers/local/posix/local_times.h"
#include "runtime/storage/providers/local/tree_listing.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::storage::posix {
namespace {

using Limits = std::numeric_limits<std::int64_t>;

struct OpenFile {
    explicit OpenFile(const std::string& path) : file(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        EXPECT_EQ(::fstat(file.get(), &status), 0) << path;
    }
    FileDescriptor file;
    struct ::stat status {};
};

TEST(CopyAbilitiesTest, EachDeviceHasItsOwn) {
    const tests::ScratchFolder scratch;
    const OpenFile made(scratch.writeFile("file").string());
    const OpenFile madeUp("/proc/self/status");
    AbilitiesOfDevices devices;
    CopyAbilities& onDisk = devices.of(made.file.get(), made.status.st_dev);
    CopyAbilities& onProc = devices.of(madeUp.file.get(), madeUp.status.st_dev);
    onProc.hasExtendedAttributes = false;
    EXPECT_FALSE(onProc.tellsSizes);
    EXPECT_TRUE(onDisk.hasExtendedAttributes);
    EXPECT_EQ(&devices.of(made.file.get(), made.status.st_dev), &onDisk);
    EXPECT_EQ(&devices.of(madeUp.file.get(), madeUp.status.st_dev), &onProc);
}

TEST(LocalTimesTest, NanosecondsAndBackAgain) {
    for (const struct timespec time :
         {timespec{0, 0}, timespec{-5, 250'000'000}, timespec{-1, 999'999'999}, timespec{1'700'000'000, 1}}) {
        const struct timespec back = timeOf(nanosecondsOf(time));
        EXPECT_EQ(back.tv_sec, time.tv_sec);
        EXPECT_EQ(back.tv_nsec, time.tv_nsec);
    }
}

TEST(LocalTimesTest, TimesThatDoNotFitBecomeTheFirstOrTheLast) {
    EXPECT_EQ(nanosecondsOf({std::int64_t{1} << 34, 0}), Limits::max());
    EXPECT_EQ(nanosecondsOf({-(std::int64_t{1} << 34), 0}), Limits::min());
    EXPECT_EQ(nanosecondsOf({Limits::max(), 999'999'999}), Limits::max());
    EXPECT_EQ(nanosecondsOf({Limits::min(), 0}), Limits::min());
    EXPECT_EQ(timeOf(Limits::min()).tv_sec, -9'223'372'037);
    EXPECT_EQ(timeOf(Limits::min()).tv_nsec, 145'224'192);
    EXPECT_EQ(timeOf(Limits::max()).tv_sec, 9'223'372'036);
}

TEST(LocalTimesTest, FarTimesAreListedAndCarriedAsTheLastThatFits) {
    namespace vfs = foundation::storage::vfs;
    const tests::ScratchFolder scratch;
    const std::string path = scratch.writeFile("tree/file", "x").string();
    const struct timespec times[2] = {{0, UTIME_OMIT}, {std::int64_t{1} << 34, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    // Some file systems know no such time themselves.
    const std::int64_t expected = nanosecondsOf(OpenFile(path).status.st_mtim);
    const auto at = [&](const char* name) {
        return Velquist::PathManagement::GetIRIFromString((scratch.path() / name).u16string());
    };

    std::optional<std::int64_t> listed;
    listLocalTree(at("tree"), [&](const auto&, auto&& entries) { listed = entries.at(0).modified; });
    EXPECT_EQ(listed, expected);
    const vfs::StorageSystemReference storage = Velquist::KorvexStorageSystem::GetStorageSystemReference();
    const vfs::File between(vfs::AbsoluteIRI(u"memory://far-times/file"), storage);
    namespace provider = foundation::storage::provider;
    vfs::File(at("tree/file"), storage).copyFile(between, provider::ReplaceAny);
    between.moveFile(vfs::File(at("copy"), storage), provider::ReplaceAny);
    EXPECT_EQ(OpenFile((scratch.path() / "copy").string()).status.st_mtim.tv_sec, timeOf(expected).tv_sec);
}

}  // namespace
}  // namespace korvex::runtime::storage::posix
