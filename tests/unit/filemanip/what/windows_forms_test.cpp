// `what` where there are paths of the network and short names: over stand-ins for the platform's functions.
#include <algorithm>
#include <cstring>
#include <map>

#include "io/filesystem/filemanip/what_folder_names.h"
#include "platform/filesystem_shared.h"
#include "platform/short_path_names.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"
#include "tests/unit/filemanip/what/what_fixture.h"

namespace {

/// Short forms and what they stand for, and how often each was asked for.
struct ShortNames {
    std::map<std::u16string, std::u16string> shortForms;
    std::map<std::u16string, std::u16string> longForms;
    int asked = 0;
};

ShortNames& shortNames() {
    static ShortNames names;
    return names;
}

unsigned long lookUp(const std::map<std::u16string, std::u16string>& forms, const char16_t* path,
                     char16_t* buffer, unsigned long units) {
    ++shortNames().asked;
    const auto form = forms.find(path);
    if (form == forms.end()) return 0;
    const std::u16string text = form->second;
    if (text.size() >= units) return static_cast<unsigned long>(text.size() + 1);
    std::copy_n(text.c_str(), text.size() + 1, buffer);
    return static_cast<unsigned long>(text.size());
}

}  // namespace

unsigned long GetShortPathNameW(const char16_t* path, char16_t* buffer, unsigned long units) {
    return lookUp(shortNames().shortForms, path, buffer, units);
}

unsigned long GetLongPathNameW(const char16_t* path, char16_t* buffer, unsigned long units) {
    return lookUp(shortNames().longForms, path, buffer, units);
}

namespace filesystemSharedFcns {

namespace paths = korvex::runtime::paths;

bool containsDotOrDotDotExpression(const std::u16string&) { return false; }
bool isSymlink(const std::u16string&) { return false; }
bool isPathSeparator(const char16_t& unit) noexcept {
    return paths::isSeparator(unit, paths::PathStyle::windows);
}
bool startsWithSlashSlashOnWindows(const std::u16string& text) noexcept {
    return paths::startsWithTwoSeparators(text, paths::PathStyle::windows);
}
/// "/" is what the disk below understands; so the slashes go that way round here.
void replaceSlashesOnWindows(std::u16string& path) { std::ranges::replace(path, u'\\', u'/'); }
void trimTrailingSlash(std::u16string& path) {
    while (path.ends_with(u'/'))
        path.pop_back();
}

}  // namespace filesystemSharedFcns

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WhatWindowsFormsTest : public WhatTest {
protected:
    WhatWindowsFormsTest() { shortNames() = ShortNames(); }

    static std::u16string canonicalized(std::u16string name) {
        canonicalizeName(name);
        return name;
    }
};

TEST_F(WhatWindowsFormsTest, NetworkPathStaysAsItWasGivenButForItsEnd) {
    makeFiles({"share/x.k"});
    const std::u16string network = u"/" + path("share");
    EXPECT_EQ(printedBy({network}), block("/" + here("share"), "x"));
    EXPECT_THAT(foldersFor({network + u"//"}), ElementsAre("/" + here("share")));
    std::u16string typed = network + u'\\';
    std::ranges::replace(typed, u'/', u'\\');
    EXPECT_THAT(foldersFor({typed}), ElementsAre("/" + here("share")));
}

TEST_F(WhatWindowsFormsTest, NetworkPathIsNeverLookedUpOnTheSearchPath) {
    putOnPath({"p"});
    EXPECT_THAT(foldersFor({u"/" + path("p")}), ElementsAre("/" + here("p"))) << "not the one of the path";
    EXPECT_EQ(printedBy({u"\\\\host\\p\\"}), notFoundLine("\\\\host\\p\\"));
}

TEST_F(WhatWindowsFormsTest, BackSlashesOfALocalPathAreTurned) {
    makeFolders({"a/b"});
    EXPECT_THAT(foldersFor({u"a\\b"}), ElementsAre(here("a/b")));
}

// A text that is no location makes the storage layer refuse it; then the short form is asked.

TEST_F(WhatWindowsFormsTest, NameWithoutALocationIsSpelledThroughItsShortForm) {
    shortNames().shortForms[u"memory://bad host"] = u"BAD~1";
    shortNames().longForms[u"BAD~1"] = u"Bad Host";
    EXPECT_EQ(canonicalized(u"memory://bad host"), u"Bad Host");
    EXPECT_EQ(shortNames().asked, 2);
}

TEST_F(WhatWindowsFormsTest, NameWithoutAShortFormOrAWayBackStays) {
    EXPECT_EQ(canonicalized(u"memory://bad host"), u"memory://bad host");
    EXPECT_EQ(shortNames().asked, 1);
    shortNames().shortForms[u"memory://bad host"] = u"BAD~1";
    EXPECT_EQ(canonicalized(u"memory://bad host"), u"memory://bad host");
}

TEST_F(WhatWindowsFormsTest, FormThatDoesNotFitLeavesTheName) {
    shortNames().shortForms[u"memory://bad host"] = u"BAD~1";
    shortNames().longForms[u"BAD~1"] = std::u16string(1024, u'n');
    EXPECT_EQ(canonicalized(u"memory://bad host"), std::u16string(1024, u'n')) << "just fits";
    shortNames().longForms[u"BAD~1"] = std::u16string(1025, u'n');
    EXPECT_EQ(canonicalized(u"memory://bad host"), u"memory://bad host");
}

TEST_F(WhatWindowsFormsTest, NameThatTheStorageSpellsNeedsNoShortForm) {
    makeFolders({"a"});
    EXPECT_EQ(canonicalized(u"./a"), path("a"));
    EXPECT_EQ(canonicalized(u"nothing"), u"nothing");
    EXPECT_EQ(shortNames().asked, 0);
}

TEST_F(WhatWindowsFormsTest, TrueSpellingInAnotherCaseIsNotFoundWithRegardToCase) {
    shortNames().shortForms[u"memory://bad host"] = u"BAD~1";
    shortNames().longForms[u"BAD~1"] = u"memory://Bad Host";
    EXPECT_FALSE(matchesCaseExactly(u"memory://bad host"));
    shortNames().longForms[u"BAD~1"] = u"x:/memory---bad--host";
    EXPECT_TRUE(matchesCaseExactly(u"memory://bad host")) << "only letters and digits count";
    shortNames().longForms[u"BAD~1"] = u"memory-badhost";
    EXPECT_TRUE(matchesCaseExactly(u"memory://bad host"));
    shortNames().longForms[u"BAD~1"] = u"mem-ory-bad-host";
    EXPECT_FALSE(matchesCaseExactly(u"memory://bad host")) << "nothing comes between letters";
    shortNames().longForms[u"BAD~1"] = u"memory-bad-host-2";
    EXPECT_FALSE(matchesCaseExactly(u"memory://bad host")) << "it must stand at the end";
}

}  // namespace
}  // namespace korvex::filemanip::tests
