// Copying, moving and removing files.
#include "tests/contract/writing_contract.h"

namespace korvex::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WritingFiles : public WritingContract {
protected:
    /// Names that a path can carry, and what a disk and a location's text make of them.
    const std::vector<std::u16string> oddNames_{
        u"two words",
        u"50% off",
        u"%41",
        u"what?",
        u"star*",
        u"sharp#name",
        u"gr\u00FC\u00DFe",
        u"\U0001F600",
        u"line\nfeed",
        u"...",
        u"a:b",
        u"back\\slash",
        std::u16string{u'n', char16_t{0xDCE4}, u'm', char16_t{0xDC80}},
        std::u16string(255, u'n')};
};

INSTANTIATE_TEST_SUITE_P(Contract, WritingFiles, testing::ValuesIn(providersWith(&Abilities::canWrite)),
                         nameOfProvider);

TEST_P(WritingFiles, ACopyHasTheContentAndTheSourceStays) {
    const std::string contents[] = {"", "content", std::string(1'500'000, 'x') + "end"};
    for (const std::string& content : contents) {
        for (const ReplacementPolicy policy : allPolicies) {
            provider_->makeFile(u"source", content);
            copyFile(u"source", u"copy", policy);
            EXPECT_TRUE(contentOf(u"copy") == content);
            EXPECT_TRUE(contentOf(u"source") == content);
        }
    }
}

