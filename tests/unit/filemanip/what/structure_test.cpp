// The structure array of `what`.
#include "tests/unit/filemanip/what/what_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WhatStructureTest : public WhatTest {
protected:
    static Names allFields() {
        Names fields{"path"};
        fields.insert(fields.end(), std::begin(groupFields), std::end(groupFields));
        return fields;
    }
};

TEST_F(WhatStructureTest, HasThirteenFieldsInTheirOrder) {
    makeFolders({"a"});
    EXPECT_EQ(fieldNamesOf(resultOf({u"a"})), allFields());
    EXPECT_EQ(fieldNamesOf(resultOf({u"nothing"})), allFields());
}

TEST_F(WhatStructureTest, NothingFoundIsAnEmptyColumn) {
    for (const auto* name : {u"nothing", u"memory://bad host", u"http:/x"})
        EXPECT_EQ(dimensions(resultOf({name})), (std::vector<std::size_t>{0, 1}));
}

TEST_F(WhatStructureTest, EmptyFolderHasItsPathAndEmptyColumns) {
    const Array result = resultOf({});
    EXPECT_EQ(dimensions(result), (std::vector<std::size_t>{1, 1}));
    EXPECT_EQ(kxGetClassID(field(result, 0, "path")), kxCHAR_CLASS);
    EXPECT_EQ(textOf(field(result, 0, "path")), here());
    for (const char* group : groupFields) {
        const kxArray* const cell = field(result, 0, group);
        ASSERT_NE(cell, nullptr);
        EXPECT_EQ(kxGetClassID(cell), kxCELL_CLASS);
        EXPECT_EQ(kxGetM(cell), 0U);
        EXPECT_EQ(kxGetN(cell), 1U);
    }
}

TEST_F(WhatStructureTest, GroupsHoldNamesWithTheirExtensions) {
    makeFiles({"b.k", "a.k", "x.p", "my data.kat", "+x.kat", "@file", "a.txt"});
    makeFolders({"@cls", "+pack", "d.k"});
    const Array result = resultOf({});
    EXPECT_THAT(groupOf(result, 0, "k"), ElementsAre("a.k", "b.k"));
    EXPECT_THAT(groupOf(result, 0, "p"), ElementsAre("x.p"));
    EXPECT_THAT(groupOf(result, 0, "kat"), ElementsAre("+x.kat", "my data.kat"));
    EXPECT_THAT(groupOf(result, 0, "classes"), ElementsAre("cls", "file"));
    EXPECT_THAT(groupOf(result, 0, "packages"), ElementsAre("pack"));
    EXPECT_THAT(groupOf(result, 0, "klx"), IsEmpty());
}

TEST_F(WhatStructureTest, LinkToAFolderIsAFolder) {
    makeFolders({"real"});
    link("a.kat", "real");
    link("@c", "real");
    const Array result = resultOf({});
    EXPECT_THAT(groupOf(result, 0, "kat"), IsEmpty());
    EXPECT_THAT(groupOf(result, 0, "classes"), ElementsAre("c"));
}

TEST_F(WhatStructureTest, EveryFolderIsAnElementOfItsOwn) {
    makeFiles({"a/x.k", "b/y.k", "c/z.k"});
    const Array result = resultOf({u"a", u"b", u"c", u"a"});
    EXPECT_EQ(dimensions(result), (std::vector<std::size_t>{4, 1}));
    EXPECT_THAT(foldersOf(result), ElementsAre(here("a"), here("b"), here("c"), here("a")));
    EXPECT_THAT(groupOf(result, 1, "k"), ElementsAre("y.k"));
    EXPECT_THAT(groupOf(result, 3, "k"), ElementsAre("x.k"));
}

TEST_F(WhatStructureTest, ResultBelongsToTheCallerAlone) {
    makeFolders({"a"});
    const Array result = resultOf({u"a", u"a"});
    EXPECT_EQ(kxGetReferenceCount(result.get()), 1U);
    EXPECT_NO_THROW(kxSetFieldByNumber(result.get(), 1, 0, nullptr));
}

TEST_F(WhatStructureTest, PathOfTheRootIsTheRoot) { EXPECT_THAT(foldersFor({u"/"}), ElementsAre("/")); }

}  // namespace
}  // namespace korvex::filemanip::tests
