// The functions that were read from source files.
#include "runtime/dispatcher/function_cache.h"

#include <filesystem>

#include "tests/unit/dispatcher/environment.h"

namespace korvex::runtime::dispatcher {
namespace {

namespace vfs = foundation::storage::vfs;
using testing::ElementsAre;
using testing::IsEmpty;

class FunctionCacheTest : public EnvironmentTest {
protected:
    ~FunctionCacheTest() override {
        for (const CachedFunction& function : cachedFunctions())
            clearFunctionsOf(function.path);
    }

    static std::optional<vfs::ErrorCode> refusalOf(const std::u16string& path) {
        try {
            cacheFunction(path);
        } catch (const vfs::Exception& error) {
            return error.getErrorCode();
        }
        return std::nullopt;
    }
};

TEST(SourceFileName, EndsInOneOfTwoExtensionsWhateverTheirCase) {
    for (const char16_t* name : {u"a.k", u"a.K", u"a.klx", u"a.KLx", u"a.txt.k", u"/d.d/a.k"})
        EXPECT_TRUE(isSourceFileName(name));
    for (const char16_t* name : {u"", u"k", u"a", u"a.k.txt", u"a.kl", u"a.klxx", u"a.", u"d.k/a"})
        EXPECT_FALSE(isSourceFileName(name));
}

TEST_F(FunctionCacheTest, KeepsFunctionsInTheOrderOfReading) {
    scratch_.writeFile("b.k");
    scratch_.writeFile("a.klx");
    cacheFunction(u"b.k");
    cacheFunction(here_ + u"/./a.klx");
    EXPECT_THAT(cachedFunctions(),
                ElementsAre(CachedFunction{u"b", here_ + u"/b.k"}, CachedFunction{u"a", here_ + u"/a.klx"}));
}

TEST_F(FunctionCacheTest, FunctionOfTheSameFileIsReplaced) {
    scratch_.writeFile("a.k");
    scratch_.writeFile("b.k");
    cacheFunction(u"a.k");
    cacheFunction(u"b.k");
    cacheFunction(u"../" + here_.substr(here_.rfind(u'/') + 1) + u"/a.k");
    EXPECT_THAT(cachedFunctions(),
                ElementsAre(CachedFunction{u"b", here_ + u"/b.k"}, CachedFunction{u"a", here_ + u"/a.k"}));
}

TEST_F(FunctionCacheTest, WhatIsNoSourceFileIsRefused) {
    scratch_.writeFile("a.txt");
    scratch_.writeFile(".k");
    scratch_.makeFolder("folder.k");
    EXPECT_EQ(refusalOf(u"nothing.k"), vfs::resourceNotFound);
    EXPECT_EQ(refusalOf(u"a.txt"), vfs::invalidLocation);
    EXPECT_EQ(refusalOf(u".k"), vfs::invalidLocation);
    EXPECT_EQ(refusalOf(u"folder.k"), vfs::invalidLocation);
    EXPECT_EQ(refusalOf(u"memory://box/a.k"), vfs::unsupportedOperation);
    EXPECT_THAT(cachedFunctions(), IsEmpty());
}

TEST_F(FunctionCacheTest, FileThatIsGoneTakesItsFunctionAlong) {
    scratch_.writeFile("a.k");
    scratch_.writeFile("b.k");
    cacheFunction(u"a.k");
    cacheFunction(u"b.k");
    std::filesystem::remove(scratch_.path() / "a.k");
    kdClearFunctionsByName((here_ + u"/a.k").c_str());
    EXPECT_THAT(cachedFunctions(), ElementsAre(CachedFunction{u"b", here_ + u"/b.k"}));
    EXPECT_THAT(announced_, ElementsAre(EnvironmentEvent{Kind::functionsCleared, {here_ + u"/a.k"}}));
}

TEST_F(FunctionCacheTest, FileIsTheSameByWhateverWay) {
    scratch_.writeFile("real/a.k");
    std::filesystem::create_directory_symlink("real", scratch_.path() / "link");
    cacheFunction(u"link/a.k");
    std::filesystem::remove_all(scratch_.path() / "real");
    scratch_.makeFolder("real");
    clearFunctionsOf(here_ + u"/link/a.k");
    EXPECT_THAT(cachedFunctions(), IsEmpty());
}

TEST_F(FunctionCacheTest, LinkToASourceFileIsAFunctionOfItsOwnName) {
    scratch_.writeFile("real.k");
    std::filesystem::create_symlink("real.k", scratch_.path() / "link.k");
    cacheFunction(u"link.k");
    EXPECT_THAT(cachedFunctions(), ElementsAre(CachedFunction{u"link", here_ + u"/link.k"}));
    clearFunctionsOf(u"link.k");
    EXPECT_THAT(cachedFunctions(), IsEmpty());
}

TEST_F(FunctionCacheTest, ClearingAFileForgetsTheViewOfItsFolderAndNoOther) {
    scratch_.writeFile("real/a.k");
    scratch_.writeFile("b.k");
    std::filesystem::create_directory_symlink("real", scratch_.path() / "link");
    for (const std::u16string& path : {here_ + u"/real/a.k", std::u16string(u"link/a.k")}) {
        scratch_.writeFile("real/a.k");
        forgetFolderViews();
        const vfs::CanonicalAbsoluteIRI holder(location(here_ + u"/real"));
        const vfs::CanonicalAbsoluteIRI above(location(here_));
        const auto kept = folderView(above);
        EXPECT_THAT(folderView(holder)->sourceFiles, ElementsAre(u"a.k"));
        std::filesystem::remove(scratch_.path() / "real/a.k");
        clearFunctionsOf(path);
        EXPECT_THAT(folderView(holder)->sourceFiles, IsEmpty());
        EXPECT_EQ(folderView(above), kept);
    }
}

TEST_F(FunctionCacheTest, FileThatIsGoneIsNotFoundAnyMoreOnceItWasCleared) {
    scratch_.writeFile("a.k");
    EXPECT_EQ(findSourceFile(u"a").size(), 1U);
    std::filesystem::remove(scratch_.path() / "a.k");
    clearFunctionsOf(here_ + u"/a.k");
    EXPECT_THAT(findSourceFile(u"a"), IsEmpty());
}

TEST_F(FunctionCacheTest, ClearingWhatIsNotCachedIsAnnouncedAllTheSame) {
    scratch_.writeFile("a.k");
    cacheFunction(u"a.k");
    for (const char16_t* path : {u"/nothing.k", u""})
        clearFunctionsOf(path);
    EXPECT_EQ(cachedFunctions().size(), 1U);
    EXPECT_THAT(announced_, ElementsAre(EnvironmentEvent{Kind::functionsCleared, {u"/nothing.k"}},
                                        EnvironmentEvent{Kind::functionsCleared, {u""}}));
}

}  // namespace
}  // namespace korvex::runtime::dispatcher
