// The arguments of `what`: counts, texts, options, the empty name, and names that are too long.
#include "platform/message_catalog.h"
#include "platform/message_identifiers.h"
#include "tests/unit/filemanip/what/what_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WhatArgumentsTest : public WhatTest {};

TEST_F(WhatArgumentsTest, MoreThanOneOutputIsTooMany) {
    const Array name = text(u"a");
    const Array bad = number(1);
    EXPECT_EQ(what(2, {}).errorIdentifier, "KORVEX:maxlhs");
    EXPECT_EQ(what(2, {name.get()}).errorIdentifier, "KORVEX:maxlhs");
    EXPECT_EQ(what(3, {bad.get()}).errorIdentifier, "KORVEX:maxlhs");
}

TEST_F(WhatArgumentsTest, FewerThanNoArgumentsAreTooFew) {
    kxArray* plhs[1] = {nullptr};
    const kxArray* prhs[1] = {nullptr};
    Outcome outcome;
    try {
        bnFullWhatFcn(1, plhs, -1, prhs);
    } catch (const foundation::core::except::IMsgIDException& error) {
        outcome.fail(error);
    }
    EXPECT_EQ(outcome.errorIdentifier, "KORVEX:minrhs");
    EXPECT_EQ(plhs[0], nullptr);
}

TEST_F(WhatArgumentsTest, AnyNumberOfArgumentsIsTaken) {
    makeFolders({"a"});
    const std::vector<std::u16string> names(200, u"a");
    EXPECT_EQ(foldersFor(names), Names(200, here("a")));
}

TEST_F(WhatArgumentsTest, ArgumentThatIsNotOneTextIsRefused) {
    const std::u16string label =
        fl::i18n::MessageCatalog::get_message(KORVEX::what::Directory(), fl::i18n::KwLocale::global());
    const Array numbers = number(1);
    const Array matrixOfText = characters({2, 3});
    const Array tall = characters({0, 3});
    const Array texts = strings({1, 2}, {u"a", u"b"});
    const Array inCell = cell({1, 1}, text(u"a"));
    for (const int nlhs : {0, 1}) {
        for (const kxArray* argument :
             {numbers.get(), matrixOfText.get(), tall.get(), texts.get(), inCell.get()}) {
            const ListingOutcome outcome = what(nlhs, {argument});
            EXPECT_EQ(outcome.errorIdentifier, "KORVEX:string:MustBeSingleString");
            EXPECT_EQ(outcome.catalogEntry, "KORVEX:string:MustBeSingleString");
            EXPECT_THAT(outcome.errorArguments, ElementsAre(label));
        }
    }
}

TEST_F(WhatArgumentsTest, AllArgumentsAreCheckedBeforeTheFirstNameIsLookedUp) {
    makeFiles({"a/x.k"});
    const Array name = text(u"a");
    const Array bad = number(1);
    for (const int nlhs : {0, 1}) {
        const ListingOutcome outcome = what(nlhs, {name.get(), bad.get()});
        EXPECT_EQ(outcome.errorIdentifier, "KORVEX:string:MustBeSingleString");
        EXPECT_EQ(outcome.printed, "");
    }
    EXPECT_EQ(kxGetNumberOfElements(what(1, {name.get(), bad.get()}).outputs[0].get()), 0U);
}

TEST_F(WhatArgumentsTest, MissingStringIsRefused) {
    EXPECT_EQ(what(0, {missing().get()}).errorIdentifier, "KORVEX:string:MissingNotSupported");
    EXPECT_EQ(what(1, {missing().get()}).errorIdentifier, "KORVEX:string:MissingNotSupported");
}

TEST_F(WhatArgumentsTest, StringScalarIsTakenLikeACharacterVector) {
    makeFiles({"a/x.k"});
    const Array name = string(u"a");
    const Array option = string(u"-CaseSensitive");
    EXPECT_EQ(what(0, {name.get(), option.get()}).printed, block(here("a"), "x"));
}

