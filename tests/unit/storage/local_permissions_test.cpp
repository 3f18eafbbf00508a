// The write bits of local entries, whoever exchanges them meanwhile.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <set>

#include "platform/path_management.h"
#include "runtime/storage/location.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "tests/support/posix/swapping.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::storage {
namespace {

class LocalPermissionsTest : public testing::Test {
protected:
    void makeFile(const char* name, mode_t mode) const {
        ASSERT_EQ(::chmod(scratch_.writeFile(name).c_str(), mode), 0);
    }
    mode_t modeOf(const char* name) const {
        struct ::stat status {};
        EXPECT_EQ(::stat((scratch_.path() / name).c_str(), &status), 0);
        return status.st_mode & 07777;
    }
    AbsoluteIRI folder() const { return Velquist::PathManagement::GetIRIFromString(scratch_.text()); }
    AbsoluteIRI byPath(const std::u16string& name) const { return AbsoluteIRI(folder(), name); }
    AbsoluteIRI listed(const std::u16string& name) {
        return foundLocation(folder(), name, local_.list(folder(), name).at(0).found);
    }

    tests::ScratchFolder scratch_;
    LocalProvider local_;
};

TEST_F(LocalPermissionsTest, TwoFilesThatAreSwappedMeanwhileKeepTheirOwnBits) {
    makeFile("first", 04755);
    makeFile("second", 0640);
    for (const AbsoluteIRI& first : {byPath(u"first"), listed(u"first")}) {
        const tests::Swapping swapping(scratch_.path() / "first", scratch_.path() / "second");
        constexpr int rounds = 5000;
        for (int round = 0; round < rounds; ++round)
            for (const bool isWritable : {false, true})
                local_.setWritable(first, isWritable);
    }
    const std::set<mode_t> bits = {modeOf("first") & ~0222U, modeOf("second") & ~0222U};
    EXPECT_EQ(bits, (std::set<mode_t>{04555, 0440}));
}

TEST_F(LocalPermissionsTest, AFileThatNobodyMayReadIsProtectedAndFreed) {
    makeFile("file", 0200);
    local_.setWritable(byPath(u"file"), false);
    EXPECT_EQ(modeOf("file"), 0U);
    local_.setWritable(listed(u"file"), true);
    EXPECT_EQ(modeOf("file"), 0200U);
}

TEST_F(LocalPermissionsTest, ALinkIsFollowedByPathAndLeftAloneInAListing) {
    makeFile("file", 0644);
    std::filesystem::create_symlink("file", scratch_.path() / "link");
    local_.setWritable(listed(u"link"), false);
    EXPECT_EQ(modeOf("file"), 0644U);
    local_.setWritable(byPath(u"link"), false);
    EXPECT_EQ(modeOf("file"), 0444U);
}

}  // namespace
}  // namespace korvex::runtime::storage
