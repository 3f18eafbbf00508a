// The arguments: which of them are taken, and in which order they are judged.
#include "tests/unit/filemanip/file_attributes/file_attributes_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::IsEmpty;

class FileAttributesEntryTest : public FileAttributesTest {
protected:
    template <class... Arrays>
    static std::string errorOf(Arrays... arguments) {
        std::vector<Array> arrays;
        (arrays.push_back(std::move(arguments)), ...);
        std::vector<const kxArray*> borrowed;
        for (const Array& array : arrays)
            borrowed.push_back(array.get());
        return call(fileAttrib, 3, borrowed).errorIdentifier;
    }
};

TEST_F(FileAttributesEntryTest, CountsAreCheckedFirstThatOfTheOutputsBeforeAllOthers) {
    const Words five(5, u"file");
    EXPECT_EQ(attrib(4, {}).errorIdentifier, "KORVEX:maxlhs");
    EXPECT_EQ(attrib(4, five).errorIdentifier, "KORVEX:maxlhs");
    EXPECT_EQ(attrib(3, five).errorIdentifier, "KORVEX:maxrhs");
    EXPECT_EQ(errorOf(number(1), number(1), number(1), number(1), number(1)), "KORVEX:maxrhs");
    EXPECT_EQ(attrib(3, {}).errorIdentifier, "");
    EXPECT_EQ(attrib(3, {u"file", u"+w", u"", u"s"}).errorIdentifier, "");
}

TEST_F(FileAttributesEntryTest, EveryArgumentMustBeOneText) {
    EXPECT_EQ(errorOf(number(1)), "KORVEX:string");
    EXPECT_EQ(errorOf(text(u"file"), number(1)), "KORVEX:string");
    EXPECT_EQ(errorOf(text(u"file"), text(u"+h"), cell({1, 1}, text(u"u"))), "KORVEX:string");
    EXPECT_EQ(errorOf(text(u"file"), text(u"+h"), text(u""), strings({1, 2}, {u"s", u"s"})), "KORVEX:string");
    EXPECT_EQ(errorOf(characters({0, 3})), "KORVEX:string");
    EXPECT_EQ(errorOf(characters({2, 2})), "KORVEX:string");
    EXPECT_EQ(errorOf(missing()), "KORVEX:string:MissingNotSupported");
    EXPECT_EQ(errorOf(text(u"file"), missing()), "KORVEX:string:MissingNotSupported");
    EXPECT_EQ(attributesOf("file"), "w");
}

TEST_F(FileAttributesEntryTest, TheFirstWrongArgumentIsTheOneThatIsTold) {
    EXPECT_EQ(errorOf(number(1), missing()), "KORVEX:string");
    EXPECT_EQ(errorOf(missing(), number(1)), "KORVEX:string:MissingNotSupported");
}

TEST_F(FileAttributesEntryTest, WrongArgumentsComeBeforeWarningsAndWrongModes) {
    EXPECT_EQ(errorOf(text(u"file"), text(u"x"), text(u"u"), number(1)), "KORVEX:string");
    EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(FileAttributesEntryTest, EmptyTextsOfEveryKindAreTaken) {
    EXPECT_EQ(errorOf(string(u"file"), string(u"+h"), string(u""), string(u"s")), "");
    EXPECT_EQ(attributesOf("file"), "hw");
    EXPECT_EQ(errorOf(text(u"file"), string(u"-h"), characters({1, 0})), "");
    EXPECT_EQ(attributesOf("file"), "w");
    EXPECT_EQ(errorOf(string(u"")), "");
}

TEST_F(FileAttributesEntryTest, AnEmptyNameIsTheCurrentFolder) {
    EXPECT_EQ(errorOf(characters({0, 0}), text(u"+s")), "");
    EXPECT_EQ(attributesOf(""), "sw");
    EXPECT_EQ(attributesOf("file"), "w");
}

TEST_F(FileAttributesEntryTest, ANullCharacterInTheNameIsRefusedAfterTheOptionsAreRead) {
    const std::u16string name(u"fi\0le", 5);
    EXPECT_EQ(resultOf({name}), "0 KORVEX:FileManip:NullCharacterInName");
    EXPECT_EQ(resultOf({name, u"w", u"u"}), "0 KORVEX:FileManip:NullCharacterInName");
    EXPECT_EQ(warnings_.size(), 1U);
    EXPECT_EQ(resultOf({u"file", std::u16string(u"+h\0", 3)}), modeError);
}

}  // namespace
}  // namespace korvex::filemanip::tests