TEST_F(WhatArgumentsTest, OptionsAloneDoNothing) {
    makeFiles({"x.k"});
    for (const auto* option :
         {u"-casesensitive", u"-caseinsensitive", u"-CaseSensitive", u"-CASEINSENSITIVE"}) {
        EXPECT_EQ(printedBy({option}), "");
        EXPECT_EQ(dimensions(resultOf({option})), (std::vector<std::size_t>{0, 1}));
    }
}

TEST_F(WhatArgumentsTest, WhatIsNoWholeOptionIsAName) {
    EXPECT_EQ(printedBy({u"-case"}), notFoundLine("-case"));
    EXPECT_EQ(printedBy({u"-casesensitive "}), notFoundLine("-casesensitive "));
    makeFolders({"-x"});
    EXPECT_THAT(foldersFor({u"-x"}), ElementsAre(here("-x")));
}

TEST_F(WhatArgumentsTest, LastOptionCountsForAllNames) {
    putOnPath({"Solvers"});
    EXPECT_THAT(foldersFor({u"SOLVERS", u"-caseinsensitive"}), ElementsAre(here("Solvers")));
    EXPECT_THAT(foldersFor({u"-casesensitive", u"SOLVERS", u"-caseinsensitive"}),
                ElementsAre(here("Solvers")));
    EXPECT_THAT(foldersFor({u"-caseinsensitive", u"SOLVERS", u"-casesensitive"}), IsEmpty());
}

TEST_F(WhatArgumentsTest, EmptyTextNamesTheCurrentFolder) {
    makeFiles({"x.k"});
    const Array noString = string(u"");
    EXPECT_EQ(printedBy({u""}), block(here(), "x"));
    EXPECT_EQ(what(0, {noString.get()}).printed, block(here(), "x"));
    EXPECT_EQ(printedBy({}), block(here(), "x", true)) << "which is not the same as no name";
}

TEST_F(WhatArgumentsTest, NamesAreReportedInTheirOrder) {
    makeFiles({"a/x.k", "b/y.k"});
    EXPECT_EQ(printedBy({u"b", u"nothing", u"a"}),
              block(here("b"), "y") + notFoundLine("nothing") + block(here("a"), "x"));
    EXPECT_THAT(foldersFor({u"b", u"nothing", u"a", u"b"}), ElementsAre(here("b"), here("a"), here("b")));
}

TEST_F(WhatArgumentsTest, NameOf1024UnitsEndsTheCommandAndKeepsWhatWasReported) {
    makeFiles({"a/x.k"});
    const std::u16string tooLong(1024, u'n');
    const ListingOutcome printed = whatOf(0, {u"a", tooLong, u"a"});
    EXPECT_EQ(printed.errorIdentifier, "KORVEX:dir:pathnameTooLong");
    EXPECT_THAT(printed.errorArguments, ElementsAre(tooLong));
    EXPECT_EQ(printed.printed, block(here("a"), "x"));

    const ListingOutcome outcome = whatOf(1, {u"a", tooLong, u"a"});
    EXPECT_EQ(outcome.errorIdentifier, "KORVEX:dir:pathnameTooLong");
    EXPECT_THAT(foldersOf(outcome.outputs[0]), ElementsAre(here("a")));
}

TEST_F(WhatArgumentsTest, NameOf1023UnitsIsJustNotFound) {
    EXPECT_EQ(printedBy({std::u16string(1023, u'n')}), notFoundLine(std::string(1023, 'n')));
}

TEST_F(WhatArgumentsTest, LocationOf1024UnitsIsTooLongAsWell) {
    const std::u16string location = u"memory://box/" + std::u16string(1011, u'n');
    EXPECT_EQ(whatOf(0, {location}).errorIdentifier, "KORVEX:dir:pathnameTooLong");
    EXPECT_EQ(whatOf(0, {location.substr(0, 1023)}).errorIdentifier, "");
}

TEST_F(WhatArgumentsTest, NameWithANullCharacterIsNotFound) {
    makeFolders({"a"});
    EXPECT_EQ(whatOf(0, {std::u16string(u"a\0b", 3)}).errorIdentifier, "");
    EXPECT_THAT(foldersFor({std::u16string(u"a\0", 2)}), IsEmpty());
}

}  // namespace
}  // namespace korvex::filemanip::tests
