// What a provider with folders answers about them, and about dots in a path.
#include "tests/contract/provider_under_test.h"

namespace korvex::tests {
namespace {

class ReadingFolders : public ProviderContract {};

INSTANTIATE_TEST_SUITE_P(Contract, ReadingFolders, testing::ValuesIn(providersWith(&Abilities::hasFolders)),
                         nameOfProvider);

TEST_P(ReadingFolders, AFolderIsAFolder) {
    provider_->makeFolder(u"folder");
    EXPECT_EQ(existence(u"folder"), provider::AsFolder);
    EXPECT_EQ(extendedExistence(u"folder"), provider::ExtendedFolder);
}

TEST_P(ReadingFolders, AFolderIsThereForAFolderHandleOnly) {
    provider_->makeFolder(u"folder");
    EXPECT_TRUE(vfs::exists(folderHandle(u"folder")));
    EXPECT_TRUE(folderHandle(u"folder").folderExists());
    EXPECT_FALSE(vfs::exists(fileHandle(u"folder")));
}

TEST_P(ReadingFolders, TheFolderAroundAFileIsAFolder) {
    provider_->makeFile(u"outer/inner/file");
    EXPECT_EQ(existence(u"outer/inner"), provider::AsFolder);
    EXPECT_EQ(existence(u"outer"), provider::AsFolder);
}

TEST_P(ReadingFolders, TheRootIsAFolderAndCanonical) {
    const vfs::Folder root(provider_->root(), provider_->storage());
    EXPECT_EQ(vfs::exists(provider_->root(), provider_->storage()), provider::AsFolder);
    EXPECT_EQ(vfs::existsExtended(provider_->root(), provider_->storage()), provider::ExtendedFolder);
    EXPECT_EQ(root.getCanonicalLocation(), provider_->root());
}

TEST_P(ReadingFolders, OneDotIsTheFolderItself) {
    provider_->makeFile(u"folder/file");
    EXPECT_EQ(existence(u"folder/."), provider::AsFolder);
    EXPECT_EQ(existence(u"./folder/././file"), provider::AsFile);
}

TEST_P(ReadingFolders, TwoDotsAreTheFolderAbove) {
    provider_->makeFile(u"folder/file");
    provider_->makeFile(u"sibling");
    EXPECT_EQ(existence(u"folder/.."), provider::AsFolder);
    EXPECT_EQ(existence(u"folder/../sibling"), provider::AsFile);
    EXPECT_EQ(existence(u"folder/../folder/file"), provider::AsFile);
    expectNothing(u"folder/../file");
}

TEST_P(ReadingFolders, NothingIsAboveTheRoot) {
    const AbsoluteIRI beyond(provider_->root(), u"../..");
    const vfs::Folder folder(beyond, provider_->storage());
    EXPECT_EQ(vfs::exists(beyond, provider_->storage()), provider::AsFolder);
    EXPECT_EQ(folder.getCanonicalLocation(), provider_->root());
}

TEST_P(ReadingFolders, DotsBehindAFileLeadToNothing) {
    provider_->makeFile(u"file");
    expectNothing(u"file/.");
    expectNothing(u"file/..");
    expectNothing(u"file/../file");
}

TEST_P(ReadingFolders, DotsBehindWhatIsNotThereLeadToNothing) {
    provider_->makeFile(u"file");
    expectNothing(u"absent/..");
    expectNothing(u"absent/../file");
}

TEST_P(ReadingFolders, TheCanonicalLocationHasNoDots) {
    provider_->makeFile(u"folder/file");
    EXPECT_EQ(canonical(u"./folder/../folder/./file"), provider_->locationOf(u"folder/file"));
    EXPECT_EQ(canonical(u"folder/."), provider_->locationOf(u"folder"));
    EXPECT_EQ(canonical(u"folder/.."), provider_->home());
}

TEST_P(ReadingFolders, DotsThatLeadNowhereHaveNoCanonicalLocation) {
    provider_->makeFile(u"file");
    EXPECT_THROW(canonical(u"file/.."), vfs::Exception);
    EXPECT_THROW(canonical(u"absent/../file"), vfs::Exception);
}

}  // namespace
}  // namespace korvex::tests
