// `delete`: one name without a wildcard. What is removed, what is warned of, and that the command goes on.
#include <filesystem>

#include "tests/unit/filemanip/delete/delete_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DeleteNamesTest : public DeleteTest {};

TEST_F(DeleteNamesTest, FilesGoByRelativeAndAbsolutePathsAndLocations) {
    make({"a", "d/b", "c", "two words", "50%"});
    EXPECT_THAT(deleteNames({u"a", u"d/b", pathOf(u"c"), u"file://" + pathOf(u"two%20words"), u"50%"}),
                IsEmpty());
    EXPECT_EQ(left(), Names{"d"});
    makeInBox({u"a", u"d/b"});
    EXPECT_THAT(deleteNames({u"memory://box/a", u"memory://box/d/b"}), IsEmpty());
    EXPECT_EQ(leftInBox(), Names{"d"});
}

TEST_F(DeleteNamesTest, ProtectedFilesGo) {
    make({"a"});
    fs::permissions(diskPath("a"), fs::perms(0444));
    makeInBox({u"a"});
    box_->setWritable(boxLocation(u"a"), false);
    EXPECT_THAT(deleteNames({u"a", u"memory://box/a"}), IsEmpty());
    EXPECT_EQ(left(), Names{});
    EXPECT_EQ(leftInBox(), Names{});
}

TEST_F(DeleteNamesTest, NamesThatAreNotThereAreWarnedOfAsTheyWereGiven) {
    EXPECT_THAT(
        deleteNames({u"nothing", u"./no/../thing", u"memory://box/nothing", u"memory://box/no/thing"}),
        ElementsAre(warning(KORVEX::DELETE::FileNotFound(u"nothing")),
                    warning(KORVEX::DELETE::FileNotFound(u"./no/../thing")),
                    warning(KORVEX::virtualfilesystem::resourceNotFound(u"memory://box/nothing")),
                    warning(KORVEX::virtualfilesystem::resourceNotFound(u"memory://box/no/thing"))));
}

TEST_F(DeleteNamesTest, EmptyNameIsNotFoundWithoutALook) {
    make({"a"});
    const Array emptyTexts[] = {text(u""), string(u"")};
    for (const Array& empty : emptyTexts) {
        EXPECT_EQ(call(bnFullDeleteFcn, 0, {empty.get()}).errorIdentifier, "");
        EXPECT_THAT(environment_.takeWarnings(), ElementsAre(warning(KORVEX::DELETE::FileNotFound(u""))));
    }
    EXPECT_THAT(local_->calls(), IsEmpty());
}

TEST_F(DeleteNamesTest, NamesOf1024UnitsEndTheCommandWithAnError) {
    make({"a", "b"});
    const std::u16string tooLong(1024, u'x');
    const Outcome outcome = outcomeOfArrays(text(u"a"), text(tooLong), text(u"b"));
    EXPECT_EQ(outcome.errorIdentifier, "KORVEX:DELETE:pathnameTooLong");
    EXPECT_THAT(outcome.errorArguments, ElementsAre(tooLong));
    EXPECT_EQ(left(), Names{"b"});
    EXPECT_EQ(outcomeOfArrays(text(std::u16string(5000, u'*'))).errorIdentifier,
              "KORVEX:DELETE:pathnameTooLong");
    EXPECT_EQ(outcomeOfArrays(text(u"memory://box/" + tooLong)).errorIdentifier,
              "KORVEX:DELETE:pathnameTooLong");
}

TEST_F(DeleteNamesTest, NamesOf1023UnitsGoToTheStorage) {
    const std::u16string longest(1023, u'x');
    local_->forgetCalls();
    EXPECT_THAT(deleteNames({longest}), ElementsAre(warning(KORVEX::DELETE::FileNotFound(longest))));
    EXPECT_FALSE(local_->calls().empty());
    std::u16string padded(1022, u'/');
    make({"a"});
    padded.replace(0, here_.size(), here_);
    EXPECT_THAT(deleteNames({padded + u"a"}), IsEmpty());
    EXPECT_EQ(left(), Names{});
}

