// What a folder's name makes of it.
#include "runtime/dispatcher/path_entry_type.h"

#include <gtest/gtest.h>

namespace korvex::runtime::dispatcher {
namespace {

using namespace Velquist::PathManagement;
using paths::PathStyle;

TEST(PathEntryType, FollowsTheName) {
    for (const PathStyle style : {PathStyle::posix, PathStyle::windows}) {
        EXPECT_EQ(pathEntryType(u"data", style), OrdinaryFolder);
        EXPECT_EQ(pathEntryType(u"@solver", style), ClassFolder);
        EXPECT_EQ(pathEntryType(u"+linear", style), NamespaceFolder);
        EXPECT_EQ(pathEntryType(u"private", style), PrivateFolder);
        EXPECT_EQ(pathEntryType(u"resources", style), ResourcesFolder);
    }
}

TEST(PathEntryType, NeedsTheWholeWordAndANameBehindTheMark) {
    for (const char16_t* name : {u"", u"@", u"+", u"private2", u"my private", u"resource", u"a@b", u"/"}) {
        EXPECT_EQ(pathEntryType(name, PathStyle::windows), OrdinaryFolder);
    }
}

TEST(PathEntryType, ComparesAsThePlatformsNames) {
    EXPECT_EQ(pathEntryType(u"Private", PathStyle::posix), OrdinaryFolder);
    EXPECT_EQ(pathEntryType(u"Private", PathStyle::windows), PrivateFolder);
    EXPECT_EQ(pathEntryType(u"RESOURCES", PathStyle::windows), ResourcesFolder);
}

TEST(PathEntryType, IsGivenToTheModuleInThePlatformsStyle) {
    EXPECT_EQ(GetPathEntryTypeFromBaseName(u"+linear"), NamespaceFolder);
    EXPECT_EQ(GetPathEntryTypeFromBaseName(u"data"), OrdinaryFolder);
}

}  // namespace
}  // namespace korvex::runtime::dispatcher
