// Copying, moving and removing folders, where nothing stands at the destination.
#include "tests/contract/writing_contract.h"

namespace korvex::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WritingFolders : public WritingContract {
protected:
    void makeTree(const std::u16string& path) {
        provider_->makeFile(path + u"/file", "first");
        provider_->makeFile(path + u"/inner/file", "second");
        provider_->makeFolder(path + u"/inner/empty");
        provider_->makeFile(path + u"/" + oddName_, "odd");
    }

    const std::u16string oddName_{u'%', char16_t{0xDCE4}, u'?'};
    const std::vector<std::string> madeTree_{"%\xE4?=odd", "file=first", "inner/", "inner/empty/",
                                             "inner/file=second"};
};

INSTANTIATE_TEST_SUITE_P(Contract, WritingFolders, testing::ValuesIn(providersWith(&Abilities::canWrite)),
                         nameOfProvider);

TEST_P(WritingFolders, ACopyHasEverythingAndTheSourceStays) {
    makeTree(u"source");
    for (const ReplacementPolicy policy : allPolicies) {
        copyFolder(u"source", u"copy", policy);
        EXPECT_EQ(tree(u"copy"), madeTree_);
        EXPECT_EQ(tree(u"source"), madeTree_);
        folderHandle(u"copy").removeFolder(vfs::RemoveWithContents);
    }
}

TEST_P(WritingFolders, AMovedFolderIsElsewhereWithEverything) {
    for (const ReplacementPolicy policy : allPolicies) {
        makeTree(u"source");
        moveFolder(u"source", u"moved", policy);
        EXPECT_EQ(tree(u"moved"), madeTree_);
        expectNothing(u"source");
        folderHandle(u"moved").removeFolder(vfs::RemoveWithContents);
    }
}

TEST_P(WritingFolders, ATransferMayGoUpAndDown) {
    makeTree(u"one/two/source");
    provider_->makeFolder(u"three/four");
    moveFolder(u"one/two/source", u"three/four/moved", ReplaceWritable);
    copyFolder(u"three/four/moved", u"up", ReplaceWritable);
    EXPECT_EQ(tree(u"up"), madeTree_);
    EXPECT_THAT(tree(u"one"), ElementsAre("two/"));
}

TEST_P(WritingFolders, EmptyFoldersAreFoldersToo) {
    provider_->makeFolder(u"empty");
    copyFolder(u"empty", u"copy", ReplaceWritable);
    moveFolder(u"empty", u"moved", ReplaceWritable);
    EXPECT_THAT(tree(u""), ElementsAre("copy/", "moved/"));
}

TEST_P(WritingFolders, ProtectedFilesAndFoldersArriveProtected) {
    makeTree(u"source");
    protect(u"source/file");
    folderHandle(u"source/inner").setWritable(false);
    copyFolder(u"source", u"copy", ReplaceWritable);
    EXPECT_EQ(tree(u"copy"), madeTree_);
    EXPECT_FALSE(provider_->hasWriteBits(u"copy/file"));
    EXPECT_FALSE(provider_->hasWriteBits(u"copy/inner"));
    EXPECT_TRUE(provider_->hasWriteBits(u"copy/inner/file"));
}

