// What a query gives: the structure, its fields, and which of several matches.
#include <bit>
#include <cmath>
#include <cstdint>

#include "tests/support/posix/ordinary_user.h"
#include "tests/unit/filemanip/file_attributes/file_attributes_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;

class FileAttributesQueryTest : public FileAttributesTest {
protected:
    /// The structure of a query with two outputs.
    static Array query(const Words& words) {
        Outcome outcome = attrib(2, words);
        EXPECT_EQ(outcome.errorIdentifier, "");
        EXPECT_TRUE(logicals(outcome.outputs[0]).at(0));
        return std::move(outcome.outputs[1]);
    }
    static const kxArray* field(const Array& structure, const char* name, std::size_t index = 0) {
        return kxGetField(structure.get(), index, name);
    }
    static bool truth(const Array& structure, const char* name, std::size_t index = 0) {
        return kxGetLogicals(field(structure, name, index))[0];
    }
    static std::vector<std::u16string> namesOf(const Array& structure) {
        std::vector<std::u16string> names;
        for (std::size_t i = 0; i < kxGetNumberOfElements(structure.get()); ++i)
            names.push_back(charsOf(field(structure, "Name", i)));
        return names;
    }
};

TEST_F(FileAttributesQueryTest, FourteenFieldsStandInTheirOrder) {
    const Array structure = query({u"file"});
    std::vector<std::string> names;
    for (int number = 0; number < kxGetNumberOfFields(structure.get()); ++number)
        names.push_back(kxGetFieldNameByNumber(structure.get(), number));
    EXPECT_THAT(names, ElementsAre("Name", "archive", "system", "hidden", "directory", "UserRead",
                                   "UserWrite", "UserExecute", "GroupRead", "GroupWrite", "GroupExecute",
                                   "OtherRead", "OtherWrite", "OtherExecute"));
    EXPECT_THAT(dimensions(structure), ElementsAre(1, 1));
}

TEST_F(FileAttributesQueryTest, WhatThePlatformDoesNotHaveIsNaNOfOneBitPattern) {
    const Array structure = query({u"file"});
    for (const char* name :
         {"GroupRead", "GroupWrite", "GroupExecute", "OtherRead", "OtherWrite", "OtherExecute"}) {
        ASSERT_EQ(kxGetClassID(field(structure, name)), kxDOUBLE_CLASS);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(kxGetDoubles(field(structure, name))[0]), 0xFFF8000000000000U);
    }
}

TEST_F(FileAttributesQueryTest, AFileThatMayNotBeReadHasTheSameFields) {
    fs::permissions(scratch_.path(), fs::perms::all);
    const korvex::tests::OrdinaryUser user;
    scratch_.writeFile("unreadable");
    fs::permissions(scratch_.path() / "unreadable", fs::perms::owner_write);
    const Array structure = query({u"unreadable"});
    EXPECT_TRUE(truth(structure, "UserRead"));
    EXPECT_TRUE(truth(structure, "UserWrite"));
    EXPECT_TRUE(truth(structure, "UserExecute"));
    EXPECT_FALSE(truth(structure, "hidden"));
    for (const char* name : {"GroupRead", "OtherRead"})
        EXPECT_TRUE(std::isnan(kxGetDoubles(field(structure, name))[0])) << name;
}

TEST_F(FileAttributesQueryTest, TheRealFieldsAreLogicals) {
    EXPECT_EQ(resultOf({u"file", u"+h -w"}), "1");
    const Array structure = query({u"file"});
    for (const char* name :
         {"archive", "system", "hidden", "directory", "UserRead", "UserWrite", "UserExecute"})
        EXPECT_EQ(kxGetClassID(field(structure, name)), kxLOGICAL_CLASS) << name;
    EXPECT_EQ(namesOf(structure), Words{pathOf("file")});
    EXPECT_TRUE(truth(structure, "hidden"));
    EXPECT_FALSE(truth(structure, "UserWrite"));
    EXPECT_FALSE(truth(structure, "archive"));
    EXPECT_FALSE(truth(structure, "system"));
    EXPECT_FALSE(truth(structure, "directory"));
    EXPECT_TRUE(truth(structure, "UserRead"));
    EXPECT_TRUE(truth(structure, "UserExecute"));
}

