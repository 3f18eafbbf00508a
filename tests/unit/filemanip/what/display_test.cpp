// The printed form of `what`, to the blank.
#include "io/filesystem/filemanip/what_display.h"
#include "tests/unit/filemanip/what/what_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;

class WhatDisplayTest : public WhatTest {};

TEST_F(WhatDisplayTest, EmptyFolderIsOneLineEnd) {
    EXPECT_EQ(printedBy({}), "\n");
    makeFolders({"empty"});
    EXPECT_EQ(printedBy({u"empty"}), "\n");
}

TEST_F(WhatDisplayTest, FolderWithoutFilesOfAKindIsOneLineEnd) {
    makeFiles({"README", "a.txt", "A.K", "sub/x.k"});
    EXPECT_EQ(printedBy({}), "\n");
}

TEST_F(WhatDisplayTest, GroupsStandInTheirOrderUnderTheirHeaders) {
    makeFiles({"d/a.p", "d/a.kexw64", "d/a.zfx", "d/a.zlx", "d/a.kdl", "d/a.kat", "d/a.klx", "d/a.kapp",
               "d/a.klapp", "d/a.k"});
    makeFolders({"d/@aClass", "d/+pack"});
    std::string expected = "\n";
    for (const auto* label : {"KORVEX Code files", "KLAPP-files", "KAPP-files", "KORVEX Live Code",
                              "KAT-files", "KEX-files", "KDL-files", "ZLX-files", "ZFX-Files", "P-files"}) {
        expected += std::string(label) + " in folder " + here("d") + "\na  \n\n";
    }
    expected += "Classes in folder " + here("d") + "\naClass  \n\n";
    expected += "Namespaces in folder " + here("d") + "\npack  \n\n";
    EXPECT_EQ(printedBy({u"d"}), expected + "\n");
}

TEST_F(WhatDisplayTest, NamesLoseExtensionAndMark) {
    makeFiles({"x.p", "my data (1).kat", ".kat", "+x.kat", "a.b.kat"});
    makeFolders({"@MyClass"});
    const std::string in = " in the current folder " + here();
    const auto padded = [](std::string name) { return name.append(13 - name.size(), ' '); };
    EXPECT_EQ(printedBy({}), "\nKAT-files" + in + "\n" + padded("+x") + padded("") + padded("a.b") +
                                 padded("my data (1)") + "\n\nP-files" + in + "\nx  \n\nClasses" + in +
                                 "\nMyClass  \n\n\n");
}

TEST_F(WhatDisplayTest, NamesRunDownTheColumnsInTheListersOrder) {
    const WindowOfColumns narrow(20);
    makeFiles({"b.k", "A.k", "a.k", "a1.k", "c.k"});
    // Width 4, four columns, two rows; by the whole names, in which "." stands before "1".
    EXPECT_EQ(printedBy({}),
              "\nKORVEX Code files in the current folder " + here() + "\nA   a1  c   \na   b   \n\n\n");
}

TEST_F(WhatDisplayTest, ColumnsThatWouldComeOutEvenGetOneRowMore) {
    const WindowOfColumns narrow(9);
    makeFiles({"a.k", "b.k"});
    EXPECT_EQ(printedBy({}), "\nKORVEX Code files in the current folder " + here() + "\na  \nb  \n\n\n");
    makeFiles({"c.k", "d.k"});
    EXPECT_EQ(printedBy({}),
              "\nKORVEX Code files in the current folder " + here() + "\na  d  \nb  \nc  \n\n\n");
}

TEST_F(WhatDisplayTest, HeaderAndColumnsAreOnePrintEach) {
    makeFiles({"a.k"});
    const PrintedText printed;
    call(bnFullWhatFcn, 0, {});
    EXPECT_THAT(printed.pieces(),
                ElementsAre("\n", "KORVEX Code files in the current folder " + here(), "\na  \n\n", "\n"));
}

TEST_F(WhatDisplayTest, SeveralFoldersAreSeveralBlocks) {
    putOnPath({"one/s", "two/s", "three/s"});
    makeFiles({"one/s/a.k", "two/s/b.k"});
    EXPECT_EQ(printedBy({u"s"}), block(here("one/s"), "a") + block(here("two/s"), "b") + "\n");
}

TEST_F(WhatDisplayTest, GroupMayBeShownWithoutAHeader) {
    WhatFolderContents contents;
    contents.entries.resize(1);
    contents.entries[0].name = u"@a";
    contents.groups[classGroup] = {0};
    const PrintedText printed;
    showGroup(contents, classGroup, u"", false);
    showGroup(contents, classGroup, u"", true);
    showGroup(contents, codeGroup, u"header", true);
    EXPECT_EQ(printed.text(), "\na  \n\n\n@a  \n\n") << "and an empty group not at all";
}

}  // namespace
}  // namespace korvex::filemanip::tests
