// Making folders, write protection, and listing.
#include "tests/contract/writing_contract.h"

namespace korvex::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WritingItems : public WritingContract {
protected:
    bool isWritable(const std::u16string& path) const {
        const bool asFile = vfs::isWritable(fileHandle(path));
        EXPECT_EQ(vfs::isWritable(folderHandle(path)), asFile);
        return asFile;
    }
    void setFolderWritable(const std::u16string& path, bool isWritable) const {
        folderHandle(path).setWritable(isWritable);
    }
    std::vector<std::u16string> listed(const std::u16string& path, const std::u16string& pattern) const {
        std::vector<std::u16string> names;
        for (const vfs::ListEntry& entry : folderHandle(path).listAll(pattern))
            names.push_back(entry.getLocation().getName());
        return names;
    }
};

INSTANTIATE_TEST_SUITE_P(Contract, WritingItems, testing::ValuesIn(providersWith(&Abilities::canWrite)),
                         nameOfProvider);

TEST_P(WritingItems, ANewFolderIsThereAndEmpty) {
    folderHandle(u"folder").createFolder();
    folderHandle(u"folder/inner").createFolder();
    EXPECT_THAT(tree(u""), ElementsAre("folder/", "folder/inner/"));
    EXPECT_TRUE(isWritable(u"folder"));
}

TEST_P(WritingItems, AFolderIsNotMadeWhereSomethingStands) {
    provider_->makeFile(u"folder/file", "content");
    for (const std::u16string path : {u"folder", u"folder/file"}) {
        expectError(vfs::resourceAlreadyExists, path, [&] { folderHandle(path).createFolder(); });
        expectError(vfs::resourceAlreadyExists, path, [&] { folderHandle(path).createFolderRecursive(); });
    }
    EXPECT_THAT(tree(u""), ElementsAre("folder/", "folder/file=content"));
}

TEST_P(WritingItems, AFolderIsNotMadeWithoutTheOneAboveIt) {
    provider_->makeFile(u"file", "content");
    for (const std::u16string path : {u"absent/folder", u"file/folder"}) {
        expectError(vfs::resourceNotFound, path, [&] { folderHandle(path).createFolder(); });
    }
    EXPECT_THAT(tree(u""), ElementsAre("file=content"));
}

TEST_P(WritingItems, TheFoldersAboveAreMadeWhenAskedFor) {
    folderHandle(u"one/two/three").createFolderRecursive();
    folderHandle(u"one/two/four").createFolderRecursive();
    EXPECT_THAT(tree(u""), ElementsAre("one/", "one/two/", "one/two/four/", "one/two/three/"));
}

TEST_P(WritingItems, WhatStandsInTheWayOfANewFolderIsNamed) {
    provider_->makeFile(u"one/file", "content");
    expectError(vfs::resourceAlreadyExists, u"one/file",
                [&] { folderHandle(u"one/file/three/four").createFolderRecursive(); });
    EXPECT_THAT(tree(u""), ElementsAre("one/", "one/file=content"));
}

TEST_P(WritingItems, ALocationThatGoesUpAgainIsWhatItLeadsTo) {
    provider_->makeFile(u"x/inner/file", "content");
    EXPECT_THAT(listed(u"x/inner/..", u""), ElementsAre(u"inner"));
    expectError(vfs::resourceAlreadyExists, u"x/..", [&] { folderHandle(u"x/..").createFolder(); });
    folderHandle(u"x/../new").createFolder();
    fileHandle(u"x/inner/../../x/inner/file").copyFile(fileHandle(u"x/../new/copy"), ReplaceWritable);
    fileHandle(u"new/../new/copy").moveFile(fileHandle(u"x/../new/./moved"), ReplaceWritable);
    EXPECT_THAT(tree(u"new"), ElementsAre("moved=content"));
    fileHandle(u"x/../new/moved").removeFile();
    folderHandle(u"x/../new").removeFolder(vfs::RemoveEmptyFolder);
    expectNothing(u"new");
}

TEST_P(WritingItems, WhatALocationThatGoesUpLeadsToIsNeitherRemovedNorMoved) {
    provider_->makeFile(u"x/inner/file", "content");
    provider_->makeFolder(u"taken");
    const auto before = tree(u"");
    for (const std::u16string path : {u"x/inner/..", u"x/."}) {
        for (const auto policy : {vfs::RemoveEmptyFolder, vfs::RemoveWithContents})
            expectError(vfs::invalidLocation, path, [&] { folderHandle(path).removeFolder(policy); });
        for (const std::u16string target : {u"new", u"taken"})
            expectError(vfs::invalidLocation, path, [&] { moveFolder(path, target, MergeFolder); });
    }
    expectError(vfs::invalidLocation, u"x/new",
                [&] { folderHandle(u"x/inner/..").copyFolder(folderHandle(u"x/new"), MergeFolder); });
    EXPECT_EQ(tree(u""), before);
}

