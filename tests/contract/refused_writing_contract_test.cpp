// What providers that only read say to everything else.
#include "tests/contract/writing_contract.h"

namespace korvex::tests {
namespace {

std::vector<ProviderCase> readingProviders() {
    std::vector<ProviderCase> found;
    for (const ProviderCase& tested : allProviders()) {
        if (!tested.abilities.canWrite) found.push_back(tested);
    }
    return found;
}

class RefusedWriting : public WritingContract {
protected:
    template <class Work>
    void expectReadOnly(const std::u16string& path, const Work& work) const {
        expectError(vfs::readOnlyProvider, path, work);
    }
};

INSTANTIATE_TEST_SUITE_P(Contract, RefusedWriting, testing::ValuesIn(readingProviders()), nameOfProvider);

TEST_P(RefusedWriting, NothingIsWritten) {
    provider_->makeFile(u"file");
    for (const ReplacementPolicy policy : allPolicies) {
        expectReadOnly(u"copy", [&] { copyFile(u"file", u"copy", policy); });
        expectReadOnly(u"file", [&] { moveFile(u"file", u"moved", policy); });
        expectReadOnly(u"copy", [&] { copyFolder(u"folder", u"copy", policy); });
        expectReadOnly(u"folder", [&] { moveFolder(u"folder", u"moved", policy); });
    }
    expectReadOnly(u"file", [&] { fileHandle(u"file").removeFile(); });
    expectReadOnly(u"folder", [&] { folderHandle(u"folder").removeFolder(vfs::RemoveWithContents); });
    expectReadOnly(u"new", [&] { folderHandle(u"new").createFolder(); });
    expectReadOnly(u"new/further", [&] { folderHandle(u"new/further").createFolderRecursive(); });
    EXPECT_EQ(existence(u"file"), provider::AsFile);
}

TEST_P(RefusedWriting, NothingIsWritableNorCanBeMadeSo) {
    provider_->makeFile(u"file");
    EXPECT_FALSE(vfs::isWritable(fileHandle(u"file")));
    EXPECT_FALSE(vfs::isWritable(fileHandle(u"absent")));
    EXPECT_FALSE(vfs::isWritable(folderHandle(u"absent")));
    expectReadOnly(u"file", [&] { fileHandle(u"file").setWritable(true); });
    expectReadOnly(u"file", [&] { folderHandle(u"file").setWritable(false); });
}

TEST_P(RefusedWriting, NothingIsListed) {
    provider_->makeFile(u"folder/file");
    expectError(vfs::unsupportedOperation, u"folder", [&] { folderHandle(u"folder").listAll(u""); });
}

}  // namespace
}  // namespace korvex::tests
