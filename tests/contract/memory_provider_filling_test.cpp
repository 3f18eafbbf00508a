// How the memory provider is filled: what the contract's tests take for granted.
#include "runtime/storage/providers/memory/memory_provider.h"

#include <gtest/gtest.h>

#include <functional>

namespace korvex::tests {
namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

using vfs::AbsoluteIRI;

class FillingMemory : public ::testing::Test {
protected:
    provider::ExistenceType existence(const std::u16string& text) {
        return memory_.existence(AbsoluteIRI(text));
    }
    void putFile(const std::u16string& text) { memory_.putFile(AbsoluteIRI(text), "content"); }
    void putFolder(const std::u16string& text) { memory_.putFolder(AbsoluteIRI(text)); }

    /// Expects the error, at this location.
    static void expectError(vfs::ErrorCode code, const std::u16string& text,
                            const std::function<void(const std::u16string&)>& put) {
        try {
            put(text);
            FAIL() << "no exception";
        } catch (const vfs::Exception& failure) {
            EXPECT_EQ(failure.getErrorCode(), code);
            EXPECT_EQ(failure.getLocation(), AbsoluteIRI(text));
        }
    }

    runtime::storage::MemoryProvider memory_;
};

TEST_F(FillingMemory, AnyHostIsARootThatIsThere) {
    EXPECT_EQ(existence(u"memory://never-heard-of/"), provider::AsFolder);
    EXPECT_EQ(existence(u"memory://never-heard-of/file"), provider::AsNeither);
}

TEST_F(FillingMemory, HostsAreTreesOfTheirOwn) {
    putFile(u"memory://box/file");
    EXPECT_EQ(existence(u"memory://box/file"), provider::AsFile);
    EXPECT_EQ(existence(u"memory://crate/file"), provider::AsNeither);
}

TEST_F(FillingMemory, NamesAreCaseSensitive) {
    putFile(u"memory://box/file");
    EXPECT_EQ(existence(u"memory://box/FILE"), provider::AsNeither);
}

TEST_F(FillingMemory, FoldersOnTheWayAreMade) {
    putFile(u"memory://box/one/two/file");
    putFolder(u"memory://box/three/four");
    EXPECT_EQ(existence(u"memory://box/one/two"), provider::AsFolder);
    EXPECT_EQ(existence(u"memory://box/three/four"), provider::AsFolder);
}

TEST_F(FillingMemory, WhatStandsThereMayBePutAgain) {
    putFile(u"memory://box/folder/file");
    putFile(u"memory://box/folder/file");
    putFolder(u"memory://box/folder");
    EXPECT_EQ(existence(u"memory://box/folder/file"), provider::AsFile);
}

TEST_F(FillingMemory, DotsAreWalked) {
    putFile(u"memory://box/one/../two/./file");
    EXPECT_EQ(existence(u"memory://box/one"), provider::AsFolder);
    EXPECT_EQ(existence(u"memory://box/two/file"), provider::AsFile);
}

TEST_F(FillingMemory, AFileDoesNotReplaceAFolder) {
    putFolder(u"memory://box/folder");
    const auto put = [this](const std::u16string& text) { putFile(text); };
    expectError(vfs::resourceAlreadyExists, u"memory://box/folder", put);
    expectError(vfs::resourceAlreadyExists, u"memory://box/", put);
    EXPECT_EQ(existence(u"memory://box/folder"), provider::AsFolder);
}

TEST_F(FillingMemory, AFolderDoesNotReplaceAFile) {
    putFile(u"memory://box/file");
    expectError(vfs::resourceAlreadyExists, u"memory://box/file",
                [this](const std::u16string& text) { putFolder(text); });
    EXPECT_EQ(existence(u"memory://box/file"), provider::AsFile);
}

TEST_F(FillingMemory, NothingGoesBelowAFile) {
    putFile(u"memory://box/file");
    for (const char16_t* const below : {u"memory://box/file/below", u"memory://box/file/below/further"}) {
        expectError(vfs::invalidLocation, below, [this](const std::u16string& text) { putFile(text); });
        expectError(vfs::invalidLocation, below, [this](const std::u16string& text) { putFolder(text); });
    }
    EXPECT_EQ(existence(u"memory://box/file"), provider::AsFile);
}

TEST_F(FillingMemory, AFileNeedsANameOfItsOwn) {
    const auto put = [this](const std::u16string& text) { putFile(text); };
    expectError(vfs::invalidLocation, u"memory://box/folder/..", put);
    expectError(vfs::invalidLocation, u"memory://box/folder/.", put);
}

}  // namespace
}  // namespace korvex::tests
