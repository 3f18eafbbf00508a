// How many outputs and arguments each entry takes, and which of several broken limits is reported.
#include <stdexcept>

#include "tests/unit/filemanip/entry_call.h"

namespace korvex::filemanip::tests {
namespace {

constexpr int unlimited = -1;

struct Limits {
    const char* name;
    Entry entry;
    int mostOutputs;
    int fewestArguments;
    int mostArguments;
};

void PrintTo(const Limits& limits, std::ostream* stream) { *stream << limits.name; }

class ArgumentCountsTest : public testing::TestWithParam<Limits> {
protected:
    std::string errorOf(int nlhs, int nrhs) const {
        const Array argument = number(1);
        try {
            return call(GetParam().entry, nlhs,
                        std::vector<const kxArray*>(std::size_t(nrhs), argument.get()))
                .errorIdentifier;
        } catch (const std::runtime_error&) {
            return "";  // past the counts
        }
    }
};

TEST_P(ArgumentCountsTest, TooManyOutputsAreReportedFirst) {
    const Limits& limits = GetParam();
    const int tooMany = limits.mostArguments == unlimited ? 20 : limits.mostArguments + 1;
    EXPECT_EQ(errorOf(limits.mostOutputs + 1, limits.fewestArguments), "KORVEX:maxlhs");
    EXPECT_EQ(errorOf(limits.mostOutputs + 1, tooMany), "KORVEX:maxlhs");
    EXPECT_EQ(errorOf(limits.mostOutputs + 1, 0), "KORVEX:maxlhs");
}

TEST_P(ArgumentCountsTest, TooManyArgumentsAreReported) {
    const Limits& limits = GetParam();
    if (limits.mostArguments == unlimited) {
        EXPECT_NE(errorOf(limits.mostOutputs, 100), "KORVEX:maxrhs");
    } else {
        EXPECT_EQ(errorOf(limits.mostOutputs, limits.mostArguments + 1), "KORVEX:maxrhs");
        EXPECT_NE(errorOf(limits.mostOutputs, limits.mostArguments), "KORVEX:maxrhs");
    }
}

TEST_P(ArgumentCountsTest, TooFewArgumentsAreReported) {
    const Limits& limits = GetParam();
    if (limits.fewestArguments > 0) {
        EXPECT_EQ(errorOf(limits.mostOutputs, limits.fewestArguments - 1), "KORVEX:minrhs");
        EXPECT_EQ(errorOf(0, 0), "KORVEX:minrhs");
    } else {
        EXPECT_NE(errorOf(limits.mostOutputs, 0), "KORVEX:minrhs");
    }
}

INSTANTIATE_TEST_SUITE_P(Entries, ArgumentCountsTest,
                         testing::Values(Limits{"copyFile", copyFile, 3, 1, 5},
                                         Limits{"moveFile", moveFile, 3, 1, 5},
                                         Limits{"makeDir", makeDir, 3, 1, 2},
                                         Limits{"removeDir", removeDir, 3, 1, 4},
                                         Limits{"fileAttrib", fileAttrib, 3, 0, 4},
                                         Limits{"bnFullDeleteFcn", bnFullDeleteFcn, 0, 1, unlimited},
                                         Limits{"bnFullRecycleFcn", bnFullRecycleFcn, 1, 0, 1},
                                         Limits{"bnFullDirFcn", bnFullDirFcn, 1, 0, 1},
                                         Limits{"bnFullWhatFcn", bnFullWhatFcn, 1, 0, unlimited},
                                         Limits{"bnIsFileFcn", bnIsFileFcn, 1, 1, 1},
                                         Limits{"bnIsFolderFcn", bnIsFolderFcn, 1, 1, 1}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ArgumentCountsExampleTest, DeleteWithOneOutputReportsOutputsWhateverItsArguments) {
    EXPECT_EQ(call(bnFullDeleteFcn, 1, {}).errorIdentifier, "KORVEX:maxlhs");
    const Array name = text(u"a");
    EXPECT_EQ(call(bnFullDeleteFcn, 1, {name.get(), name.get()}).errorIdentifier, "KORVEX:maxlhs");
}

TEST(LifecycleTest, InitializeAndTerminateAreThereAndDoNothing) {
    KLInitialize_filemanip();
    KLTerminate_filemanip();
    KLTerminate_filemanip();
    EXPECT_EQ(call(bnIsFileFcn, 1, {text(u"/").get()}).errorIdentifier, "");
}

}  // namespace
}  // namespace korvex::filemanip::tests
