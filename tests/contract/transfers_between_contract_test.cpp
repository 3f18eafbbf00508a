// Copies and moves from one provider to another.
#include "tests/contract/writing_contract.h"

namespace korvex::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using MakeProvider = std::unique_ptr<ProviderUnderTest> (*)();

struct Route {
    const char* name;
    MakeProvider makeSource;
    MakeProvider makeDestination;
};

std::ostream& operator<<(std::ostream& stream, const Route& route) { return stream << route.name; }

constexpr Route routes[] = {
    {"fileToMemory", makeLocalProviderUnderTest, makeMemoryProviderUnderTest},
    {"memoryToFile", makeMemoryProviderUnderTest, makeLocalProviderUnderTest},
    {"memoryToMemory", makeMemoryProviderUnderTest, makeMemoryProviderUnderTest},
    {"fileToFile", makeLocalProviderUnderTest, makeLocalProviderUnderTest},
};

constexpr Route routesToLinks[] = {
    {"memoryToFile", makeMemoryProviderUnderTest, makeLocalProviderUnderTest},
    {"fileToFile", makeLocalProviderUnderTest, makeLocalProviderUnderTest},
};

constexpr Route routesFromTheWeb[] = {
    {"httpToMemory", makeHttpProviderUnderTest, makeMemoryProviderUnderTest},
    {"httpsToFile", makeHttpsProviderUnderTest, makeLocalProviderUnderTest},
};

constexpr Route routesToTheWeb[] = {
    {"memoryToHttp", makeMemoryProviderUnderTest, makeHttpProviderUnderTest},
    {"fileToHttps", makeLocalProviderUnderTest, makeHttpsProviderUnderTest},
};

class TransfersBetween : public testing::TestWithParam<Route> {
protected:
    static vfs::File file(const ProviderUnderTest& side, const std::u16string& path) {
        return vfs::File(side.locationOf(path), side.storage());
    }
    static vfs::Folder folder(const ProviderUnderTest& side, const std::u16string& path) {
        return vfs::Folder(side.locationOf(path), side.storage());
    }
    vfs::File source(const std::u16string& path) const { return file(*from_, path); }
    vfs::File target(const std::u16string& path) const { return file(*to_, path); }
    vfs::Folder sourceFolder(const std::u16string& path) const { return folder(*from_, path); }
    vfs::Folder targetFolder(const std::u16string& path) const { return folder(*to_, path); }

