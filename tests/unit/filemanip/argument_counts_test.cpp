// How many outputs and arguments each entry takes, and which of several broken limits is reported.
#include <stdexcept>

#include "tests/unit/filemanip/entry_call.h"

namespace korvex::filemanip::tests {
namespace {

constexpr int unlimited = -1;
constexpr int manyArguments = 100;

constexpr const char* notOneText = "KORVEX:string";
constexpr const char* notTexts = "KORVEX:string:MustBeCharCellArrayOrString";

struct Limits {
    const char* name;
    Entry entry;
    int mostOutputs;
    int fewestArguments;
    int mostArguments;
    /// What the command says of numbers for arguments, once their count is right.
    const char* afterTheCounts;
};

void PrintTo(const Limits& limits, std::ostream* stream) { *stream << limits.name; }

class ArgumentCountsTest : public testing::TestWithParam<Limits> {
protected:
    /// The identifier of the error, or the text of one that has none.
    std::string errorOf(int nlhs, int nrhs) const {
        const Array argument = number(1);
        try {
            return call(GetParam().entry, nlhs,
                        std::vector<const kxArray*>(std::size_t(nrhs), argument.get()))
                .errorIdentifier;
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }
};

TEST_P(ArgumentCountsTest, TooManyOutputsAreReportedFirst) {
    const Limits& limits = GetParam();
    const int tooMany = limits.mostArguments == unlimited ? manyArguments : limits.mostArguments + 1;
    EXPECT_EQ(errorOf(limits.mostOutputs + 1, limits.fewestArguments), "KORVEX:maxlhs");
    EXPECT_EQ(errorOf(limits.mostOutputs + 1, tooMany), "KORVEX:maxlhs");
    EXPECT_EQ(errorOf(limits.mostOutputs + 1, 0), "KORVEX:maxlhs");
}

TEST_P(ArgumentCountsTest, TooManyArgumentsAreReported) {
    const Limits& limits = GetParam();
    const bool isLimited = limits.mostArguments != unlimited;
    const int most = isLimited ? limits.mostArguments : manyArguments;
    const char* const expected = isLimited ? "KORVEX:maxrhs" : limits.afterTheCounts;
    EXPECT_EQ(errorOf(limits.mostOutputs, most + 1), expected);
    EXPECT_EQ(errorOf(0, most + 1), expected);
}

TEST_P(ArgumentCountsTest, TooFewArgumentsAreReported) {
    const Limits& limits = GetParam();
    const char* const expected = limits.fewestArguments > 0 ? "KORVEX:minrhs" : limits.afterTheCounts;
    EXPECT_EQ(errorOf(limits.mostOutputs, 0), expected);
    EXPECT_EQ(errorOf(0, 0), expected);
}

TEST_P(ArgumentCountsTest, CountsAtTheLimitsReachTheCommand) {
    const Limits& limits = GetParam();
    const int most = limits.mostArguments == unlimited ? manyArguments : limits.mostArguments;
    for (const int nlhs : {0, limits.mostOutputs}) {
        EXPECT_EQ(errorOf(nlhs, limits.fewestArguments), limits.afterTheCounts);
        EXPECT_EQ(errorOf(nlhs, most), limits.afterTheCounts);
    }
}

INSTANTIATE_TEST_SUITE_P(Entries, ArgumentCountsTest,
                         testing::Values(Limits{"copyFile", copyFile, 3, 1, 5, notOneText},
                                         Limits{"moveFile", moveFile, 3, 1, 5, notOneText},
                                         Limits{"makeDir", makeDir, 3, 1, 2, notOneText},
                                         Limits{"removeDir", removeDir, 3, 1, 4, notOneText},
                                         Limits{"bnFullDeleteFcn", bnFullDeleteFcn, 0, 1, unlimited,
                                                "KORVEX:UndefinedFunction"},
                                         Limits{"bnIsFileFcn", bnIsFileFcn, 1, 1, 1, notTexts},
                                         Limits{"bnIsFolderFcn", bnIsFolderFcn, 1, 1, 1, notTexts}),
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