TEST_P(WritingItems, NothingGoesUpFromWhatIsNotAFolder) {
    provider_->makeFile(u"file", "content");
    for (const std::u16string path : {u"file/../new", u"absent/../new"})
        expectError(vfs::resourceNotFound, path, [&] { folderHandle(path).createFolder(); });
    EXPECT_THAT(tree(u""), ElementsAre("file=content"));
}

TEST_P(WritingItems, AnyNameMayBeGivenToAFolder) {
    const std::u16string name{u'%', char16_t{0xDCE4}, u'?', u' '};
    folderHandle(name).createFolder();
    folderHandle(name + u"/" + name).createFolderRecursive();
    EXPECT_EQ(existence(name + u"/" + name), provider::AsFolder);
    EXPECT_THAT(listed(u"", u""), ElementsAre(name));
}

TEST_P(WritingItems, WriteProtectionIsSetAndTakenBack) {
    provider_->makeFile(u"folder/file");
    for (const std::u16string path : {u"folder/file", u"folder"}) {
        EXPECT_TRUE(isWritable(path));
        setFolderWritable(path, false);
        EXPECT_FALSE(isWritable(path));
        EXPECT_FALSE(provider_->hasWriteBits(path));
        fileHandle(path).setWritable(true);
        EXPECT_TRUE(isWritable(path));
        EXPECT_TRUE(provider_->hasWriteBits(path));
    }
}

TEST_P(WritingItems, WhatDoesNotExistIsAsWritableAsTheFolderThatWouldHoldIt) {
    provider_->makeFile(u"folder/file");
    EXPECT_TRUE(isWritable(u"folder/absent"));
    setFolderWritable(u"folder", false);
    EXPECT_FALSE(isWritable(u"folder/absent"));
    EXPECT_TRUE(isWritable(u"folder/file"));
    EXPECT_FALSE(isWritable(u"absent/below"));
    EXPECT_FALSE(isWritable(u"folder/file/below"));
}

TEST_P(WritingItems, WhatDoesNotExistCannotBeProtected) {
    provider_->makeFile(u"file");
    for (const std::u16string path : {u"absent", u"absent/file", u"file/below"}) {
        expectError(vfs::resourceNotFound, path, [&] { fileHandle(path).setWritable(false); });
        expectError(vfs::resourceNotFound, path, [&] { setFolderWritable(path, true); });
    }
}

TEST_P(WritingItems, TheAttributesOfAFolderTellWhetherItIsWritable) {
    provider_->makeFile(u"folder/file");
    EXPECT_TRUE(folderHandle(u"folder").getAttributes().isWritable());
    setFolderWritable(u"folder", false);
    EXPECT_FALSE(folderHandle(u"folder").getAttributes().isWritable());
    for (const std::u16string path : {u"absent", u"folder/file"}) {
        expectError(vfs::resourceNotFound, path, [&] { folderHandle(path).getAttributes(); });
    }
}

TEST_P(WritingItems, AListingTellsFilesAndFoldersApart) {
    provider_->makeFile(u"folder/file", "content");
    provider_->makeFile(u"folder/inner/file", "content");
    const auto listing = folderHandle(u"folder").listAll(u"");
    ASSERT_EQ(std::distance(listing.begin(), listing.end()), 2);
    const auto first = listing.begin();
    const auto second = std::next(first);
    EXPECT_EQ(first->getFileOrFolder().which(), 0);
    EXPECT_EQ(first->getLocation(), provider_->locationOf(u"folder/file"));
    EXPECT_EQ(second->getFileOrFolder().which(), 1);
    EXPECT_EQ(second->getLocation(), provider_->locationOf(u"folder/inner"));
    EXPECT_TRUE(vfs::exists(first->getFileOrFolder()));
    EXPECT_TRUE(vfs::exists(second->getFileOrFolder()));
}

TEST_P(WritingItems, AListingOfAnEmptyFolderIsEmpty) {
    provider_->makeFolder(u"folder");
    EXPECT_TRUE(folderHandle(u"folder").listAll(u"").empty());
    EXPECT_TRUE(folderHandle(u"folder").listAll(u"*").empty());
}

TEST_P(WritingItems, AListingIsSortedByUnitsOf16Bits) {
    // By code points the last two would change places.
    const std::u16string names[] = {u"A", u"B", u"a", u"b", u"\u00E4", u"\U0001F600", u"\uFF21"};
    for (const std::u16string& name : names)
        provider_->makeFile(u"folder/" + name);
    EXPECT_THAT(listed(u"folder", u""), ::testing::ElementsAreArray(names));
    EXPECT_THAT(listed(u"folder", u"*"), ::testing::ElementsAreArray(names));
}

