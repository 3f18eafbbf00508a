// Which names are of which kind, and the cell that a group becomes.
#include <gtest/gtest.h>

#include <optional>

#include "io/filesystem/filemanip/what_classification.h"
#include "runtime/text/encoding.h"
#include "tests/unit/filemanip/dir_listing/listing_outcome.h"

namespace korvex::filemanip::tests {
namespace {

enum class Kind { file, folder };

struct NameOfKind {
    const char16_t* name;
    Kind kind;
    /// The group's field; null for none.
    const char* group;
};

void PrintTo(const NameOfKind& row, std::ostream* stream) {
    *stream << runtime::text::toDisplayBytes(row.name) << (row.kind == Kind::folder ? " (folder)" : "");
}

WhatFolderContents contentsOf(std::initializer_list<std::u16string> names, Kind kind = Kind::file) {
    WhatFolderContents contents;
    const auto folder = std::make_shared<const std::u16string>(u"/folder");
    for (const std::u16string& name : names) {
        FileNameWithStatLight& entry = contents.entries.emplace_back();
        entry.name = name;
        entry.folder = folder;
        entry.isDirectory = kind == Kind::folder;
    }
    classifyEntries(contents);
    return contents;
}

std::optional<std::string> groupOf(const WhatFolderContents& contents) {
    std::optional<std::string> group;
    for (std::size_t i = 0; i < whatGroups; ++i) {
        if (contents.groups[i].empty()) continue;
        EXPECT_FALSE(group) << "no name is in two groups";
        group = whatGroupNames[i].field;
    }
    return group;
}

class WhatClassificationTest : public testing::TestWithParam<NameOfKind> {};

TEST_P(WhatClassificationTest, NameIsInItsGroupAndInNoOther) {
    const NameOfKind& row = GetParam();
    const std::optional<std::string> expected =
        row.group == nullptr ? std::nullopt : std::optional<std::string>(row.group);
    EXPECT_EQ(groupOf(contentsOf({row.name}, row.kind)), expected);
}

constexpr NameOfKind kinds[] = {
    {u"solve.k", Kind::file, "k"},          {u"a.klapp", Kind::file, "klapp"},
    {u"a.kapp", Kind::file, "kapp"},        {u"a.klx", Kind::file, "klx"},
    {u"a.kat", Kind::file, "kat"},          {u"a.kexw64", Kind::file, "kex"},
    {u"a.kdl", Kind::file, "kdl"},          {u"a.zlx", Kind::file, "zlx"},
    {u"a.zfx", Kind::file, "zfx"},          {u"x.p", Kind::file, "p"},
    {u"@MyClass", Kind::folder, "classes"}, {u"+pack", Kind::folder, "packages"},
    {u"A1_b_2.k", Kind::file, "k"},         {u"Z.p", Kind::file, "p"},
    {u"@a", Kind::folder, "classes"},       {u"+p_1", Kind::folder, "packages"},
};
INSTANTIATE_TEST_SUITE_P(Kinds, WhatClassificationTest, testing::ValuesIn(kinds));

constexpr NameOfKind marks[] = {
    {u"@abc", Kind::file, "classes"},  // the folder flag is not looked at
    {u"+abc", Kind::file, "packages"},  {u"@1abc", Kind::folder, nullptr},   {u"+a-b", Kind::folder, nullptr},
    {u"@", Kind::folder, nullptr},      {u"+", Kind::folder, nullptr},       {u"@_a", Kind::folder, nullptr},
    {u"@@a", Kind::folder, nullptr},    {u"@+a", Kind::folder, nullptr},     {u"@a.k", Kind::file, nullptr},
    {u"+x.k", Kind::file, nullptr},     {u"+x.kat", Kind::file, "kat"},      {u"@1.kat", Kind::file, "kat"},
    {u"+x.kat", Kind::folder, nullptr}, {u"@ümlaut", Kind::folder, nullptr}, {u"@aü", Kind::folder, nullptr},
};
INSTANTIATE_TEST_SUITE_P(Marks, WhatClassificationTest, testing::ValuesIn(marks));

constexpr NameOfKind namesOfFiles[] = {
    {u"my data (1).kat", Kind::file, "kat"},
    {u"1.kat", Kind::file, "kat"},
    {u".kat", Kind::file, "kat"},
    {u"a.b.kat", Kind::file, "kat"},
    {u"my code.k", Kind::file, nullptr},
    {u"a.b.k", Kind::file, nullptr},
    {u"a-b.k", Kind::file, nullptr},
    {u"1a.k", Kind::file, nullptr},
    {u"_a.k", Kind::file, nullptr},
    {u".k", Kind::file, nullptr},
    {u"a.k ", Kind::file, nullptr},
    {u" a.k", Kind::file, nullptr},
    {u"ü.k", Kind::file, nullptr},
    {u"aü.k", Kind::file, nullptr},
    {u"ü.kat", Kind::file, "kat"},
    {u"a..k", Kind::file, nullptr},
    {u"a\\b.k", Kind::file, nullptr},
};
INSTANTIATE_TEST_SUITE_P(NamesOfFiles, WhatClassificationTest, testing::ValuesIn(namesOfFiles));

constexpr NameOfKind others[] = {
    {u"README", Kind::file, nullptr},   {u"a.txt", Kind::file, nullptr},
    {u"b.k", Kind::folder, nullptr},    {u"A.K", Kind::file, nullptr},
    {u"a.K", Kind::file, nullptr},      {u"a.KAT", Kind::file, nullptr},
    {u"a.kexa64", Kind::file, nullptr}, {u"a.kex", Kind::file, nullptr},
    {u"a.kexw6", Kind::file, nullptr},  {u"a.", Kind::file, nullptr},
    {u"a.kk", Kind::file, nullptr},     {u"a.kat", Kind::folder, nullptr},
    {u"k", Kind::file, nullptr},        {u"private", Kind::folder, nullptr},
    {u"a.pp", Kind::file, nullptr},     {u"a.kexw64.bak", Kind::file, nullptr},
};
INSTANTIATE_TEST_SUITE_P(Others, WhatClassificationTest, testing::ValuesIn(others));

TEST(WhatClassificationOrderTest, MembersKeepTheOrderOfTheEntries) {
    const WhatFolderContents contents = contentsOf({u"b.k", u"x.kat", u"a.k", u"@c", u"B.k"});
    EXPECT_EQ(contents.groups[codeGroup], (std::vector<std::size_t>{0, 2, 4}));
    EXPECT_EQ(contents.groups[dataGroup], (std::vector<std::size_t>{1}));
    EXPECT_EQ(contents.groups[classGroup], (std::vector<std::size_t>{3}));
}

TEST(WhatClassificationOrderTest, EachCallAddsToTheGroups) {
    WhatFolderContents contents = contentsOf({u"a.k"});
    classifyEntries(contents);
    EXPECT_EQ(contents.groups[codeGroup], (std::vector<std::size_t>{0, 0}));
}

TEST(WhatIdentifierTest, EndsBehindLettersDigitsAndUnderscores) {
    EXPECT_EQ(scanIdentifier(u"a1_B.k"), 4U);
    EXPECT_EQ(scanIdentifier(u"abc"), 3U);
    EXPECT_EQ(scanIdentifier(u"a b"), 1U);
    for (const auto* none : {u"", u"1a", u"_a", u".k", u"ä"})
        EXPECT_EQ(scanIdentifier(none), std::nullopt);
}

std::vector<std::string> textsOf(const Array& cell) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < kxGetNumberOfElements(cell.get()); ++i)
        texts.push_back(textOf(kxGetCell(cell.get(), i)));
    return texts;
}

TEST(WhatCellTest, HoldsWholeNamesOrThoseWithoutTheirMark) {
    const WhatFolderContents contents = contentsOf({u"@c1", u"@c2", u"+x.kat"});
    EXPECT_EQ(textsOf(groupToCell(contents, classGroup, false)), (std::vector<std::string>{"c1", "c2"}));
    EXPECT_EQ(textsOf(groupToCell(contents, classGroup, true)), (std::vector<std::string>{"@c1", "@c2"}));
    EXPECT_EQ(textsOf(groupToCell(contents, dataGroup, true)), (std::vector<std::string>{"+x.kat"}));
}

TEST(WhatCellTest, EmptyGroupIsAnEmptyColumn) {
    const Array cell = groupToCell(contentsOf({}), codeGroup, true);
    EXPECT_EQ(kxGetClassID(cell.get()), kxCELL_CLASS);
    EXPECT_EQ(dimensions(cell), (std::vector<std::size_t>{0, 1}));
}

}  // namespace
}  // namespace korvex::filemanip::tests