TEST_F(FileAttributesQueryTest, ArchiveAndSystemAreNotMixedUp) {
    EXPECT_EQ(resultOf({u"file", u"+a"}), "1");
    EXPECT_TRUE(truth(query({u"file"}), "archive"));
    EXPECT_EQ(resultOf({u"file", u"-a +s"}), "1");
    EXPECT_FALSE(truth(query({u"file"}), "archive"));
    EXPECT_TRUE(truth(query({u"file"}), "system"));
}

TEST_F(FileAttributesQueryTest, WithoutANameItIsTheCurrentFolder) {
    for (const Words& words : {Words{}, Words{u""}, Words{u"."}, Words{u"x/.."}, Words{u"./."}}) {
        const Array structure = query(words);
        EXPECT_EQ(namesOf(structure), Words{scratch_.text()});
        EXPECT_TRUE(truth(structure, "directory"));
    }
}

TEST_F(FileAttributesQueryTest, DotsAreResolvedAsText) {
    EXPECT_EQ(namesOf(query({u"nothing/.././file"})), Words{pathOf("file")});
}

TEST_F(FileAttributesQueryTest, ASeparatorAtTheEndStaysInTheName) {
    EXPECT_EQ(namesOf(query({u"./"})), Words{scratch_.text() + u"/"});
    EXPECT_EQ(namesOf(query({u"file/"})), Words{pathOf("file/")});
}

TEST_F(FileAttributesQueryTest, AWildcardGivesAllItsMatchesInTheirOrder) {
    scratch_.makeFolder("many/b");
    scratch_.writeFile("many/c");
    scratch_.writeFile("many/a");
    scratch_.writeFile("many/b/below");
    const Array structure = query({u"many/*"});
    EXPECT_EQ(namesOf(structure), (Words{pathOf("many/a"), pathOf("many/b"), pathOf("many/c")}));
    EXPECT_THAT(dimensions(structure), ElementsAre(1, 3));
    EXPECT_TRUE(truth(structure, "directory", 1));
    EXPECT_FALSE(truth(structure, "directory", 2));
}

TEST_F(FileAttributesQueryTest, ALinkThatLeadsNowhereIsAMatchLikeAnyOther) {
    fs::create_symlink("nothing", scratch_.path() / "file-link");
    EXPECT_EQ(namesOf(query({u"file*"})), (Words{pathOf("file"), pathOf("file-link")}));
    EXPECT_EQ(namesOf(query({u"file-link"})), Words{pathOf("file-link")});
}

TEST_F(FileAttributesQueryTest, WithoutOutputsTheFirstMatchIsPrinted) {
    scratch_.writeFile("file2");
    const Outcome outcome = attrib(0, {u"file*"});
    EXPECT_EQ(outcome.outputs[0], nullptr);
    EXPECT_EQ(printed_, u"\n    Name: '" + pathOf("file") +
                            u"'\n    archive: 0\n    system: 0\n    hidden: 0\n    directory: 0\n"
                            u"    UserRead: 1\n    UserWrite: 1\n    UserExecute: 1\n    GroupRead: NaN\n"
                            u"    GroupWrite: NaN\n    GroupExecute: NaN\n    OtherRead: NaN\n"
                            u"    OtherWrite: NaN\n    OtherExecute: NaN\n\n");
}

TEST_F(FileAttributesQueryTest, OneOutputIsJustTrueAndNothingIsPrinted) {
    const Outcome outcome = attrib(1, {u"file"});
    EXPECT_TRUE(logicals(outcome.outputs[0]).at(0));
    EXPECT_EQ(printed_, u"");
}

