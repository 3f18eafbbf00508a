// Folders that go onto folders, and what meets there.
#include "tests/contract/writing_contract.h"

namespace korvex::tests {
namespace {

using ::testing::ElementsAre;

class WritingMerges : public WritingContract {
protected:
    /// Both have a folder "shared" with a file of one name, and something of their own.
    void makeTrees() {
        provider_->makeFile(u"source/shared/both", "new");
        provider_->makeFile(u"source/shared/mine", "new");
        provider_->makeFile(u"source/only/mine", "new");
        provider_->makeFile(u"target/shared/both", "old");
        provider_->makeFile(u"target/shared/yours", "old");
        provider_->makeFolder(u"target/yours");
    }
    const std::vector<std::string> merged_{"only/",           "shared/",         "yours/",
                                           "shared/both=new", "shared/mine=new", "shared/yours=old",
                                           "only/mine=new"};
};

INSTANTIATE_TEST_SUITE_P(Contract, WritingMerges, testing::ValuesIn(providersWith(&Abilities::canWrite)),
                         nameOfProvider);

TEST_P(WritingMerges, ACopyPutsItsContentsIntoTheFolderThatIsThere) {
    for (const ReplacementPolicy policy : mergingPolicies) {
        makeTrees();
        copyFolder(u"source", u"target", policy);
        EXPECT_THAT(tree(u"target"), ::testing::UnorderedElementsAreArray(merged_));
        EXPECT_EQ(contentOf(u"source/shared/both"), "new");
        folderHandle(u"target").removeFolder(vfs::RemoveWithContents);
    }
}

TEST_P(WritingMerges, AMovePutsItsContentsThereAndTheSourceIsGone) {
    for (const ReplacementPolicy policy : mergingPolicies) {
        makeTrees();
        moveFolder(u"source", u"target", policy);
        EXPECT_THAT(tree(u"target"), ::testing::UnorderedElementsAreArray(merged_));
        expectNothing(u"source");
        folderHandle(u"target").removeFolder(vfs::RemoveWithContents);
    }
}

TEST_P(WritingMerges, AFolderThatIsThereIsLeftAloneWhenOnlyFilesMayBeReplaced) {
    makeTrees();
    provider_->makeFolder(u"empty");
    const auto before = tree(u"");
    for (const std::u16string destination : {u"target", u"empty"}) {
        expectError(vfs::resourceAlreadyExists, destination,
                    [&] { copyFolder(u"source", destination, ReplaceWritable); });
        expectError(vfs::resourceAlreadyExists, destination,
                    [&] { moveFolder(u"source", destination, ReplaceWritable); });
    }
    EXPECT_EQ(tree(u""), before);
}

TEST_P(WritingMerges, AReadOnlyFileInTheWayStopsACarefulMerge) {
    makeTrees();
    protect(u"target/shared/both");
    expectError(vfs::permissionDenied, u"target/shared/both",
                [&] { copyFolder(u"source", u"target", MergeFolder); });
    expectError(vfs::permissionDenied, u"target/shared/both",
                [&] { moveFolder(u"source", u"target", MergeFolder); });
    EXPECT_EQ(contentOf(u"target/shared/both"), "old");
    EXPECT_EQ(contentOf(u"source/shared/both"), "new");
}

TEST_P(WritingMerges, AReadOnlyFileInTheWayIsReplacedWhenAnyFileMayBe) {
    makeTrees();
    protect(u"target/shared/both");
    copyFolder(u"source", u"target", ReplaceAny);
    EXPECT_EQ(contentOf(u"target/shared/both"), "new");
    provider_->makeFile(u"second/shared/both", "newer");
    protect(u"target/shared/both");
    moveFolder(u"second", u"target", ReplaceAny);
    EXPECT_EQ(contentOf(u"target/shared/both"), "newer");
}

TEST_P(WritingMerges, AFolderDoesNotReplaceAFileFurtherDown) {
    provider_->makeFile(u"source/name/file", "new");
    provider_->makeFile(u"target/name", "old");
    for (const ReplacementPolicy policy : mergingPolicies) {
        expectError(vfs::resourceAlreadyExists, u"target/name",
                    [&] { copyFolder(u"source", u"target", policy); });
        expectError(vfs::resourceAlreadyExists, u"target/name",
                    [&] { moveFolder(u"source", u"target", policy); });
    }
    EXPECT_THAT(tree(u"source"), ElementsAre("name/", "name/file=new"));
    EXPECT_THAT(tree(u"target"), ElementsAre("name=old"));
}

TEST_P(WritingMerges, AFileDoesNotReplaceAFolderFurtherDown) {
    provider_->makeFile(u"source/name", "new");
    provider_->makeFile(u"target/name/file", "old");
    for (const ReplacementPolicy policy : mergingPolicies) {
        expectError(vfs::resourceAlreadyExists, u"target/name",
                    [&] { copyFolder(u"source", u"target", policy); });
        expectError(vfs::resourceAlreadyExists, u"target/name",
                    [&] { moveFolder(u"source", u"target", policy); });
    }
    EXPECT_THAT(tree(u"source"), ElementsAre("name=new"));
    EXPECT_THAT(tree(u"target"), ElementsAre("name/", "name/file=old"));
}

TEST_P(WritingMerges, AFolderMayGoIntoTheOneAboveIt) {
    provider_->makeFile(u"outer/inner/file", "content");
    provider_->makeFile(u"outer/neighbour", "content");
    copyFolder(u"outer/inner", u"outer", MergeFolder);
    EXPECT_THAT(tree(u"outer"),
                ElementsAre("file=content", "inner/", "neighbour=content", "inner/file=content"));
    moveFolder(u"outer/inner", u"outer", MergeFolder);
    EXPECT_THAT(tree(u"outer"), ElementsAre("file=content", "neighbour=content"));
}

TEST_P(WritingMerges, AFolderThatWouldHaveToStayAndGoIsLeftWhereItIs) {
    provider_->makeFile(u"outer/inner/a", "content");
    provider_->makeFile(u"outer/inner/inner/deep/file", "content");
    provider_->makeFile(u"outer/inner/outer/inner/file", "content");
    const auto before = tree(u"");
    for (const ReplacementPolicy policy : mergingPolicies) {
        expectError(vfs::invalidLocation, u"outer/inner",
                    [&] { moveFolder(u"outer/inner", u"outer", policy); });
        expectError(vfs::invalidLocation, u"outer/../outer/inner",
                    [&] { moveFolder(u"outer/./inner", u"outer/../outer", policy); });
        // Further down the two would meet as well.
        expectError(vfs::invalidLocation, u"outer/inner", [&] { moveFolder(u"outer/inner", u"", policy); });
    }
    EXPECT_EQ(tree(u""), before);
}

}  // namespace
}  // namespace korvex::tests
