// What a provider with links answers about them: followed by the plain question, told apart by the extended
// one.
#include "tests/contract/provider_under_test.h"

namespace korvex::tests {
namespace {

class ReadingLinks : public ProviderContract {};

INSTANTIATE_TEST_SUITE_P(Contract, ReadingLinks, testing::ValuesIn(providersWith(&Abilities::hasLinks)),
                         nameOfProvider);

TEST_P(ReadingLinks, ALinkToAFileIsAFile) {
    provider_->makeFile(u"file");
    provider_->makeLink(u"link", u"file");
    EXPECT_EQ(existence(u"link"), provider::AsFile);
    EXPECT_EQ(extendedExistence(u"link"), provider::ExtendedLinkToFile);
    EXPECT_TRUE(vfs::exists(fileHandle(u"link")));
    EXPECT_FALSE(vfs::exists(folderHandle(u"link")));
}

TEST_P(ReadingLinks, ALinkToAFolderIsAFolder) {
    provider_->makeFolder(u"folder");
    provider_->makeLink(u"link", u"folder");
    EXPECT_EQ(existence(u"link"), provider::AsFolder);
    EXPECT_EQ(extendedExistence(u"link"), provider::ExtendedLinkToFolder);
    EXPECT_TRUE(vfs::exists(folderHandle(u"link")));
    EXPECT_FALSE(vfs::exists(fileHandle(u"link")));
}

TEST_P(ReadingLinks, ALinkWithoutATargetIsNothingButALink) {
    provider_->makeLink(u"link", u"absent");
    EXPECT_EQ(existence(u"link"), provider::AsNeither);
    EXPECT_EQ(extendedExistence(u"link"), provider::ExtendedBrokenLink);
    EXPECT_FALSE(vfs::exists(fileHandle(u"link")));
    EXPECT_FALSE(vfs::exists(folderHandle(u"link")));
}

TEST_P(ReadingLinks, LinksThatLeadToEachOtherAreLinksWithoutATarget) {
    provider_->makeLink(u"one", u"two");
    provider_->makeLink(u"two", u"one");
    EXPECT_EQ(existence(u"one"), provider::AsNeither);
    EXPECT_EQ(extendedExistence(u"one"), provider::ExtendedBrokenLink);
    EXPECT_EQ(extendedExistence(u"one/file"), provider::ExtendedNothing);
}

TEST_P(ReadingLinks, ALinkToALinkIsWhatTheLastOneLeadsTo) {
    provider_->makeFile(u"file");
    provider_->makeLink(u"near", u"file");
    provider_->makeLink(u"far", u"near");
    EXPECT_EQ(existence(u"far"), provider::AsFile);
    EXPECT_EQ(extendedExistence(u"far"), provider::ExtendedLinkToFile);
}

TEST_P(ReadingLinks, ALinkOnTheWayIsFollowed) {
    provider_->makeFile(u"folder/file");
    provider_->makeLink(u"link", u"folder");
    EXPECT_EQ(existence(u"link/file"), provider::AsFile);
    EXPECT_EQ(extendedExistence(u"link/file"), provider::ExtendedFile);
    EXPECT_EQ(extendedExistence(u"link/."), provider::ExtendedFolder);
    expectNothing(u"link/absent");
}

TEST_P(ReadingLinks, TwoDotsBehindALinkAreAboveItsTarget) {
    provider_->makeFolder(u"outer/inner");
    provider_->makeFile(u"outer/file");
    provider_->makeLink(u"link", u"outer/inner");
    EXPECT_EQ(existence(u"link/../file"), provider::AsFile);
    EXPECT_EQ(canonical(u"link/.."), provider_->locationOf(u"outer"));
}

TEST_P(ReadingLinks, TheCanonicalLocationIsTheTargets) {
    provider_->makeFile(u"folder/file");
    provider_->makeLink(u"toFolder", u"folder");
    provider_->makeLink(u"toFile", u"toFolder/file");
    EXPECT_EQ(canonical(u"toFile"), provider_->locationOf(u"folder/file"));
    EXPECT_EQ(canonical(u"toFolder/file"), provider_->locationOf(u"folder/file"));
    EXPECT_EQ(canonical(u"toFolder"), provider_->locationOf(u"folder"));
}

TEST_P(ReadingLinks, ALinkWithoutATargetHasNoCanonicalLocation) {
    provider_->makeLink(u"link", u"absent");
    try {
        canonical(u"link");
        FAIL() << "no exception";
    } catch (const vfs::Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), vfs::resourceNotFound);
        EXPECT_EQ(failure.getLocation(), provider_->locationOf(u"link"));
    }
}

}  // namespace
}  // namespace korvex::tests
