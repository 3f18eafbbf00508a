// Many files at once: copies that are made ahead come out as copies made one after another, and the first
// unwritable item is found as if each were asked for.
#include "platform/many_files.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/path_management.h"
#include "runtime/interpreter/interrupts.h"
#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
namespace interpreter = korvex::runtime::interpreter;

constexpr std::size_t count = 400;

class ManyFilesTest : public testing::Test {
protected:
    using Pairs = std::vector<std::pair<vfs::File, vfs::File>>;

    ManyFilesTest() {
        for (std::size_t i = 0; i < count; ++i)
            scratch_.writeFile("s/" + nameOf(i), contentFor(i));
        fs::create_directory(target_);
    }
    ~ManyFilesTest() override { interpreter::takeInterrupt(); }

    static std::string nameOf(std::size_t i) { return std::to_string(1000 + i); }
    static std::string contentFor(std::size_t i) { return "content of " + std::to_string(i); }
    vfs::File at(const fs::path& path) const {
        return {Velquist::PathManagement::GetIRIFromString(path.u16string()),
                Velquist::KorvexStorageSystem::GetStorageSystemReference()};
    }
    /// As a listing gives them, in the order of their names, each to the file of its name.
    Pairs pairs() const {
        Pairs files;
        const vfs::Folder source(at(scratch_.path() / "s").getLocation(),
                                 Velquist::KorvexStorageSystem::GetStorageSystemReference());
        for (const vfs::ListEntry& entry : source.listAll(u""))
            files.emplace_back(boost::get<vfs::File>(entry.getFileOrFolder()),
                               at(target_ / entry.getLocation().getName()));
        return files;
    }
    static std::vector<std::pair<const vfs::File*, const vfs::File*>> pointersTo(const Pairs& files) {
        std::vector<std::pair<const vfs::File*, const vfs::File*>> pointers;
        for (const auto& [source, target] : files)
            pointers.emplace_back(&source, &target);
        return pointers;
    }
    std::size_t entriesInTarget() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(target_), {}));
    }
    std::string contentOf(std::size_t i) const {
        std::ifstream file(target_ / nameOf(i));
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// Copies from the first file on until one fails: the number of copies, and the code.
    std::pair<std::size_t, int> copyAll(const Pairs& files) const {
        std::size_t copied = 0;
        try {
            for (const auto& [source, target] : files) {
                source.copyFile(target, provider::ReplaceWritable);
                ++copied;
            }
        } catch (const vfs::Exception& failure) {
            return {copied, failure.getErrorCode()};
        }
        return {copied, -1};
    }
    /// Until other threads have made some files; with a single processor there are none.
    void awaitCopiesAhead(std::size_t files) const {
        while (std::thread::hardware_concurrency() > 1 && entriesInTarget() < files)
            std::this_thread::yield();
    }

    korvex::tests::ScratchFolder scratch_;
    const fs::path target_ = scratch_.path() / "t";
};

TEST_F(ManyFilesTest, CopiesThatAreAskedForAreThere) {
    const Pairs files = pairs();
    const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
    for (std::size_t i = 0; i < count; ++i) {
        files[i].first.copyFile(files[i].second, provider::ReplaceWritable);
        ASSERT_EQ(contentOf(i), contentFor(i));
    }
    EXPECT_EQ(entriesInTarget(), count);
}

TEST_F(ManyFilesTest, WhatIsNotAskedForIsGoneInTheEnd) {
    const Pairs files = pairs();
    {
        const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
        for (std::size_t i = 0; i < 3; ++i)
            files[i].first.copyFile(files[i].second, provider::ReplaceWritable);
        awaitCopiesAhead(20);
    }
    EXPECT_EQ(entriesInTarget(), 3U);
}

