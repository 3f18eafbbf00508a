// A look at an entry of a listing may spare the next one, and must never stand for a file that was protected
// since.
#include "runtime/storage/providers/local/posix/recent_look.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/path_management.h"
#include "runtime/storage/location.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::storage {
namespace {

namespace provider = foundation::storage::provider;

class RecentLookTest : public testing::Test {
protected:
    void SetUp() override { scratch_.writeFile("a"); }

    AbsoluteIRI folder() const { return Velquist::PathManagement::GetIRIFromString(scratch_.text()); }
    AbsoluteIRI byPath(const std::u16string& name) const { return AbsoluteIRI(folder(), name); }
    AbsoluteIRI listed(const std::u16string& name) {
        return foundLocation(folder(), name, local_.list(folder(), name).at(0).found);
    }
    mode_t bitsOf(const char* name) const {
        struct ::stat status {};
        EXPECT_EQ(::stat((scratch_.path() / name).c_str(), &status), 0);
        return status.st_mode & 07777;
    }
    void protect(const char* name) const { ::chmod((scratch_.path() / name).c_str(), 0444); }

    tests::ScratchFolder scratch_;
    LocalProvider local_;
};

TEST_F(RecentLookTest, LookTellsOnce) {
    const AbsoluteIRI entry = listed(u"a");
    bool isTold = false;
    // A process that has to wait for its turn may come too late for one.
    for (int attempt = 0; attempt < 100 && !isTold; ++attempt) {
        EXPECT_EQ(local_.extendedExistence(entry), provider::ExtendedFile);
        isTold = posix::isJustSeenWritable(entry);
    }
    EXPECT_TRUE(isTold);
    EXPECT_FALSE(posix::isJustSeenWritable(entry));
}

TEST_F(RecentLookTest, NothingIsKnownWithoutALook) { EXPECT_FALSE(posix::isJustSeenWritable(listed(u"a"))); }

TEST_F(RecentLookTest, NothingIsKeptOfAPath) {
    const AbsoluteIRI path = byPath(u"a");
    EXPECT_EQ(local_.extendedExistence(path), provider::ExtendedFile);
    EXPECT_FALSE(posix::isJustSeenWritable(path));
}

TEST_F(RecentLookTest, NothingIsKeptOfAProtectedFile) {
    protect("a");
    const AbsoluteIRI entry = listed(u"a");
    EXPECT_EQ(local_.extendedExistence(entry), provider::ExtendedFile);
    local_.setWritable(entry, true);
    EXPECT_EQ(bitsOf("a"), 0644U);
}

TEST_F(RecentLookTest, ProtectionByAnotherLocationSinceTheLookIsTakenOff) {
    const AbsoluteIRI entry = listed(u"a");
    EXPECT_EQ(local_.extendedExistence(entry), provider::ExtendedFile);
    local_.setWritable(byPath(u"a"), false);
    local_.setWritable(entry, true);
    EXPECT_EQ(bitsOf("a") & 0200U, 0200U);
}

TEST_F(RecentLookTest, ProtectedFileThatTookThePlaceSinceTheLookLosesItsProtection) {
    const AbsoluteIRI entry = listed(u"a");
    scratch_.writeFile("b");
    protect("b");
    EXPECT_EQ(local_.extendedExistence(entry), provider::ExtendedFile);
    local_.moveFile(byPath(u"b"), byPath(u"a"), provider::ReplaceAny);
    local_.setWritable(entry, true);
    EXPECT_EQ(bitsOf("a") & 0200U, 0200U);
}

}  // namespace
}  // namespace korvex::runtime::storage