TEST_P(WritingItems, PatternsAreMatchedAgainstNames) {
    for (const std::u16string name : {u"a.txt", u"b.txt", u"a.dat", u".hidden", u"abc", u"[a]"})
        provider_->makeFile(u"folder/" + name);
    provider_->makeFile(u"folder/t/below.txt");
    EXPECT_THAT(listed(u"folder", u"*.txt"), ElementsAre(u"a.txt", u"b.txt"));
    EXPECT_THAT(listed(u"folder", u"a*"), ElementsAre(u"a.dat", u"a.txt", u"abc"));
    EXPECT_THAT(listed(u"folder", u"?.txt"), ElementsAre(u"a.txt", u"b.txt"));
    EXPECT_THAT(listed(u"folder", u"?"), ElementsAre(u"t"));
    EXPECT_THAT(listed(u"folder", u"*d*"), ElementsAre(u".hidden", u"a.dat"));
    EXPECT_THAT(listed(u"folder", u"[a]"), ElementsAre(u"[a]"));
    EXPECT_THAT(listed(u"folder", u"abc"), ElementsAre(u"abc"));
    EXPECT_THAT(listed(u"folder", u"ABC"), IsEmpty());
    EXPECT_THAT(listed(u"folder", u"ab"), IsEmpty());
    EXPECT_THAT(listed(u"folder", u"t/*"), IsEmpty());
}

TEST_P(WritingItems, WhatIsNoFolderCannotBeListed) {
    provider_->makeFile(u"file");
    for (const std::u16string path : {u"absent", u"absent/folder", u"file", u"file/below"}) {
        expectError(vfs::resourceNotFound, path, [&] { listed(path, u""); });
        expectError(vfs::resourceNotFound, path, [&] { listed(path, u"name"); });
    }
}

TEST_P(WritingItems, TheRootCanBeListed) {
    provider_->makeFile(u"file");
    const vfs::Folder root(provider_->root(), provider_->storage());
    EXPECT_FALSE(root.listAll(u"").empty());
}

/// A folder that may not be written neither takes nor gives.
class WritingProtectedFolders : public WritingContract {
protected:
    void SetUp() override {
        provider_->makeFile(u"locked/file", "content");
        provider_->makeFile(u"locked/inner/file", "content");
        provider_->makeFile(u"source", "content");
        provider_->makeFile(u"folder/file", "content");
        folderHandle(u"locked").setWritable(false);
        before_ = tree(u"");
    }
    void TearDown() override { EXPECT_EQ(tree(u""), before_); }

    template <class Work>
    void expectDenied(const std::u16string& path, const Work& work) const {
        expectError(vfs::permissionDenied, path, work);
    }

    std::vector<std::string> before_;
};

INSTANTIATE_TEST_SUITE_P(Contract, WritingProtectedFolders,
                         testing::ValuesIn(providersWith(&Abilities::guardsFolders)), nameOfProvider);

TEST_P(WritingProtectedFolders, NothingIsPutIn) {
    for (const ReplacementPolicy policy : allPolicies) {
        expectDenied(u"locked/new", [&] { copyFile(u"source", u"locked/new", policy); });
        expectDenied(u"locked/new", [&] { moveFile(u"source", u"locked/new", policy); });
        expectDenied(u"locked/new", [&] { copyFolder(u"folder", u"locked/new", policy); });
        expectDenied(u"locked/new", [&] { moveFolder(u"folder", u"locked/new", policy); });
    }
    expectDenied(u"locked/new", [&] { folderHandle(u"locked/new").createFolder(); });
    expectDenied(u"locked/new", [&] { folderHandle(u"locked/new/further").createFolderRecursive(); });
}

TEST_P(WritingProtectedFolders, NothingIsReplaced) {
    for (const ReplacementPolicy policy : allPolicies) {
        expectDenied(u"locked/file", [&] { copyFile(u"source", u"locked/file", policy); });
        expectDenied(u"locked/file", [&] { moveFile(u"source", u"locked/file", policy); });
    }
    for (const ReplacementPolicy policy : mergingPolicies) {
        expectDenied(u"locked/file", [&] { copyFolder(u"folder", u"locked", policy); });
        expectDenied(u"locked/file", [&] { moveFolder(u"folder", u"locked", policy); });
    }
}

TEST_P(WritingProtectedFolders, NothingIsTakenOut) {
    expectDenied(u"locked/file", [&] { fileHandle(u"locked/file").removeFile(); });
    expectDenied(u"locked/inner", [&] { moveFolder(u"locked/inner", u"new", ReplaceWritable); });
    for (const ReplacementPolicy policy : allPolicies)
        expectDenied(u"locked/file", [&] { moveFile(u"locked/file", u"new", policy); });
}

TEST_P(WritingProtectedFolders, AFolderInsideIsNotRemoved) {
    provider_->makeFolder(u"outer/closed/empty");
    folderHandle(u"outer/closed").setWritable(false);
    expectDenied(u"outer/closed/empty",
                 [&] { folderHandle(u"outer").removeFolder(vfs::RemoveWithContents); });
    EXPECT_EQ(existence(u"outer/closed/empty"), provider::AsFolder);
    folderHandle(u"outer/closed").setWritable(true);
    folderHandle(u"outer").removeFolder(vfs::RemoveWithContents);
}

TEST_P(WritingProtectedFolders, WhatIsInAFolderInsideMayChange) {
    copyFile(u"source", u"locked/inner/file", ReplaceWritable);
    folderHandle(u"locked/inner/new").createFolder();
    folderHandle(u"locked/inner/new").removeFolder(vfs::RemoveEmptyFolder);
}

}  // namespace
}  // namespace korvex::tests