TEST_F(ManyFilesTest, WhatSomebodyChangedMeanwhileStays) {
    const Pairs files = pairs();
    {
        const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
        awaitCopiesAhead(20);
        std::ofstream(target_ / nameOf(5)) << "theirs";
        fs::remove(target_ / nameOf(6));
        std::ofstream(target_ / nameOf(6)) << contentFor(6);
    }
    EXPECT_EQ(entriesInTarget(), 2U);
    EXPECT_EQ(contentOf(5), "theirs");
    EXPECT_EQ(contentOf(6), contentFor(6));
}

TEST_F(ManyFilesTest, ProtectedFileStopsWhereItStands) {
    std::ofstream(target_ / nameOf(50)) << "old";
    ASSERT_EQ(::chmod((target_ / nameOf(50)).c_str(), 0444), 0);
    const Pairs files = pairs();
    {
        const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
        EXPECT_EQ(copyAll(files), (std::pair{std::size_t{50}, int{vfs::permissionDenied}}));
    }
    EXPECT_EQ(contentOf(50), "old");
    EXPECT_EQ(entriesInTarget(), 51U);
}

TEST_F(ManyFilesTest, FilesThatStandThereAreReplaced) {
    for (const std::size_t i : {0U, 50U, 51U, 399U})
        std::ofstream(target_ / nameOf(i)) << "old";
    const Pairs files = pairs();
    const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
    EXPECT_EQ(copyAll(files), (std::pair{count, -1}));
    for (std::size_t i = 0; i < count; ++i)
        ASSERT_EQ(contentOf(i), contentFor(i));
}

TEST_F(ManyFilesTest, LinkToWhatIsStillToComeIsMetAsALinkToNothing) {
    fs::create_symlink(nameOf(60), target_ / nameOf(2));
    const Pairs files = pairs();
    {
        const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
        awaitCopiesAhead(20);
        EXPECT_EQ(copyAll(files), (std::pair{std::size_t{2}, int{vfs::resourceAlreadyExists}}));
    }
    EXPECT_EQ(entriesInTarget(), 3U);
}

TEST_F(ManyFilesTest, InterruptStopsAndLeavesWhatWasAskedFor) {
    const Pairs files = pairs();
    {
        const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
        for (std::size_t i = 0; i < 7; ++i)
            files[i].first.copyFile(files[i].second, provider::ReplaceWritable);
        interpreter::raiseInterrupt();
        EXPECT_THROW(files[7].first.copyFile(files[7].second, provider::ReplaceWritable), vfs::Exception);
    }
    EXPECT_EQ(entriesInTarget(), 7U);
}

TEST_F(ManyFilesTest, OtherCopyThanWasSaidEndsTheWork) {
    const Pairs files = pairs();
    const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
    awaitCopiesAhead(20);
    files[9].first.copyFile(files[9].second, provider::ReplaceWritable);
    EXPECT_EQ(entriesInTarget(), 1U);
    EXPECT_EQ(copyAll(files), (std::pair{count, -1}));
    EXPECT_EQ(entriesInTarget(), count);
}

