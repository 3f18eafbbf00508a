// What becomes of links: a copy follows the one that is named as its source; otherwise they are what is
// copied, moved and removed.
#include "tests/contract/writing_contract.h"

namespace korvex::tests {
namespace {

using ::testing::ElementsAre;

class WritingLinks : public WritingContract {};

INSTANTIATE_TEST_SUITE_P(Contract, WritingLinks, testing::ValuesIn(providersWith(&Abilities::hasLinks)),
                         nameOfProvider);

TEST_P(WritingLinks, ACopyOfALinkToAFileIsAFile) {
    provider_->makeFile(u"file", "content");
    provider_->makeLink(u"link", u"file");
    copyFile(u"link", u"copy", ReplaceWritable);
    EXPECT_EQ(extendedExistence(u"copy"), provider::ExtendedFile);
    EXPECT_EQ(contentOf(u"copy"), "content");
}

TEST_P(WritingLinks, ACopyOfALinkToAFolderIsAFolder) {
    provider_->makeFile(u"folder/file", "content");
    provider_->makeLink(u"link", u"folder");
    copyFolder(u"link", u"copy", ReplaceWritable);
    EXPECT_EQ(extendedExistence(u"copy"), provider::ExtendedFolder);
    EXPECT_THAT(tree(u"copy"), ElementsAre("file=content"));
}

TEST_P(WritingLinks, ALinkWithoutATargetHasNothingToCopy) {
    provider_->makeLink(u"link", u"absent");
    expectError(vfs::resourceNotFound, u"link", [&] { copyFile(u"link", u"copy", ReplaceWritable); });
    expectError(vfs::resourceNotFound, u"link", [&] { copyFolder(u"link", u"copy", ReplaceWritable); });
    expectNothing(u"copy");
}

TEST_P(WritingLinks, LinksInsideOfAFolderAreCopiedAsLinks) {
    provider_->makeFile(u"source/file", "content");
    provider_->makeLink(u"source/toFile", u"file");
    provider_->makeLink(u"source/toFolder", u"..");
    provider_->makeLink(u"source/broken", u"absent");
    copyFolder(u"source", u"copy", ReplaceWritable);
    EXPECT_EQ(provider_->linkTargetOf(u"copy/toFile"), u"file");
    EXPECT_EQ(provider_->linkTargetOf(u"copy/toFolder"), u"..");
    EXPECT_EQ(provider_->linkTargetOf(u"copy/broken"), u"absent");
}

TEST_P(WritingLinks, AMoveTakesTheLinkAndLeavesItsTarget) {
    provider_->makeFile(u"file", "content");
    provider_->makeFile(u"folder/file", "content");
    provider_->makeLink(u"toFile", u"file");
    provider_->makeLink(u"toFolder", u"folder");
    provider_->makeLink(u"broken", u"absent");
    moveFile(u"toFile", u"movedToFile", ReplaceWritable);
    moveFolder(u"toFolder", u"movedToFolder", ReplaceWritable);
    moveFile(u"broken", u"movedBroken", ReplaceWritable);
    EXPECT_EQ(provider_->linkTargetOf(u"movedToFile"), u"file");
    EXPECT_EQ(provider_->linkTargetOf(u"movedToFolder"), u"folder");
    EXPECT_EQ(provider_->linkTargetOf(u"movedBroken"), u"absent");
    EXPECT_EQ(contentOf(u"file"), "content");
    EXPECT_EQ(contentOf(u"folder/file"), "content");
    EXPECT_EQ(extendedExistence(u"toFile"), provider::ExtendedNothing);
    EXPECT_EQ(extendedExistence(u"toFolder"), provider::ExtendedNothing);
    EXPECT_EQ(extendedExistence(u"broken"), provider::ExtendedNothing);
}

TEST_P(WritingLinks, AMovedFolderHasItsLinksStill) {
    provider_->makeLink(u"source/inner/link", u"../file");
    provider_->makeFolder(u"target/inner");
    moveFolder(u"source", u"target", MergeFolder);
    EXPECT_EQ(provider_->linkTargetOf(u"target/inner/link"), u"../file");
}

TEST_P(WritingLinks, ALinkNeverTakesThePlaceOfWhatItLeadsTo) {
    provider_->makeFile(u"file", "content");
    provider_->makeLink(u"link", u"file");
    for (const auto policy : {ReplaceWritable, ReplaceAny}) {
        expectError(vfs::resourceAlreadyExists, u"file", [&] { moveFile(u"link", u"file", policy); });
        EXPECT_EQ(contentOf(u"file"), "content");
        EXPECT_EQ(provider_->linkTargetOf(u"link"), u"file");
    }
}

TEST_P(WritingLinks, ALinkInAMergedFolderNeverTakesThePlaceOfWhatItLeadsTo) {
    provider_->makeFile(u"target/file", "content");
    provider_->makeLink(u"source/file", u"../target/file");
    const auto merge = [&](const auto& transfer, ReplacementPolicy policy) {
        expectError(vfs::resourceAlreadyExists, u"target/file", [&] { transfer(policy); });
        EXPECT_EQ(contentOf(u"target/file"), "content");
        EXPECT_EQ(provider_->linkTargetOf(u"source/file"), u"../target/file");
    };
    for (const auto policy : {MergeFolder, ReplaceAny}) {
        merge([&](auto by) { copyFolder(u"source", u"target", by); }, policy);
        merge([&](auto by) { moveFolder(u"source", u"target", by); }, policy);
    }
}

TEST_P(WritingLinks, ALinkNeverTakesThePlaceOfALinkOnItsWay) {
    provider_->makeFile(u"file", "content");
    provider_->makeLink(u"target/link", u"../file");
    provider_->makeLink(u"source/link", u"../target/link");
    expectError(vfs::resourceAlreadyExists, u"target/link",
                [&] { moveFile(u"source/link", u"target/link", ReplaceAny); });
    expectError(vfs::resourceAlreadyExists, u"target/link",
                [&] { copyFolder(u"source", u"target", MergeFolder); });
    expectError(vfs::resourceAlreadyExists, u"target/link",
                [&] { moveFolder(u"source", u"target", MergeFolder); });
    EXPECT_EQ(contentOf(u"target/link"), "content");
    EXPECT_EQ(provider_->linkTargetOf(u"source/link"), u"../target/link");
}

TEST_P(WritingLinks, ALinkTakesThePlaceOfAnotherLinkToTheSameFile) {
    provider_->makeFile(u"file", "content");
    provider_->makeLink(u"link", u"file");
    provider_->makeLink(u"other", u"./file");
    moveFile(u"link", u"other", ReplaceWritable);
    EXPECT_EQ(provider_->linkTargetOf(u"other"), u"file");
    EXPECT_EQ(extendedExistence(u"link"), provider::ExtendedNothing);
}

TEST_P(WritingLinks, ARemovedLinkLeavesItsTarget) {
    provider_->makeFile(u"file", "content");
    provider_->makeFile(u"folder/file", "content");
    provider_->makeLink(u"toFile", u"file");
    provider_->makeLink(u"toFolder", u"folder");
    provider_->makeLink(u"broken", u"absent");
    for (const std::u16string link : {u"toFile", u"toFolder", u"broken"})
        fileHandle(link).removeFile();
    EXPECT_THAT(tree(u""), ElementsAre("file=content", "folder/", "folder/file=content"));
}

TEST_P(WritingLinks, ARemovedFolderLeavesWhatItsLinksLeadTo) {
    provider_->makeFile(u"kept/file", "content");
    provider_->makeFile(u"single", "content");
    provider_->makeLink(u"folder/inner/toFolder", u"../../kept");
    provider_->makeLink(u"folder/toFile", u"../single");
    provider_->makeLink(u"folder/up", u"..");
    folderHandle(u"folder").removeFolder(vfs::RemoveWithContents);
    EXPECT_THAT(tree(u""), ElementsAre("kept/", "single=content", "kept/file=content"));
}

TEST_P(WritingLinks, AFolderDoesNotGoIntoItselfThroughALink) {
    provider_->makeFile(u"source/file", "content");
    provider_->makeLink(u"link", u"source");
    for (const ReplacementPolicy policy : mergingPolicies) {
        expectError(vfs::invalidLocation, u"link/new", [&] { copyFolder(u"source", u"link/new", policy); });
        expectError(vfs::invalidLocation, u"link/new", [&] { moveFolder(u"source", u"link/new", policy); });
    }
    EXPECT_THAT(tree(u"source"), ElementsAre("file=content"));
}

TEST_P(WritingLinks, AListingShowsALinkToAFolderAsAFolderAndOtherLinksAsFiles) {
    provider_->makeFile(u"file");
    provider_->makeFolder(u"folder");
    provider_->makeLink(u"links/broken", u"absent");
    provider_->makeLink(u"links/toFile", u"../file");
    provider_->makeLink(u"links/toFolder", u"../folder");
    std::vector<int> kinds;
    for (const vfs::ListEntry& entry : folderHandle(u"links").listAll(u""))
        kinds.push_back(entry.getFileOrFolder().which());
    EXPECT_THAT(kinds, ElementsAre(0, 0, 1));
}

}  // namespace
}  // namespace korvex::tests
