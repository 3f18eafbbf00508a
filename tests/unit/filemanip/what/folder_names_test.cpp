// How a name is spelled on disk, and which names the policy that looks at case lets pass.
#include "io/filesystem/filemanip/what_folder_names.h"
#include "tests/unit/filemanip/what/what_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using namespace Velquist::PathManagement;
using testing::ElementsAre;
using testing::IsEmpty;

class WhatFolderNamesTest : public WhatTest {
protected:
    static std::u16string canonicalized(std::u16string name) {
        canonicalizeName(name);
        return name;
    }
};

TEST_F(WhatFolderNamesTest, NameTakesItsCanonicalForm) {
    makeFolders({"a/b"});
    makeFiles({"a/file"});
    link("link", "a");
    EXPECT_EQ(canonicalized(u"a/../a/b/"), path("a/b"));
    EXPECT_EQ(canonicalized(u"link/b"), path("a/b"));
    EXPECT_EQ(canonicalized(u"a/file"), path("a/file"));
}

TEST_F(WhatFolderNamesTest, LinkAndWhatIsNotThereKeepTheirNames) {
    makeFolders({"a"});
    link("link", "a");
    link("broken", "nowhere");
    for (const auto* name : {u"link", u"./broken", u"nothing", u"nothing/../a", u"memory://bad host", u""})
        EXPECT_EQ(canonicalized(name), name);
}

TEST_F(WhatFolderNamesTest, LocationOfALinkIsNone) {
    makeFolders({"a"});
    link("link", "a");
    EXPECT_TRUE(canonicalLocationOf(u"a"));
    EXPECT_FALSE(canonicalLocationOf(u"link"));
    EXPECT_FALSE(canonicalLocationOf(u"nothing"));
    EXPECT_THROW(canonicalLocationOf(u"memory://bad host"), foundation::storage::vfs::InvalidIRIException);
}

TEST_F(WhatFolderNamesTest, LettersAndDigitsMustAgreeWithTheTrueName) {
    makeFolders({"a b.c-1", "deep/Ünï"});
    EXPECT_TRUE(matchesCaseExactly(u"a b.c-1"));
    EXPECT_TRUE(matchesCaseExactly(u"./a b.c-1/"));
    EXPECT_TRUE(matchesCaseExactly(u"deep//Ünï"));
    EXPECT_TRUE(matchesCaseExactly(path("deep/Ünï")));
    // What has no true name is compared with itself.
    EXPECT_TRUE(matchesCaseExactly(u"A B.C-1"));
}

TEST_F(WhatFolderNamesTest, NameThatGoesRoundAboutIsSpelledDifferently) {
    makeFolders({"real/sub"});
    link("link", "real");
    EXPECT_TRUE(matchesCaseExactly(u"real/sub"));
    EXPECT_TRUE(matchesCaseExactly(u"link"));
    EXPECT_FALSE(matchesCaseExactly(u"link/sub"));
    EXPECT_FALSE(matchesCaseExactly(u"real/../real"));
}

TEST_F(WhatFolderNamesTest, WithRegardToCaseDotsLeadUpwardsOnlyInFrontOfAName) {
    makeFolders({"a/b", "real/sub"});
    link("link", "real");
    moveTo("a");
    EXPECT_THAT(foldersFor({u"..", u"-casesensitive"}), ElementsAre(here()));
    EXPECT_THAT(foldersFor({u"../real", u"-casesensitive"}), ElementsAre(here("real")));
    EXPECT_THAT(foldersFor({u"../link", u"-casesensitive"}), ElementsAre(here("real")));
    EXPECT_THAT(foldersFor({u"../link/sub", u"-casesensitive"}), IsEmpty());
    EXPECT_THAT(foldersFor({u"b/../b", u"-casesensitive"}), IsEmpty());
    EXPECT_EQ(printedBy({u"b/../b", u"-casesensitive"}), notFoundLine("b/../b"));
    EXPECT_THAT(foldersFor({u"b/../b"}), ElementsAre(here("a/b")));
}

TEST_F(WhatFolderNamesTest, SigilsOfExpressionsAreOrdinaryCharacters) {
    makeFolders({"a(b[c{d*e+f?g^h$i|j"});
    EXPECT_TRUE(matchesCaseExactly(u"a(b[c{d*e+f?g^h$i|j"));
    EXPECT_THAT(foldersFor({u"a(b[c{d*e+f?g^h$i|j", u"-casesensitive"}),
                ElementsAre(here("a(b[c{d*e+f?g^h$i|j")));
}

TEST_F(WhatFolderNamesTest, ResolvingTakesTheName) {
    makeFolders({"a"});
    std::u16string name = u"./a";
    EXPECT_EQ(resolveFolderName(DefaultMatching, name, true), path("a"));
    EXPECT_EQ(name, u"");
    name = u"./a";
    EXPECT_EQ(resolveFolderName(IgnoreCase, name, false), std::u16string(u"./a"));
    EXPECT_EQ(name, u"");
    name = u"./a";
    EXPECT_EQ(resolveFolderName(MatchCase, name, true), std::u16string(u"./a")) << "as it was given";
    EXPECT_EQ(name, u"");
    link("link", "a");
    makeFolders({"a/sub"});
    name = u"link/sub";
    EXPECT_EQ(resolveFolderName(MatchCase, name, true), std::nullopt);
    EXPECT_EQ(name, u"");
}

TEST_F(WhatFolderNamesTest, NameInTheWrongCaseIsNotFound) {
    makeFolders({"folder"});
    EXPECT_EQ(printedBy({u"FOLDER", u"-casesensitive"}), notFoundLine("FOLDER"));
    EXPECT_THAT(foldersFor({u"folder", u"-casesensitive"}), ElementsAre(here("folder")));
    EXPECT_THAT(foldersFor({u"folder"}), ElementsAre(here("folder")));
    EXPECT_THAT(foldersFor({u"folder", u"-caseinsensitive"}), ElementsAre(here("folder")));
}

}  // namespace
}  // namespace korvex::filemanip::tests
