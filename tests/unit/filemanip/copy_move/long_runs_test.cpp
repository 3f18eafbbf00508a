// Long runs of files, for which several may be copied at a time: the outcome is that of one after another.
#include <filesystem>
#include <fstream>
#include <sstream>

#include "runtime/dispatcher/current_folder.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace fs = std::filesystem;

constexpr int filesInARun = 40;

/// "s" with a run of files "a00", "a01" ..., the folder "b", the link "c", and a run of files "d00" ...; and
/// the empty folder "t".
class LongRunsTest : public testing::TestWithParam<Command> {
protected:
    LongRunsTest() {
        for (int i = 0; i < filesInARun; ++i) {
            scratch_.writeFile("s/" + nameOf('a', i), nameOf('a', i));
            scratch_.writeFile("s/" + nameOf('d', i), nameOf('d', i));
        }
        scratch_.writeFile("s/b/inner", "I");
        fs::create_symlink("b/inner", scratch_.path() / "s/c");
        scratch_.makeFolder("t");
        runtime::dispatcher::setCurrentFolderPath(scratch_.text());
    }
    ~LongRunsTest() override { runtime::dispatcher::setCurrentFolderPath(u"/"); }

    static std::string nameOf(char run, int i) { return run + std::to_string(100 + i); }
    Failure run(const Texts& arguments) { return failureOf(GetParam(), arguments); }
    bool isThere(const std::string& name) const {
        return fs::symlink_status(scratch_.path() / name).type() != fs::file_type::not_found;
    }
    std::string contentOf(const std::string& name) const {
        std::ostringstream content;
        content << std::ifstream(scratch_.path() / name, std::ios::binary).rdbuf();
        return content.str();
    }
    /// The first so many of a run are at the destination, and only they; what was moved is gone.
    void expectDone(char run, int done) const {
        for (int i = 0; i < filesInARun; ++i) {
            const std::string name = nameOf(run, i);
            EXPECT_EQ(isThere("t/" + name), i < done) << name;
            EXPECT_EQ(isThere("s/" + name), GetParam().isCopy || i >= done) << name;
            EXPECT_EQ(contentOf("t/" + name), i < done ? name : "") << name;
        }
    }
    void expectAllDone() const {
        expectDone('a', filesInARun);
        expectDone('d', filesInARun);
        EXPECT_EQ(contentOf("t/b/inner"), "I");
        EXPECT_TRUE(isThere("t/c"));
    }

    korvex::tests::ScratchFolder scratch_;
    EnvironmentObserver environment_;
};

INSTANTIATE_TEST_SUITE_P(CopyMove, LongRunsTest, testing::Values(copyCommand, moveCommand), nameOfCommand);

TEST_P(LongRunsTest, FilesFoldersAndLinksAllArrive) {
    EXPECT_EQ(run({u"s/*", u"t"}), noFailure());
    expectAllDone();
}

TEST_P(LongRunsTest, ForcedRunTakesFilesFoldersAndLinks) {
    EXPECT_EQ(run({u"s/*", u"t", u"f"}), noFailure());
    expectAllDone();
}

TEST_P(LongRunsTest, ForcedRunReplacesWhatIsProtected) {
    for (int i = 0; i < filesInARun; ++i)
        fs::permissions(scratch_.writeFile("t/" + nameOf('a', i), "old"), fs::perms(0444));
    EXPECT_EQ(run({u"s/a*", u"t", u"f"}), noFailure());
    expectDone('a', filesInARun);
}

TEST_P(LongRunsTest, ProtectedTargetStopsTheRunBeforeItBegins) {
    fs::permissions(scratch_.writeFile("t/" + nameOf('d', 35), "old"), fs::perms(0444));
    const std::string identifier = "KORVEX:" + GetParam().word + ":ReadOnly";
    EXPECT_EQ(run({u"s/*", u"t"}).identifier, identifier);
    expectDone('a', 0);
    EXPECT_EQ(contentOf("t/" + nameOf('d', 35)), "old");
}

TEST_P(LongRunsTest, FailureInTheSecondRunKeepsExactlyWhatCameBefore) {
    scratch_.makeFolder("t/" + nameOf('d', 20));
    EXPECT_NE(run({u"s/*", u"t"}), noFailure());
    expectDone('a', filesInARun);
    EXPECT_EQ(contentOf("t/b/inner"), "I");
    for (int i = 0; i < filesInARun; ++i) {
        if (i == 20) continue;
        EXPECT_EQ(isThere("t/" + nameOf('d', i)), i < 20) << i;
    }
}

}  // namespace
}  // namespace korvex::filemanip::tests