TEST_P(WritingFolders, ACopyKeepsTheTimesOfLastChangeOfFiles) {
    const ProviderUnderTest::Time time{std::chrono::seconds(1'000'000'000)};
    makeTree(u"source");
    provider_->setChangeTime(u"source/inner/file", time);
    copyFolder(u"source", u"copy", ReplaceWritable);
    EXPECT_EQ(provider_->changeTimeOf(u"copy/inner/file"), time);
}

TEST_P(WritingFolders, ADeepTreeIsTransferredAndRemoved) {
    std::u16string path = u"source";
    for (int level = 0; level < 200; ++level)
        path += u"/d";
    provider_->makeFile(path + u"/file", "at the end");
    copyFolder(u"source", u"copy", ReplaceWritable);
    moveFolder(u"source", u"moved", ReplaceWritable);
    const std::u16string below = path.substr(std::u16string_view(u"source").size()) + u"/file";
    EXPECT_EQ(contentOf(u"copy" + below), "at the end");
    EXPECT_EQ(contentOf(u"moved" + below), "at the end");
    folderHandle(u"copy").removeFolder(vfs::RemoveWithContents);
    folderHandle(u"moved").removeFolder(vfs::RemoveWithContents);
    EXPECT_THAT(tree(u""), IsEmpty());
}

TEST_P(WritingFolders, AWideTreeIsTransferredAndRemoved) {
    for (int number = 0; number < 300; ++number)
        provider_->makeFile(u"source/file" +
                            std::u16string(1 + static_cast<std::size_t>(number) % 100, u'x') +
                            std::u16string(static_cast<std::size_t>(number) / 100, u'y'));
    const auto expected = tree(u"source");
    copyFolder(u"source", u"copy", ReplaceWritable);
    EXPECT_EQ(expected.size(), 300U);
    EXPECT_EQ(tree(u"copy"), expected);
    folderHandle(u"copy").removeFolder(vfs::RemoveWithContents);
    expectNothing(u"copy");
}

TEST_P(WritingFolders, AFolderDoesNotGoOntoAFile) {
    makeTree(u"source");
    provider_->makeFile(u"file", "old");
    for (const ReplacementPolicy policy : allPolicies) {
        expectError(vfs::resourceAlreadyExists, u"file", [&] { copyFolder(u"source", u"file", policy); });
        expectError(vfs::resourceAlreadyExists, u"file", [&] { moveFolder(u"source", u"file", policy); });
    }
    EXPECT_EQ(contentOf(u"file"), "old");
    EXPECT_EQ(tree(u"source"), madeTree_);
}

TEST_P(WritingFolders, AMissingFolderAboveTheDestinationIsNotMade) {
    makeTree(u"source");
    for (const std::u16string destination : {u"absent/copy", u"absent/further/copy", u"source/file/copy"}) {
        if (destination.starts_with(u"source/")) provider_->makeFile(u"other/file", "old");
        const std::u16string place = destination.starts_with(u"source/") ? u"other/file/copy" : destination;
        for (const ReplacementPolicy policy : allPolicies) {
            expectError(vfs::resourceNotFound, place, [&] { copyFolder(u"source", place, policy); });
            expectError(vfs::resourceNotFound, place, [&] { moveFolder(u"source", place, policy); });
        }
    }
    EXPECT_EQ(tree(u"source"), madeTree_);
    expectNothing(u"absent");
}

TEST_P(WritingFolders, WhatIsNoFolderCannotBeTransferredAsOne) {
    provider_->makeFile(u"file", "content");
    for (const std::u16string source : {u"absent", u"absent/folder", u"file"}) {
        expectError(vfs::resourceNotFound, source, [&] { copyFolder(source, u"new", ReplaceWritable); });
        expectError(vfs::resourceNotFound, source, [&] { moveFolder(source, u"new", ReplaceWritable); });
    }
    EXPECT_THAT(tree(u""), ElementsAre("file=content"));
}

TEST_P(WritingFolders, AFolderDoesNotGoIntoItsOwnSubtree) {
    makeTree(u"source");
    for (const std::u16string destination :
         {u"source/new", u"source/inner/new", u"source/inner", u"source", u"source/missing/further/new"}) {
        SCOPED_TRACE(runtime::text::toDisplayBytes(destination));
        for (const ReplacementPolicy policy : mergingPolicies) {
            expectError(vfs::invalidLocation, destination,
                        [&] { copyFolder(u"source", destination, policy); });
            expectError(vfs::invalidLocation, destination,
                        [&] { moveFolder(u"source", destination, policy); });
        }
    }
    EXPECT_EQ(tree(u"source"), madeTree_);
}

TEST_P(WritingFolders, ANameThatOnlyBeginsAlikeIsNoSubtree) {
    makeTree(u"source");
    copyFolder(u"source", u"source2", ReplaceWritable);
    EXPECT_EQ(tree(u"source2"), madeTree_);
}

TEST_P(WritingFolders, AnEmptyFolderIsRemovedUnderBothPolicies) {
    provider_->makeFolder(u"one");
    provider_->makeFolder(u"two");
    folderHandle(u"one").removeFolder(vfs::RemoveEmptyFolder);
    folderHandle(u"two").removeFolder(vfs::RemoveWithContents);
    EXPECT_THAT(tree(u""), IsEmpty());
}

TEST_P(WritingFolders, AFolderThatHoldsAnythingIsNotRemovedAsAnEmptyOne) {
    makeTree(u"folder");
    provider_->makeFolder(u"outer/inner");
    for (const std::u16string folder : {u"folder", u"outer"}) {
        expectError(vfs::folderNotEmpty, folder,
                    [&] { folderHandle(folder).removeFolder(vfs::RemoveEmptyFolder); });
    }
    EXPECT_EQ(tree(u"folder"), madeTree_);
    EXPECT_THAT(tree(u"outer"), ElementsAre("inner/"));
}

TEST_P(WritingFolders, ContentsGoWithTheirFolderProtectedFilesToo) {
    makeTree(u"folder");
    protect(u"folder/inner/file");
    provider_->makeFile(u"neighbour", "content");
    folderHandle(u"folder").removeFolder(vfs::RemoveWithContents);
    EXPECT_THAT(tree(u""), ElementsAre("neighbour=content"));
}

TEST_P(WritingFolders, WhatIsNoFolderCannotBeRemovedAsOne) {
    provider_->makeFile(u"file", "content");
    for (const vfs::FolderRemovalPolicy policy : {vfs::RemoveEmptyFolder, vfs::RemoveWithContents}) {
        for (const std::u16string path : {u"absent", u"absent/folder", u"file", u"file/below"}) {
            expectError(vfs::resourceNotFound, path, [&] { folderHandle(path).removeFolder(policy); });
        }
    }
    EXPECT_THAT(tree(u""), ElementsAre("file=content"));
}

}  // namespace
}  // namespace korvex::tests