    void makeTree(const std::u16string& path) {
        from_->makeFile(path + u"/file", "first");
        from_->makeFile(path + u"/inner/file", std::string(700'000, 'x'));
        from_->makeFolder(path + u"/inner/empty");
        from_->makeFile(path + u"/" + std::u16string{u'%', char16_t{0xDCE4}, u'?'}, "odd");
    }

    const std::unique_ptr<ProviderUnderTest> from_ = GetParam().makeSource();
    const std::unique_ptr<ProviderUnderTest> to_ = GetParam().makeDestination();
};

std::string nameOfRoute(const testing::TestParamInfo<Route>& route) { return route.param.name; }

INSTANTIATE_TEST_SUITE_P(Contract, TransfersBetween, testing::ValuesIn(routes), nameOfRoute);

TEST_P(TransfersBetween, AFileIsCopied) {
    const std::string contents[] = {"", "content", std::string(1'500'000, 'x') + "end"};
    for (const std::string& content : contents) {
        for (const ReplacementPolicy policy : allPolicies) {
            from_->makeFile(u"file", content);
            source(u"file").copyFile(target(u"copy"), policy);
            EXPECT_TRUE(to_->contentOf(u"copy") == content);
            EXPECT_TRUE(from_->contentOf(u"file") == content);
        }
    }
}

TEST_P(TransfersBetween, AFileIsMoved) {
    from_->makeFile(u"file", "content");
    to_->makeFile(u"moved", "old");
    source(u"file").moveFile(target(u"moved"), ReplaceWritable);
    EXPECT_THAT(treeOf(*to_, u""), ElementsAre("moved=content"));
    EXPECT_THAT(treeOf(*from_, u""), IsEmpty());
}

TEST_P(TransfersBetween, APolicyIsKept) {
    from_->makeFile(u"file", "new");
    to_->makeFile(u"protected", "old");
    to_->makeFolder(u"folder");
    target(u"protected").setWritable(false);
    for (const ReplacementPolicy policy : carefulPolicies) {
        expectFailure(vfs::permissionDenied, to_->locationOf(u"protected"),
                      [&] { source(u"file").copyFile(target(u"protected"), policy); });
        expectFailure(vfs::permissionDenied, to_->locationOf(u"protected"),
                      [&] { source(u"file").moveFile(target(u"protected"), policy); });
    }
    for (const ReplacementPolicy policy : allPolicies) {
        expectFailure(vfs::resourceAlreadyExists, to_->locationOf(u"folder"),
                      [&] { source(u"file").copyFile(target(u"folder"), policy); });
        expectFailure(vfs::resourceNotFound, to_->locationOf(u"absent/file"),
                      [&] { source(u"file").copyFile(target(u"absent/file"), policy); });
    }
    EXPECT_THAT(treeOf(*to_, u""), ElementsAre("folder/", "protected=old"));
    EXPECT_THAT(treeOf(*from_, u""), ElementsAre("file=new"));
    source(u"file").copyFile(target(u"protected"), ReplaceAny);
    EXPECT_EQ(to_->contentOf(u"protected"), "new");
}

TEST_P(TransfersBetween, WhatIsNotThereOrNoFileIsNamed) {
    from_->makeFolder(u"folder");
    expectFailure(vfs::resourceNotFound, from_->locationOf(u"absent"),
                  [&] { source(u"absent").copyFile(target(u"copy"), ReplaceWritable); });
    expectFailure(vfs::resourceNotFound, from_->locationOf(u"absent"),
                  [&] { source(u"absent").moveFile(target(u"copy"), ReplaceWritable); });
    expectFailure(vfs::invalidLocation, from_->locationOf(u"folder"),
                  [&] { source(u"folder").copyFile(target(u"copy"), ReplaceWritable); });
    expectFailure(vfs::resourceNotFound, from_->locationOf(u"absent"),
                  [&] { sourceFolder(u"absent").copyFolder(targetFolder(u"copy"), ReplaceWritable); });
    EXPECT_THAT(treeOf(*to_, u""), IsEmpty());
}

TEST_P(TransfersBetween, AFolderIsCopied) {
    makeTree(u"folder");
    const auto before = treeOf(*from_, u"folder");
    for (const ReplacementPolicy policy : allPolicies) {
        sourceFolder(u"folder").copyFolder(targetFolder(u"copy"), policy);
        EXPECT_EQ(treeOf(*to_, u"copy"), before);
        EXPECT_EQ(treeOf(*from_, u"folder"), before);
        targetFolder(u"copy").removeFolder(vfs::RemoveWithContents);
    }
}

TEST_P(TransfersBetween, AFolderIsMoved) {
    makeTree(u"folder");
    const auto before = treeOf(*from_, u"folder");
    sourceFolder(u"folder").moveFolder(targetFolder(u"moved"), ReplaceWritable);
    EXPECT_EQ(treeOf(*to_, u"moved"), before);
    EXPECT_THAT(treeOf(*from_, u""), IsEmpty());
}

TEST_P(TransfersBetween, AFolderIsMergedOrRefused) {
    from_->makeFile(u"folder/shared/both", "new");
    to_->makeFile(u"target/shared/both", "old");
    to_->makeFile(u"target/shared/yours", "old");
    expectFailure(vfs::resourceAlreadyExists, to_->locationOf(u"target"),
                  [&] { sourceFolder(u"folder").copyFolder(targetFolder(u"target"), ReplaceWritable); });
    EXPECT_EQ(to_->contentOf(u"target/shared/both"), "old");
    sourceFolder(u"folder").moveFolder(targetFolder(u"target"), MergeFolder);
    EXPECT_THAT(treeOf(*to_, u"target"), ElementsAre("shared/", "shared/both=new", "shared/yours=old"));
    EXPECT_THAT(treeOf(*from_, u""), IsEmpty());
}

TEST_P(TransfersBetween, AMergeThatFailsLeavesTheSourceWhole) {
    from_->makeFile(u"folder/a", "new");
    from_->makeFile(u"folder/b", "new");
    to_->makeFile(u"target/b", "old");
    target(u"target/b").setWritable(false);
    expectFailure(vfs::permissionDenied, to_->locationOf(u"target/b"),
                  [&] { sourceFolder(u"folder").moveFolder(targetFolder(u"target"), MergeFolder); });
    EXPECT_THAT(treeOf(*from_, u""), ElementsAre("folder/", "folder/a=new", "folder/b=new"));
    EXPECT_THAT(treeOf(*to_, u"target"), ElementsAre("a=new", "b=old"));
}

TEST_P(TransfersBetween, AFolderDoesNotGoOntoAFileNorIntoAMissingFolder) {
    makeTree(u"folder");
    to_->makeFile(u"file", "old");
    for (const ReplacementPolicy policy : allPolicies) {
        expectFailure(vfs::resourceAlreadyExists, to_->locationOf(u"file"),
                      [&] { sourceFolder(u"folder").copyFolder(targetFolder(u"file"), policy); });
        expectFailure(vfs::resourceNotFound, to_->locationOf(u"absent/copy"),
                      [&] { sourceFolder(u"folder").copyFolder(targetFolder(u"absent/copy"), policy); });
    }
    EXPECT_THAT(treeOf(*to_, u""), ElementsAre("file=old"));
}

TEST_P(TransfersBetween, AProtectedFolderArrivesAsOneWithEverythingInIt) {
    makeTree(u"folder");
    sourceFolder(u"folder/inner").setWritable(false);
    const auto before = treeOf(*from_, u"folder");
    sourceFolder(u"folder").copyFolder(targetFolder(u"copy"), ReplaceWritable);
    EXPECT_EQ(treeOf(*to_, u"copy"), before);
    EXPECT_FALSE(to_->hasWriteBits(u"copy/inner"));
    EXPECT_TRUE(to_->hasWriteBits(u"copy"));
}

class TransfersToLinks : public TransfersBetween {};

INSTANTIATE_TEST_SUITE_P(Contract, TransfersToLinks, testing::ValuesIn(routesToLinks), nameOfRoute);

TEST_P(TransfersToLinks, AFolderFurtherDownDoesNotGoThroughALink) {
    from_->makeFile(u"folder/inner/file", "new");
    to_->makeFile(u"elsewhere/file", "old");
    to_->makeLink(u"target/inner", u"../elsewhere");
    for (const ReplacementPolicy policy : mergingPolicies) {
        expectFailure(vfs::resourceAlreadyExists, to_->locationOf(u"target/inner"),
                      [&] { sourceFolder(u"folder").copyFolder(targetFolder(u"target"), policy); });
        expectFailure(vfs::resourceAlreadyExists, to_->locationOf(u"target/inner"),
                      [&] { sourceFolder(u"folder").moveFolder(targetFolder(u"target"), policy); });
    }
    EXPECT_EQ(to_->contentOf(u"elsewhere/file"), "old");
    EXPECT_EQ(from_->contentOf(u"folder/inner/file"), "new");
}

TEST_P(TransfersToLinks, AFileFurtherDownReplacesTheLink) {
    from_->makeFile(u"folder/file", "new");
    to_->makeFile(u"elsewhere/file", "old");
    to_->makeLink(u"target/file", u"../elsewhere/file");
    sourceFolder(u"folder").copyFolder(targetFolder(u"target"), MergeFolder);
    EXPECT_EQ(to_->contentOf(u"elsewhere/file"), "old");
    EXPECT_EQ(to_->contentOf(u"target/file"), "new");
}

TEST_P(TransfersToLinks, ADestinationThatIsNamedByALinkIsFollowed) {
    from_->makeFile(u"folder/file", "new");
    to_->makeFile(u"elsewhere/other", "old");
    to_->makeFile(u"single", "old");
    to_->makeLink(u"target", u"elsewhere");
    to_->makeLink(u"link", u"single");
    sourceFolder(u"folder").copyFolder(targetFolder(u"target"), MergeFolder);
    source(u"folder/file").copyFile(target(u"link"), ReplaceWritable);
    EXPECT_EQ(to_->contentOf(u"elsewhere/file"), "new");
    EXPECT_EQ(to_->contentOf(u"single"), "new");
}

class TransfersFromTheWeb : public TransfersBetween {};

INSTANTIATE_TEST_SUITE_P(Contract, TransfersFromTheWeb, testing::ValuesIn(routesFromTheWeb), nameOfRoute);

TEST_P(TransfersFromTheWeb, AFileIsCopied) {
    from_->makeFile(u"folder/50% off", std::string(1'500'000, 'x') + "end");
    source(u"folder/50% off").copyFile(target(u"copy"), ReplaceWritable);
    EXPECT_TRUE(to_->contentOf(u"copy") == std::string(1'500'000, 'x') + "end");
}

TEST_P(TransfersFromTheWeb, WhatIsNotThereIsNamedAndTheDestinationStays) {
    to_->makeFile(u"copy", "old");
    expectFailure(vfs::resourceNotFound, from_->locationOf(u"absent"),
                  [&] { source(u"absent").copyFile(target(u"copy"), ReplaceWritable); });
    EXPECT_THAT(treeOf(*to_, u""), ElementsAre("copy=old"));
}

TEST_P(TransfersFromTheWeb, ABrokenConnectionLeavesTheOldFile) {
    to_->makeFile(u"copy", "old");
    expectFailure(vfs::ioError, from_->locationOf(u"broken"),
                  [&] { source(u"broken").copyFile(target(u"copy"), ReplaceWritable); });
    expectFailure(vfs::ioError, from_->locationOf(u"broken"),
                  [&] { source(u"broken").copyFile(target(u"new"), ReplaceWritable); });
    EXPECT_THAT(treeOf(*to_, u""), ElementsAre("copy=old"));
}

TEST_P(TransfersFromTheWeb, FoldersAreNotKnown) {
    from_->makeFile(u"folder/file");
    expectFailure(vfs::unsupportedOperation, from_->locationOf(u"folder"),
                  [&] { sourceFolder(u"folder").copyFolder(targetFolder(u"copy"), ReplaceWritable); });
    EXPECT_THAT(treeOf(*to_, u""), IsEmpty());
}

TEST_P(TransfersFromTheWeb, NothingIsMovedAwayNorCopiedInVain) {
    from_->makeFile(u"file");
    expectFailure(vfs::readOnlyProvider, from_->locationOf(u"file"),
                  [&] { source(u"file").moveFile(target(u"moved"), ReplaceWritable); });
    expectFailure(vfs::readOnlyProvider, from_->locationOf(u"folder"),
                  [&] { sourceFolder(u"folder").moveFolder(targetFolder(u"moved"), ReplaceWritable); });
    EXPECT_THAT(treeOf(*to_, u""), IsEmpty());
}

class TransfersToTheWeb : public TransfersBetween {};

INSTANTIATE_TEST_SUITE_P(Contract, TransfersToTheWeb, testing::ValuesIn(routesToTheWeb), nameOfRoute);

TEST_P(TransfersToTheWeb, AreRefusedBeforeTheSourceIsLookedAt) {
    const AbsoluteIRI destination = to_->locationOf(u"copy");
    for (const ReplacementPolicy policy : allPolicies) {
        expectFailure(vfs::readOnlyProvider, destination,
                      [&] { source(u"absent").copyFile(target(u"copy"), policy); });
        expectFailure(vfs::readOnlyProvider, destination,
                      [&] { source(u"absent").moveFile(target(u"copy"), policy); });
        expectFailure(vfs::readOnlyProvider, destination,
                      [&] { sourceFolder(u"absent").copyFolder(targetFolder(u"copy"), policy); });
        expectFailure(vfs::readOnlyProvider, destination,
                      [&] { sourceFolder(u"absent").moveFolder(targetFolder(u"copy"), policy); });
    }
}

}  // namespace
}  // namespace korvex::tests
