// Locations: parsing, encoding, and the relations between them.
#include <gtest/gtest.h>

#include "platform/storage_utility.h"
#include "platform/storage_vfs.h"

namespace {

using foundation::storage::utility::decodeURL;
using foundation::storage::utility::hasValidNumberOfSlashes;
namespace vfs = foundation::storage::vfs;
using vfs::AbsoluteIRI;

std::u16string decoded(std::u16string text) {
    decodeURL(text);
    return text;
}

TEST(LocationTest, SchemePrefixNeedsTwoLettersColonAndSlash) {
    EXPECT_TRUE(vfs::hasIRIPrefix(u"http://x"));
    EXPECT_TRUE(vfs::hasIRIPrefix(u"a1+-.:/"));
    EXPECT_FALSE(vfs::hasIRIPrefix(u"C:/x"));
    EXPECT_FALSE(vfs::hasIRIPrefix(u"C:\\x"));
    EXPECT_FALSE(vfs::hasIRIPrefix(u"1a:/x"));
    EXPECT_FALSE(vfs::hasIRIPrefix(u"mailto:x"));
    EXPECT_FALSE(vfs::hasIRIPrefix(u"a_b:/x"));
    EXPECT_FALSE(vfs::hasIRIPrefix(u"http:"));
    EXPECT_FALSE(vfs::hasIRIPrefix(u""));
}

TEST(LocationTest, LocalLocationsHaveThreeSlashesOrTwoAndAHost) {
    EXPECT_TRUE(hasValidNumberOfSlashes(u"file:///a"));
    EXPECT_TRUE(hasValidNumberOfSlashes(u"file:///"));
    EXPECT_TRUE(hasValidNumberOfSlashes(u"file://host/a"));
    EXPECT_TRUE(hasValidNumberOfSlashes(u"FILE:///a"));
    EXPECT_FALSE(hasValidNumberOfSlashes(u"file:/a"));
    EXPECT_FALSE(hasValidNumberOfSlashes(u"file://"));
    EXPECT_FALSE(hasValidNumberOfSlashes(u"file:////a"));
}

TEST(LocationTest, OtherLocationsHaveTwoSlashes) {
    EXPECT_TRUE(hasValidNumberOfSlashes(u"http://host"));
    EXPECT_TRUE(hasValidNumberOfSlashes(u"memory://box/a//b"));
    EXPECT_FALSE(hasValidNumberOfSlashes(u"http:/host"));
    EXPECT_FALSE(hasValidNumberOfSlashes(u"http:///host"));
    EXPECT_FALSE(hasValidNumberOfSlashes(u"/a/b"));
}

class InvalidLocationTest : public testing::TestWithParam<const char16_t*> {};

TEST_P(InvalidLocationTest, DoesNotParse) {
    const std::u16string text = GetParam();
    try {
        AbsoluteIRI location(text);
        FAIL() << "parsed";
    } catch (const vfs::InvalidIRIException& error) {
        EXPECT_EQ(error.getInvalidIRIString(), text);
        EXPECT_STRNE(error.what(), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, InvalidLocationTest,
                         testing::Values(u"", u"/a/b", u"a", u"memory://box", u"http://host", u"file://host",
                                         u"file:/a", u"http:///a", u"http://ho st/a", u"http://ho\tst/a",
                                         u"http://ho\u0001st/", u"http://?x", u"http://h?q=/x",
                                         u"memory://h?x/y", u"http://h#f/", u"file://h?x/y", u"C:/a"));

TEST(LocationTest, ParsingReadsSchemeInSmallLettersAndDecodesName) {
    const AbsoluteIRI location(u"MEMORY://Box/Folder/a%20b%25.txt");
    EXPECT_EQ(location.getScheme(), u"memory");
    EXPECT_EQ(location.getName(), u"a b%.txt");
    EXPECT_EQ(location.toString(), u"memory://Box/Folder/a%20b%25.txt");
}

TEST(LocationTest, TextEncodesJustWhatCannotStandInIt) {
    EXPECT_EQ(AbsoluteIRI(u"memory://box/a b?c#d%zz\u00e9\n").toString(),
              u"memory://box/a%20b%3Fc%23d%25zz\u00e9%0A");
}

TEST(LocationTest, EncodedTextNamesTheSameLocation) {
    const AbsoluteIRI typed(u"memory://box/a b?");
    EXPECT_EQ(AbsoluteIRI(typed.toString()), typed);
    EXPECT_TRUE(std::u16string(u"memory://box/a%20b%3F") == typed);
}

TEST(LocationTest, BytesThatAreNoTextSurviveTheText) {
    const std::u16string name = {u'a', 0xDCFF, 0xDCE9, u'b'};
    const AbsoluteIRI child(AbsoluteIRI(u"file:///tmp"), name);
    EXPECT_EQ(child.toString(), u"file:///tmp/a%FF%E9b");
    EXPECT_EQ(AbsoluteIRI(child.toString()).getName(), name);
}

TEST(LocationTest, SurrogatePairsAreNotTakenForBytes) {
    const std::u16string name = {0xD83D, 0xDCC4};  // a low surrogate in the range that stands for bytes
    EXPECT_EQ(AbsoluteIRI(AbsoluteIRI(u"memory://b/"), name).toString(), u"memory://b/" + name);
}

TEST(LocationTest, DecodingUndoesEscapesAndLeavesTheRest) {
    EXPECT_EQ(decoded(u"a%20b"), u"a b");
    EXPECT_EQ(decoded(u"%C3%A9"), u"\u00e9");
    EXPECT_EQ(decoded(u"100%"), u"100%");
    EXPECT_EQ(decoded(u"%4"), u"%4");
    EXPECT_EQ(decoded(u"%zz%2F"), u"%zz/");
    EXPECT_EQ(decoded(u"%E9"), std::u16string(1, 0xDCE9));
    EXPECT_EQ(decoded(u"%2525"), u"%25");
    EXPECT_EQ(decoded(u""), u"");
}

TEST(LocationTest, RootsHaveTheNameSlashAndNoParent) {
    for (const char16_t* text : {u"memory://box/", u"http://host/", u"file:///", u"http://host/?q=/x"}) {
        const AbsoluteIRI root{std::u16string(text)};
        EXPECT_EQ(root.getName(), u"/");
        EXPECT_FALSE(root.hasParent());
        EXPECT_THROW(root.getParent(), vfs::Exception);
    }
}

TEST(LocationTest, SlashesAtTheEndOfAWebLocationAreNoPartOfItsName) {
    const AbsoluteIRI root(u"http://h//");
    EXPECT_EQ(root.getName(), u"/");
    EXPECT_FALSE(root.hasParent());
    const AbsoluteIRI folder(u"http://h/a//");
    EXPECT_EQ(folder.getName(), u"a");
    EXPECT_EQ(folder.toString(), u"http://h/a//");
    EXPECT_EQ(folder.getParent().toString(), u"http://h/");
}

TEST(LocationTest, DoubledSlashesInsideOfAWebLocationStay) {
    const AbsoluteIRI folder(u"http://h/a//b");
    const AbsoluteIRI child(folder, u"c");
    EXPECT_EQ(child.toString(), u"http://h/a//b/c");
    EXPECT_EQ(child.getName(), u"c");
    EXPECT_EQ(child.getParent(), folder);
}

TEST(LocationTest, ParentsLeadUpToTheRoot) {
    const AbsoluteIRI location(u"memory://box/a/b");
    EXPECT_EQ(location.getParent().toString(), u"memory://box/a");
    EXPECT_EQ(location.getParent().getParent().toString(), u"memory://box/");
    EXPECT_EQ(AbsoluteIRI(u"http://h/a/b.txt?x=/y").getParent().toString(), u"http://h/a");
}

TEST(LocationTest, WebLocationKeepsItsQueryAndEscapesAsTyped) {
    const AbsoluteIRI location(u"http://h:8080/a%2Fb/c%20d.txt?q=1 2#f");
    EXPECT_EQ(location.toString(), u"http://h:8080/a%2Fb/c%20d.txt?q=1%202#f");
    EXPECT_EQ(location.getName(), u"c d.txt");
}

TEST(LocationTest, ChildrenAreAppendedWithoutDoublingSeparators) {
    EXPECT_EQ(AbsoluteIRI(AbsoluteIRI(u"memory://box/"), u"a").toString(), u"memory://box/a");
    EXPECT_EQ(AbsoluteIRI(AbsoluteIRI(u"file:///a"), u"b/c").toString(), u"file:///a/b/c");
    EXPECT_EQ(AbsoluteIRI(AbsoluteIRI(u"http://h/a"), u"b c").toString(), u"http://h/a/b%20c");
}

TEST(LocationTest, AncestorsAreToldByWholeComponents) {
    const AbsoluteIRI a(u"memory://box/a");
    EXPECT_TRUE(a.isAncestorOf(AbsoluteIRI(u"memory://box/a/b/c")));
    EXPECT_TRUE(AbsoluteIRI(u"memory://box/").isAncestorOf(a));
    EXPECT_FALSE(a.isAncestorOf(a));
    EXPECT_FALSE(a.isAncestorOf(AbsoluteIRI(u"memory://box/ab")));
    EXPECT_FALSE(a.isAncestorOf(AbsoluteIRI(u"memory://other/a/b")));
    EXPECT_FALSE(AbsoluteIRI(u"memory://box/a/b").isAncestorOf(a));
}

TEST(LocationTest, HostOfThisMachineIsNoHost) {
    EXPECT_EQ(AbsoluteIRI(u"file://localhost/a"), AbsoluteIRI(u"file:///a"));
    EXPECT_EQ(AbsoluteIRI(u"file://server/a").toString(), u"file://server/a");
}

}  // namespace