TEST_P(WritingFiles, ACopyKeepsTheTimeOfLastChangeAndTheProtection) {
    const ProviderUnderTest::Time time{std::chrono::seconds(1'000'000'000)};
    provider_->makeFile(u"source");
    provider_->setChangeTime(u"source", time);
    protect(u"source");
    copyFile(u"source", u"copy", ReplaceWritable);
    EXPECT_EQ(provider_->changeTimeOf(u"copy"), time);
    EXPECT_FALSE(provider_->hasWriteBits(u"copy"));
}

TEST_P(WritingFiles, AFileThatMayBeWrittenIsReplaced) {
    for (const ReplacementPolicy policy : allPolicies) {
        provider_->makeFile(u"source", "new");
        provider_->makeFile(u"copy", "an old and longer one");
        provider_->makeFile(u"moved", "an old and longer one");
        copyFile(u"source", u"copy", policy);
        moveFile(u"source", u"moved", policy);
        EXPECT_THAT(tree(u""), ElementsAre("copy=new", "moved=new"));
        fileHandle(u"moved").removeFile();
    }
}

TEST_P(WritingFiles, AReadOnlyFileIsNotReplacedUnlessAnyFileMayBe) {
    provider_->makeFile(u"source", "new");
    provider_->makeFile(u"protected", "old");
    protect(u"protected");
    for (const ReplacementPolicy policy : carefulPolicies) {
        expectError(vfs::permissionDenied, u"protected", [&] { copyFile(u"source", u"protected", policy); });
        expectError(vfs::permissionDenied, u"protected", [&] { moveFile(u"source", u"protected", policy); });
        EXPECT_THAT(tree(u""), ElementsAre("protected=old", "source=new"));
        EXPECT_FALSE(provider_->hasWriteBits(u"protected"));
    }
}

TEST_P(WritingFiles, AReadOnlyFileIsReplacedWhenAnyFileMayBe) {
    provider_->makeFile(u"source", "new");
    for (const std::u16string destination : {u"copied", u"moved"}) {
        provider_->makeFile(destination, "old");
        protect(destination);
    }
    copyFile(u"source", u"copied", ReplaceAny);
    moveFile(u"source", u"moved", ReplaceAny);
    EXPECT_THAT(tree(u""), ElementsAre("copied=new", "moved=new"));
    EXPECT_TRUE(provider_->hasWriteBits(u"copied"));
    EXPECT_TRUE(provider_->hasWriteBits(u"moved"));
}

TEST_P(WritingFiles, AFolderIsNeverReplacedByAFile) {
    provider_->makeFile(u"source", "new");
    provider_->makeFile(u"folder/file", "old");
    provider_->makeFolder(u"empty");
    for (const ReplacementPolicy policy : allPolicies) {
        for (const std::u16string destination : {u"folder", u"empty"}) {
            expectError(vfs::resourceAlreadyExists, destination,
                        [&] { copyFile(u"source", destination, policy); });
            expectError(vfs::resourceAlreadyExists, destination,
                        [&] { moveFile(u"source", destination, policy); });
        }
        EXPECT_THAT(tree(u""), ElementsAre("empty/", "folder/", "source=new", "folder/file=old"));
    }
}

TEST_P(WritingFiles, AMissingFolderAboveTheDestinationIsNotMade) {
    provider_->makeFile(u"source", "new");
    provider_->makeFile(u"file", "old");
    for (const std::u16string destination : {u"absent/file", u"absent/further/file", u"file/below"}) {
        for (const ReplacementPolicy policy : allPolicies) {
            expectError(vfs::resourceNotFound, destination,
                        [&] { copyFile(u"source", destination, policy); });
            expectError(vfs::resourceNotFound, destination,
                        [&] { moveFile(u"source", destination, policy); });
        }
    }
    EXPECT_THAT(tree(u""), ElementsAre("file=old", "source=new"));
}

TEST_P(WritingFiles, WhatIsNotThereCannotBeTransferredAndTheDestinationStays) {
    provider_->makeFile(u"file", "old");
    for (const std::u16string source : {u"absent", u"absent/file", u"file/below"}) {
        for (const ReplacementPolicy policy : allPolicies) {
            expectError(vfs::resourceNotFound, source, [&] { copyFile(source, u"file", policy); });
            expectError(vfs::resourceNotFound, source, [&] { moveFile(source, u"file", policy); });
            expectError(vfs::resourceNotFound, source, [&] { copyFile(source, u"new", policy); });
        }
    }
    EXPECT_THAT(tree(u""), ElementsAre("file=old"));
}

TEST_P(WritingFiles, AFolderIsNoFileToTransfer) {
    provider_->makeFile(u"folder/file", "content");
    expectError(vfs::invalidLocation, u"folder", [&] { copyFile(u"folder", u"new", ReplaceWritable); });
    expectError(vfs::invalidLocation, u"folder", [&] { moveFile(u"folder", u"new", ReplaceWritable); });
    EXPECT_THAT(tree(u""), ElementsAre("folder/", "folder/file=content"));
}

TEST_P(WritingFiles, AFileOntoItselfStaysWhole) {
    provider_->makeFile(u"folder/file", "content");
    for (const ReplacementPolicy policy : allPolicies) {
        moveFile(u"folder/file", u"folder/file", policy);
        EXPECT_THAT(tree(u""), ElementsAre("folder/", "folder/file=content"));
        copyFile(u"folder/file", u"folder/file", policy);
        EXPECT_THAT(tree(u""), ElementsAre("folder/", "folder/file=content"));
    }
}

TEST_P(WritingFiles, AMoveRenames) {
    provider_->makeFile(u"file", "content");
    moveFile(u"file", u"FILE", ReplaceWritable);
    EXPECT_EQ(existence(u"FILE"), provider::AsFile);
    provider_->makeFolder(u"folder");
    moveFile(u"FILE", u"folder/file", ReplaceWritable);
    EXPECT_THAT(tree(u""), ElementsAre("folder/", "folder/file=content"));
}

TEST_P(WritingFiles, AMoveKeepsTheTimeOfLastChangeAndTheProtection) {
    const ProviderUnderTest::Time time{std::chrono::seconds(1'000'000'000)};
    provider_->makeFile(u"source");
    provider_->setChangeTime(u"source", time);
    protect(u"source");
    moveFile(u"source", u"moved", ReplaceWritable);
    EXPECT_EQ(provider_->changeTimeOf(u"moved"), time);
    EXPECT_FALSE(provider_->hasWriteBits(u"moved"));
    expectNothing(u"source");
}

TEST_P(WritingFiles, AnyNameMayBeGivenAndTakenAway) {
    for (const std::u16string& name : oddNames_) {
        SCOPED_TRACE(runtime::text::toDisplayBytes(name));
        provider_->makeFile(u"plain", "content");
        provider_->makeFolder(u"folder");
        moveFile(u"plain", name, ReplaceWritable);
        copyFile(name, u"folder/" + name, ReplaceWritable);
        EXPECT_EQ(contentOf(name), "content");
        EXPECT_EQ(contentOf(u"folder/" + name), "content");
        fileHandle(name).removeFile();
        fileHandle(u"folder/" + name).removeFile();
        EXPECT_THAT(tree(u""), ElementsAre("folder/"));
    }
}

TEST_P(WritingFiles, ARemovedFileIsGone) {
    provider_->makeFile(u"file");
    provider_->makeFile(u"neighbour", "content");
    fileHandle(u"file").removeFile();
    EXPECT_THAT(tree(u""), ElementsAre("neighbour=content"));
}

TEST_P(WritingFiles, AReadOnlyFileMayBeRemoved) {
    provider_->makeFile(u"file");
    protect(u"file");
    fileHandle(u"file").removeFile();
    EXPECT_THAT(tree(u""), IsEmpty());
}

TEST_P(WritingFiles, WhatIsNoFileCannotBeRemovedAsOne) {
    provider_->makeFile(u"folder/file", "content");
    expectError(vfs::resourceNotFound, u"absent", [&] { fileHandle(u"absent").removeFile(); });
    expectError(vfs::resourceNotFound, u"folder/file/below",
                [&] { fileHandle(u"folder/file/below").removeFile(); });
    expectError(vfs::invalidLocation, u"folder", [&] { fileHandle(u"folder").removeFile(); });
    EXPECT_THAT(tree(u""), ElementsAre("folder/", "folder/file=content"));
}

TEST_P(WritingFiles, WithoutItsProviderNothingIsDone) {
    provider_->makeFile(u"file", "content");
    const vfs::StorageSystemReference empty(std::make_shared<vfs::StorageSystem>());
    const vfs::File file(provider_->locationOf(u"file"), empty);
    EXPECT_THROW(file.removeFile(), vfs::UnsupportedIRISchemeException);
    EXPECT_THROW(file.copyFile(fileHandle(u"copy"), ReplaceWritable), vfs::UnsupportedIRISchemeException);
    EXPECT_THROW(fileHandle(u"file").moveFile(vfs::File(provider_->locationOf(u"moved"), empty), ReplaceAny),
                 vfs::UnsupportedIRISchemeException);
    EXPECT_THAT(tree(u""), ElementsAre("file=content"));
}

}  // namespace
}  // namespace korvex::tests