TEST_F(FileAttributesQueryTest, TheThirdOutputIsEmpty) {
    const Outcome outcome = attrib(3, {u"file"});
    EXPECT_EQ(kxGetClassID(outcome.outputs[1].get()), kxSTRUCT_CLASS);
    EXPECT_EQ(kxGetClassID(outcome.outputs[2].get()), kxCHAR_CLASS);
    EXPECT_TRUE(kxIsEmpty(outcome.outputs[2].get()));
}

TEST_F(FileAttributesQueryTest, WhatIsNotThereIsAFailureWithoutAStructure) {
    for (const std::u16string name :
         {u"nothing", u"no*", u"nothing/file", u"file/below", u"memory://box/a"}) {
        EXPECT_EQ(resultOf({name}), cannotFind);
    }
    EXPECT_EQ(attrib(0, {u"nothing"}).errorIdentifier, "KORVEX:FILEATTRIB:CannotFindFile");
    EXPECT_EQ(printed_, u"");
}

TEST_F(FileAttributesQueryTest, AFailureOfTheStorageIsTheSystems) {
    local_->failAt(Operation::existence, locationOf("file"), {.code = vfs::ioError, .systemText = "Words"});
    const Outcome outcome = attrib(3, {u"file"});
    EXPECT_EQ(runtime::text::toDisplayBytes(charsOf(outcome.outputs[2].get())), "KORVEX:FILEATTRIB:OSError");
    EXPECT_NE(charsOf(outcome.outputs[1].get()).find(u"Words"), std::u16string::npos);
    local_->forgetFaults();
    local_->failAt(Operation::existence, locationOf("file"), {.code = vfs::permissionDenied});
    EXPECT_EQ(resultOf({u"file"}), systemError);
}

TEST_F(FileAttributesQueryTest, AFolderThatCannotBeListedHasNoMatches) {
    local_->failCall(Operation::list, 1, {.code = vfs::permissionDenied});
    EXPECT_EQ(resultOf({u"fil*"}), cannotFind);
}

/// Lists what goes right after it was seen.
class VanishingFile : public FaultInjectingProvider {
public:
    explicit VanishingFile(fs::path file)
        : FaultInjectingProvider(std::make_shared<runtime::storage::LocalProvider>()),
          file_(std::move(file)) {}

    std::vector<runtime::storage::ListedEntry> list(const vfs::AbsoluteIRI& folder,
                                                    std::u16string_view pattern) override {
        auto entries = FaultInjectingProvider::list(folder, pattern);
        fs::remove(file_);
        return entries;
    }

private:
    const fs::path file_;
};

TEST_F(FileAttributesQueryTest, AMatchThatVanishesAfterTheListingIsTheSystemsFailure) {
    scratch_.writeFile("file2");
    auto system = std::make_shared<vfs::StorageSystem>();
    system->add(u"file", std::make_shared<VanishingFile>(scratch_.path() / "file2"));
    const runtime::storage::ScopedStorageSystem vanishing(std::move(system));
    EXPECT_EQ(resultOf({u"file*"}), systemError);
    EXPECT_FALSE(fs::exists(scratch_.path() / "file2"));
    EXPECT_EQ(namesOf(query({u"file*"})), Words{pathOf("file")});
}

TEST_F(FileAttributesQueryTest, ACurrentFolderThatIsGoneIsTheSystemsFailureOrNothing) {
    runtime::dispatcher::setCurrentFolderPath(scratch_.makeFolder("gone").u16string());
    fs::remove(scratch_.path() / "gone");
    EXPECT_EQ(resultOf({u"file"}), systemError);
    EXPECT_EQ(resultOf({}), cannotFind);
    EXPECT_EQ(namesOf(query({pathOf("file")})), Words{pathOf("file")});
}

TEST_F(FileAttributesQueryTest, AQueryIsNeverRecursive) {
    scratch_.writeFile("tree/below");
    EXPECT_EQ(namesOf(query({u"tree"})), Words{pathOf("tree")});
}

}  // namespace
}  // namespace korvex::filemanip::tests
