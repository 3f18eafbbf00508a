// Structures as a command prints them: the first element, a line for each field.
#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>

#include "platform/services_io.h"

namespace {

using matrix::ArrayOwner;

class StructureDisplay : public testing::Test {
protected:
    void set(int field, kxArray* value, std::size_t element = 0) {
        kxSetFieldByNumber(structure_.get(), element, field, value);
    }
    std::wstring printed() const {
        std::wostringstream stream;
        io::legacy::ioPrintScalarStructureFieldsGroup(stream, structure_.get());
        return stream.str();
    }

    static constexpr const char* names[] = {"first", "second"};
    ArrayOwner structure_{kxCreateStructMatrix(1, 2, 2, names)};
};

TEST_F(StructureDisplay, ShowsTextsAndScalarsWhole) {
    set(0, kxCreateString("it's"));
    set(1, kxCreateDoubleScalar(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(printed(), L"    first: 'it''s'\n    second: NaN\n");
    set(0, kxCreateLogicalScalar(true));
    set(1, kxCreateDoubleScalar(-1.5));
    EXPECT_EQ(printed(), L"    first: 1\n    second: -1.5\n");
    set(0, kxCreateStringScalar(u"a\"b"));
    set(1, kxCreateStringScalar(std::nullopt));
    EXPECT_EQ(printed(), L"    first: \"a\"\"b\"\n    second: <missing>\n");
    set(0, kxCreateDoubleScalar(-std::numeric_limits<double>::infinity()));
    set(1, kxCreateDoubleScalar(12345678901234));
    EXPECT_EQ(printed(), L"    first: -Inf\n    second: 12345678901234\n");
}

TEST_F(StructureDisplay, ShowsAnythingLargerBySizeAndClass) {
    set(0, kxCreateDoubleMatrix(2, 3));
    set(1, kxCreateCellMatrix(0, 0));
    EXPECT_EQ(printed(), L"    first: 2x3 double\n    second: 0x0 cell\n");
    set(0, kxCreateCellMatrix(1, 1));
    set(1, nullptr);
    EXPECT_EQ(printed(), L"    first: 1x1 cell\n    second: 0x0 double\n");
}

TEST_F(StructureDisplay, ShowsAnEmptyTextAsOne) {
    set(0, kxCreateString(""));
    set(1, kxCreateStringScalar(u""));
    EXPECT_EQ(printed(), L"    first: ''\n    second: \"\"\n");
}

TEST_F(StructureDisplay, LetsNoNameCommandTheTerminal) {
    set(0, matrix::create(u"a\x1B[2J\n").release());
    set(1, matrix::create(u"\x7F\x9B").release());
    EXPECT_EQ(printed(), L"    first: 'a\x241B[2J\x240A'\n    second: '\x2421\xFFFD'\n");
}

TEST_F(StructureDisplay, ShowsTheFirstElementOnly) {
    set(0, kxCreateDoubleScalar(1));
    set(0, kxCreateDoubleScalar(2), 1);
    EXPECT_EQ(printed(), L"    first: 1\n    second: 0x0 double\n");
}

TEST_F(StructureDisplay, ShowsNothingWhereThereIsNoElement) {
    structure_.reset(kxCreateStructMatrix(0, 0, 2, names));
    EXPECT_EQ(printed(), L"");
}

}  // namespace