TEST_F(DeleteNamesTest, FoldersStayWithAWarning) {
    make({"d/", "d/a"});
    makeInBox({u"d/a"});
    EXPECT_THAT(deleteNames({u"d", u"d/", pathOf(u"d"), u"memory://box/d", u"memory://box/", u"/"}),
                ElementsAre(warning(KORVEX::DELETE::DirectoryDeletion(u"d")),
                            warning(KORVEX::DELETE::DirectoryDeletion(u"d/")),
                            warning(KORVEX::DELETE::DirectoryDeletion(pathOf(u"d"))),
                            warning(KORVEX::DELETE::DirectoryDeletion(u"memory://box/d")),
                            warning(KORVEX::DELETE::DirectoryDeletion(u"memory://box/")),
                            warning(KORVEX::DELETE::DirectoryDeletion(u"/"))));
    EXPECT_TRUE(fs::exists(diskPath("d/a")));
    EXPECT_EQ(leftInBox(), Names{"d"});
}

TEST_F(DeleteNamesTest, DotsNameFoldersThatExist) {
    make({"a"});
    EXPECT_THAT(deleteNames({u".", u"..", u"./", u"a/../."}),
                ElementsAre(warning(KORVEX::DELETE::DirectoryDeletion(u".")),
                            warning(KORVEX::DELETE::DirectoryDeletion(u"..")),
                            warning(KORVEX::DELETE::DirectoryDeletion(u"./")),
                            warning(KORVEX::DELETE::FileNotFound(u"a/../."))));
    EXPECT_EQ(left(), Names{"a"});
}

TEST_F(DeleteNamesTest, DotsOfAFolderThatIsNotThereAreNotFound) {
    EXPECT_THAT(
        deleteNames({u"nothing/.", u"nothing/..", u"memory://box/nothing/.."}),
        ElementsAre(warning(KORVEX::DELETE::FileNotFound(u"nothing/.")),
                    warning(KORVEX::DELETE::FileNotFound(u"nothing/..")),
                    warning(KORVEX::virtualfilesystem::resourceNotFound(u"memory://box/nothing/.."))));
}

/// Lists an entry whatever is asked for, and knows of nothing itself.
class StorageThatListsAnything : public runtime::storage::Provider {
public:
    using AbsoluteIRI = runtime::storage::AbsoluteIRI;

    runtime::storage::ExistenceType existence(const AbsoluteIRI&) override {
        return foundation::storage::provider::AsNeither;
    }
    runtime::storage::ExistenceTypeExtended extendedExistence(const AbsoluteIRI& location) override {
        const bool isEntry = location.getName() == u"entry";
        return isEntry ? foundation::storage::provider::ExtendedFile
                       : foundation::storage::provider::ExtendedNothing;
    }
    runtime::storage::CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) override {
        return runtime::storage::CanonicalAbsoluteIRI(location);
    }
    std::vector<runtime::storage::ListedEntry> list(const AbsoluteIRI&, std::u16string_view) override {
        return {{.name = u"entry"}};
    }
    void removeFile(const AbsoluteIRI& file) override { removed.push_back(file.getName()); }

    Texts removed;
};

TEST_F(DeleteNamesTest, DotsAreNotFoundWhateverTheirListingHolds) {
    const auto provider = std::make_shared<StorageThatListsAnything>();
    auto system = std::make_shared<vfs::StorageSystem>();
    system->add(u"any", provider);
    const storage::ScopedStorageSystem scope(system);
    EXPECT_THAT(deleteNames({u"any://host/d/.", u"any://host/d/.."}),
                ElementsAre(warning(KORVEX::virtualfilesystem::resourceNotFound(u"any://host/d/.")),
                            warning(KORVEX::virtualfilesystem::resourceNotFound(u"any://host/d/.."))));
    EXPECT_THAT(provider->removed, IsEmpty());
    EXPECT_THAT(deleteNames({u"any://host/d/x"}), IsEmpty());
    EXPECT_THAT(provider->removed, ElementsAre(u"entry")) << "but what is listed for another name goes";
}

TEST_F(DeleteNamesTest, RootThatIsNotThereIsAnInvalidLocation) {
    auto system = std::make_shared<vfs::StorageSystem>();
    system->add(u"any", std::make_shared<StorageThatListsAnything>());
    const storage::ScopedStorageSystem scope(system);
    EXPECT_THAT(deleteNames({u"any://host/", u"any://host"}),
                ElementsAre(warning(KORVEX::virtualfilesystem::invalidLocation(u"any://host/")),
                            warning(KORVEX::virtualfilesystem::invalidLocation(u"any://host"))));
}