TEST_F(ManyFilesTest, LargeFilesAmongThemAreCopiedToo) {
    const std::string large(3 << 20, 'x');
    for (const std::size_t i : {10U, 11U, 200U})
        scratch_.writeFile("s/" + nameOf(i), large);
    scratch_.writeFile("s/" + nameOf(20), std::string(70'000, 'y'));
    const Pairs files = pairs();
    const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
    EXPECT_EQ(copyAll(files), (std::pair{count, -1}));
    for (const std::size_t i : {10U, 11U, 200U})
        EXPECT_EQ(contentOf(i), large);
    EXPECT_EQ(contentOf(20).size(), 70'000U);
}

TEST_F(ManyFilesTest, SourceThatIsGoneIsToldInItsTurn) {
    const Pairs files = pairs();
    fs::remove(scratch_.path() / "s" / nameOf(30));
    {
        const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
        EXPECT_EQ(copyAll(files), (std::pair{std::size_t{30}, int{vfs::resourceNotFound}}));
    }
    EXPECT_EQ(entriesInTarget(), 30U);
}

TEST_F(ManyFilesTest, SourceThatLeadsToWhatIsStillToComeIsCopiedInItsTurn) {
    // Each links to the copy of the one before it: whole by then, and to be read as a whole.
    for (std::size_t i = 1; i < count; i += 2) {
        fs::remove(scratch_.path() / "s" / nameOf(i));
        fs::create_symlink("../t/" + nameOf(i - 1), scratch_.path() / "s" / nameOf(i));
    }
    const Pairs files = pairs();
    const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
    EXPECT_EQ(copyAll(files), (std::pair{count, -1}));
    for (std::size_t i = 1; i < count; i += 2)
        ASSERT_EQ(contentOf(i), contentFor(i - 1));
}

TEST_F(ManyFilesTest, SourceThatLeadsNowhereYetIsToldSo) {
    fs::remove(scratch_.path() / "s" / nameOf(10));
    fs::create_symlink("../t/" + nameOf(11), scratch_.path() / "s" / nameOf(10));
    const Pairs files = pairs();
    {
        const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
        awaitCopiesAhead(10);
        EXPECT_EQ(copyAll(files), (std::pair{std::size_t{10}, int{vfs::resourceNotFound}}));
    }
    EXPECT_EQ(entriesInTarget(), 10U);
}

TEST_F(ManyFilesTest, WithoutFurtherThreadsItGoesAllTheSame) {
    fs::permissions(scratch_.path(), fs::perms(0777));
    fs::permissions(target_, fs::perms(0777));
    std::vector<vfs::Item> items;
    for (int i = 0; i < 3000; ++i)
        items.emplace_back(at(target_ / std::to_string(i)));
    const Pairs files = pairs();
    const pid_t process = ::fork();
    if (process == 0) {
        constexpr ::uid_t nobody = 65534;
        const struct ::rlimit one { 1, 1 };
        if (::geteuid() == 0 && ::setuid(nobody) != 0) ::_exit(1);
        if (::setrlimit(RLIMIT_NPROC, &one) != 0) ::_exit(2);
        if (vfs::firstUnwritable(items, [] {}) != items.size()) ::_exit(3);
        const vfs::CopiesAhead ahead(pointersTo(files), provider::ReplaceWritable);
        ::_exit(copyAll(files) == std::pair{count, -1} ? 0 : 4);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(process, &status, 0), process);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(entriesInTarget(), count);
}

TEST_F(ManyFilesTest, FirstUnwritableIsTheFirstOneInOrder) {
    std::vector<vfs::Item> items;
    for (const auto& [source, target] : pairs())
        items.emplace_back(target);
    const auto firstOf = [&] { return vfs::firstUnwritable(items, [] { ADD_FAILURE(); }); };
    EXPECT_EQ(firstOf(), count);
    for (const std::size_t i : {300U, 40U}) {
        std::ofstream(target_ / nameOf(i)) << "old";
        ASSERT_EQ(::chmod((target_ / nameOf(i)).c_str(), 0444), 0);
        EXPECT_EQ(firstOf(), i);
    }
    std::ofstream(target_ / nameOf(3)) << "writable";
    EXPECT_EQ(firstOf(), 40U);
    fs::permissions(target_, fs::perms(0555));
    EXPECT_EQ(firstOf(), 0U);
    fs::permissions(target_, fs::perms(0755));
}

TEST_F(ManyFilesTest, OfVeryManyItemsTheFirstUnwritableIsFoundInEitherHalf) {
    std::vector<vfs::Item> items;
    for (int i = 0; i < 3000; ++i)
        items.emplace_back(at(target_ / std::to_string(i)));
    EXPECT_EQ(vfs::firstUnwritable(items, [] {}), items.size());
    for (const int i : {2500, 700}) {
        std::ofstream(target_ / std::to_string(i)) << "old";
        ASSERT_EQ(::chmod((target_ / std::to_string(i)).c_str(), 0444), 0);
        EXPECT_EQ(vfs::firstUnwritable(items, [] {}), static_cast<std::size_t>(i));
    }
}

}  // namespace
