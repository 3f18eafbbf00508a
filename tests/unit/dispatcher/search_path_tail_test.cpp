// Which locations a text names, by the rules of either platform.
#include <gtest/gtest.h>

#include "runtime/dispatcher/search_path_tail.h"
#include "runtime/storage/location.h"

namespace korvex::runtime::dispatcher {
namespace {

namespace path_management = Velquist::PathManagement;
using paths::PathStyle;

bool names(std::u16string_view text, std::u16string path, CaseRule rule = CaseRule::exact,
           PathStyle style = PathStyle::posix) {
    return PathTail(text, style).names(storage::makeLocation(u"file", u"", std::move(path)), rule);
}
bool namesOnWindows(std::u16string_view text, std::u16string path) {
    return names(text, std::move(path), CaseRule::ignored, PathStyle::windows);
}

TEST(PathTailTest, NameIsThatOfTheLastComponent) {
    EXPECT_TRUE(names(u"solvers", u"/data/solvers"));
    EXPECT_TRUE(names(u"solvers", u"/solvers"));
    EXPECT_FALSE(names(u"solvers", u"/data/mysolvers"));
    EXPECT_FALSE(names(u"solvers", u"/data/solvers/linear"));
    EXPECT_FALSE(names(u"data", u"/data/solvers"));
}

TEST(PathTailTest, SeveralComponentsAreTheLastOnes) {
    EXPECT_TRUE(names(u"data/solvers", u"/home/data/solvers"));
    EXPECT_TRUE(names(u"home/data/solvers", u"/home/data/solvers"));
    EXPECT_FALSE(names(u"x/home/data/solvers", u"/home/data/solvers"));
    EXPECT_FALSE(names(u"ata/solvers", u"/home/data/solvers"));
    EXPECT_FALSE(names(u"home/solvers", u"/home/data/solvers"));
}

TEST(PathTailTest, DoubledSeparatorsAndOneAtTheEndDoNotCount) {
    EXPECT_TRUE(names(u"data//solvers/", u"/data/solvers"));
    EXPECT_TRUE(names(u"/data//solvers/", u"/data/solvers"));
}

TEST(PathTailTest, AbsolutePathIsThatFolderAndNoOther) {
    EXPECT_TRUE(names(u"/data/solvers", u"/data/solvers"));
    EXPECT_FALSE(names(u"/solvers", u"/data/solvers"));
    EXPECT_TRUE(names(u"/", u"/"));
    EXPECT_FALSE(names(u"/", u"/data"));
}

TEST(PathTailTest, DotsAreNamesThatNoFolderHas) {
    for (const auto* text : {u".", u"..", u"./solvers", u"data/../data/solvers", u"solvers/."})
        EXPECT_FALSE(names(text, u"/data/solvers"));
}

TEST(PathTailTest, TextWithoutANameNamesNothing) {
    EXPECT_FALSE(names(u"", u"/"));
    EXPECT_FALSE(names(u"", u"/data"));
    EXPECT_FALSE(names(u"solvers", u"/"));
}

TEST(PathTailTest, CaseCountsByTheRule) {
    EXPECT_FALSE(names(u"Data/SOLVERS", u"/data/solvers"));
    EXPECT_TRUE(names(u"Data/SOLVERS", u"/data/solvers", CaseRule::ignored));
    EXPECT_TRUE(names(u"/DATA/Solvers", u"/data/solvers", CaseRule::ignored));
    EXPECT_TRUE(names(u"STRASSE", u"/data/stra\u00DFe", CaseRule::ignored));
}

TEST(PathTailTest, BackSlashSeparatesOnWindowsOnly) {
    EXPECT_TRUE(namesOnWindows(u"data\\solvers", u"/C:/data/solvers"));
    EXPECT_TRUE(namesOnWindows(u"data/solvers\\", u"/C:/data/solvers"));
    EXPECT_FALSE(names(u"data\\solvers", u"/data/solvers"));
    EXPECT_TRUE(names(u"data\\solvers", u"/home/data\\solvers"));
}

TEST(PathTailTest, AbsolutePathsOfWindowsAreWhole) {
    EXPECT_TRUE(namesOnWindows(u"c:\\Data\\solvers", u"/C:/data/solvers"));
    EXPECT_FALSE(namesOnWindows(u"D:\\data\\solvers", u"/C:/data/solvers"));
    EXPECT_FALSE(namesOnWindows(u"C:\\solvers", u"/C:/data/solvers"));
    const PathTail onNetwork(u"\\\\host\\share\\a", PathStyle::windows);
    EXPECT_TRUE(onNetwork.names(storage::makeLocation(u"file", u"HOST", u"/share/a"), CaseRule::ignored));
    EXPECT_FALSE(onNetwork.names(storage::makeLocation(u"file", u"", u"/share/a"), CaseRule::ignored));
}

TEST(PathTailTest, OtherStoragesAreNamedByTheirTailsOnly) {
    const foundation::storage::vfs::AbsoluteIRI remote(u"memory://box/two%20words/solvers");
    const auto namesRemote = [&](std::u16string_view text) {
        return PathTail(text, PathStyle::posix).names(remote, CaseRule::exact);
    };
    EXPECT_TRUE(namesRemote(u"solvers"));
    EXPECT_TRUE(namesRemote(u"two words/solvers"));
    EXPECT_FALSE(namesRemote(u"/two words/solvers"));
    EXPECT_FALSE(namesRemote(u"box/two words/solvers"));
}

TEST(PathTailTest, LastNameIsTheLastComponent) {
    const auto lastName = [](std::u16string_view text) {
        return std::u16string(PathTail(text, PathStyle::posix).lastName());
    };
    EXPECT_EQ(lastName(u"a/@b/"), u"@b");
    EXPECT_EQ(lastName(u"/"), u"");
    EXPECT_EQ(lastName(u""), u"");
}

TEST(CaseRuleTest, DefaultIsThePlatforms) {
    using namespace path_management;
    for (const PathStyle style : {PathStyle::posix, PathStyle::windows}) {
        EXPECT_EQ(caseRuleOf(MatchCase, style), CaseRule::exact);
        EXPECT_EQ(caseRuleOf(IgnoreCase, style), CaseRule::ignored);
    }
    EXPECT_EQ(caseRuleOf(DefaultMatching, PathStyle::posix), CaseRule::exact);
    EXPECT_EQ(caseRuleOf(DefaultMatching, PathStyle::windows), CaseRule::ignored);
}

}  // namespace
}  // namespace korvex::runtime::dispatcher