TEST_F(DeleteNamesTest, WebLocationsAreRefusedWithoutALook) {
    make({"a"});
    EXPECT_THAT(
        deleteNames({u"http://127.0.0.1:1/a", u"HTTPS://host/b", u"https://host", u"http://host/*", u"a"}),
        testing::AllOf(testing::SizeIs(4),
                       testing::Each(warning(KORVEX::virtualfileio::stream::writeNotAllowed()))));
    EXPECT_EQ(left(), Names{}) << "the next name is deleted";
}

TEST_F(DeleteNamesTest, LocationsThatDoNotParseAreWarnedOf) {
    make({"a"});
    EXPECT_THAT(deleteNames({u"memory:/box/a", u"memory:///a", u"http://no host/a", u"memory://",
                             u"memory://box*", u"a"}),
                ElementsAre(warning(KORVEX::virtualfilesystem::invalidIRI(u"memory:/box/a")),
                            warning(KORVEX::virtualfilesystem::invalidIRI(u"memory:///a")),
                            warning(KORVEX::virtualfilesystem::invalidIRI(u"http://no host/a")),
                            warning(KORVEX::virtualfilesystem::invalidIRI(u"memory://")),
                            warning(KORVEX::virtualfilesystem::invalidIRI(u"memory://box*"))));
    EXPECT_EQ(left(), Names{});
}

TEST_F(DeleteNamesTest, LocationOfASchemeWithoutAProviderIsWarnedOf) {
    make({"a"});
    EXPECT_THAT(deleteNames({u"gopher://host/a", u"gopher://host/*", u"a"}),
                ElementsAre(warning(KORVEX::virtualfilesystem::unsupportedProvider(u"gopher://host/a")),
                            warning(KORVEX::virtualfilesystem::unsupportedProvider(u"gopher://host/*"))));
    EXPECT_EQ(left(), Names{});
}

TEST_F(DeleteNamesTest, NameWithANulNamesNothing) {
    make({"a", "b"});
    const std::u16string name(u"a\0b", 3);
    EXPECT_THAT(deleteNames({name}), ElementsAre(warning(KORVEX::DELETE::FileNotFound(name))));
    EXPECT_EQ(left(), (Names{"a", "b"}));
}

TEST_F(DeleteNamesTest, NamesOfAnyBytesGo) {
    for (const char* name :
         {"caf\xE9", "\xFF", "line\nfeed", "gr\xC3\xBC\xC3\x9F", " blank ", "dot.", "back\\slash"})
        make({name});
    for (const std::string& name : left())
        EXPECT_THAT(deleteNames({runtime::text::fromBytes(name)}), IsEmpty()) << name;
    EXPECT_EQ(left(), Names{});
}

TEST_F(DeleteNamesTest, TheSameNameTwiceIsNotFoundTheSecondTime) {
    make({"a"});
    EXPECT_THAT(deleteNames({u"a", u"a"}), ElementsAre(warning(KORVEX::DELETE::FileNotFound(u"a"))));
}

TEST_F(DeleteNamesTest, SeparatorBehindAFileMakesNoDifference) {
    make({"a"});
    EXPECT_THAT(deleteNames({u"a/"}), IsEmpty());
    EXPECT_EQ(left(), Names{});
}

TEST_F(DeleteNamesTest, WayThatLeadsThroughAFileIsNotFound) {
    make({"a"});
    EXPECT_THAT(deleteNames({u"a/b"}), ElementsAre(warning(KORVEX::DELETE::FileNotFound(u"a/b"))));
    EXPECT_EQ(left(), Names{"a"});
}

TEST_F(DeleteNamesTest, WithoutACurrentFolderRelativeNamesAreAnError) {
    make({"gone/", "a"});
    runtime::dispatcher::setCurrentFolderPath(pathOf(u"gone"));
    fs::remove(diskPath("gone"));
    EXPECT_EQ(outcomeOfArrays(text(u"a")).errorIdentifier, "KORVEX:services:cwdIsInvalid");
    EXPECT_THAT(deleteNames({pathOf(u"a")}), IsEmpty());
    EXPECT_EQ(left(), Names{});
}

}  // namespace
}  // namespace korvex::filemanip::tests
