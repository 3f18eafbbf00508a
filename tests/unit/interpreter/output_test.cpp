// The output stream: what arrives, and in how many pieces.
#include "runtime/interpreter/output.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/services_io.h"

namespace {

using korvex::runtime::interpreter::OutputReceiver;
using korvex::runtime::interpreter::setOutputReceiver;
using korvex::runtime::interpreter::setWindowColumns;
using korvex::runtime::interpreter::windowColumns;
using korvex::runtime::interpreter::writeOutput;
using services::io::uout;
using services::io::operator<<;

using Pieces = std::vector<std::u16string>;

class OutputStream : public testing::Test {
protected:
    void SetUp() override {
        earlier_ = setOutputReceiver([this](std::u16string_view text) { pieces_.emplace_back(text); });
    }
    void TearDown() override { setOutputReceiver(earlier_); }

    Pieces pieces_;

private:
    OutputReceiver earlier_;
};

TEST_F(OutputStream, APrintArrivesInOnePieceWhenTheStreamDies) {
    {
        uout stream;
        stream << std::u16string(u"copied ") << 12 << L" files" << L'\n';
        EXPECT_TRUE(pieces_.empty());
    }
    EXPECT_EQ(pieces_, (Pieces{u"copied 12 files\n"}));
}

TEST_F(OutputStream, AStreamThatWroteNothingSendsNothing) {
    {
        uout stream;
        stream << std::left << std::u16string();
        stream.flush();
    }
    EXPECT_TRUE(pieces_.empty());
}

TEST_F(OutputStream, EndlSendsWhatStandsBeforeIt) {
    {
        uout stream;
        stream << std::u16string(u"first") << std::endl << std::u16string(u"second");
        EXPECT_EQ(pieces_, (Pieces{u"first\n"}));
    }
    EXPECT_EQ(pieces_, (Pieces{u"first\n", u"second"}));
}

TEST_F(OutputStream, WidthAndAlignmentCountUnits) {
    {
        uout stream;
        stream << std::left << std::setw(8) << std::u16string(u"a.txt") << L'|' << std::right << std::setw(4)
               << std::u16string(u"\U0001F600") << L'|' << std::setw(2) << std::u16string(u"longer");
    }
    EXPECT_EQ(pieces_, (Pieces{u"a.txt   |  \U0001F600|longer"}));
}

TEST_F(OutputStream, WideTextMayMixCharactersOfOneUnitAndOfTwo) {
    uout() << L"\U0001F600ab\U0001F600\U0001F601c" << L"d\n";
    EXPECT_EQ(pieces_, (Pieces{u"\U0001F600ab\U0001F600\U0001F601cd\n"}));
}

TEST_F(OutputStream, FormattedTextArrivesAtOnceAndInOnePiece) {
    utPrintf("%s: %d of %d files\n",
             "gr\xC3\xB6\xC3\x9F"
             "er \xF0\x9F\x98\x80",
             3, 12);
    utPrintf("100 %%");
    utPrintf("\n");
    EXPECT_EQ(pieces_, (Pieces{u"gr\u00F6\u00DFer \U0001F600: 3 of 12 files\n", u"100 %", u"\n"}));
}

TEST_F(OutputStream, FormattedTextMayHaveAnyLength) {
    const std::string text(100'000, 'x');
    utPrintf("%s|", text.c_str());
    EXPECT_EQ(pieces_, (Pieces{std::u16string(text.size(), u'x') + u'|'}));
}

TEST_F(OutputStream, EmptyFormattedTextSendsNothing) {
    utPrintf("%s", "");
    EXPECT_TRUE(pieces_.empty());
}

TEST_F(OutputStream, UnitsArriveAsTheyAre) {
    using namespace std::string_literals;
    const std::u16string text = u"\u00E4 \U0001F600 \xDCFF \xD800 \0 end"s;
    uout() << text;
    EXPECT_EQ(pieces_, (Pieces{text}));
}

TEST_F(OutputStream, AWideCharacterBehindTheFirst65536BecomesAPair) {
    if constexpr (sizeof(wchar_t) > 2) {
        const auto lastCharacter = static_cast<wchar_t>(0x10FFFF);
        const auto noCharacter = static_cast<wchar_t>(0x110000);
        {
            uout stream;
            stream << L"\U0001F600" << lastCharacter << noCharacter;
        }
        EXPECT_EQ(pieces_, (Pieces{u"\U0001F600\U0010FFFF\uFFFD"}));
    } else {
        uout() << L"\U0001F600";
        EXPECT_EQ(pieces_, (Pieces{u"\U0001F600"}));
    }
}

TEST_F(OutputStream, SingleCharactersArriveToo) {
    {
        uout stream;
        stream.put(L'x');
        stream.put(L'\n');
    }
    EXPECT_EQ(pieces_, (Pieces{u"x\n"}));
}

TEST_F(OutputStream, TwoStreamsDoNotMix) {
    {
        uout outer;
        outer << std::u16string(u"outer ");
        uout() << std::u16string(u"inner");
        outer << std::u16string(u"again");
    }
    EXPECT_EQ(pieces_, (Pieces{u"inner", u"outer again"}));
}

TEST_F(OutputStream, WhatWasWrittenBeforeTheStreamFailedStillArrives) {
    {
        uout stream;
        stream << std::u16string(u"before");
        stream.setstate(std::ios_base::failbit);
        stream << std::u16string(u"behind");
    }
    EXPECT_EQ(pieces_, (Pieces{u"before"}));
}

TEST_F(OutputStream, AReceiverThatFailsDoesNotEndTheCommand) {
    int calls = 0;
    setOutputReceiver([&calls](std::u16string_view) {
        ++calls;
        throw std::runtime_error("the window is gone");
    });
    {
        uout stream;
        stream << std::u16string(u"lost") << std::endl;
        EXPECT_TRUE(stream.bad());
    }
    EXPECT_EQ(calls, 1);
    EXPECT_NO_THROW(uout() << std::u16string(u"lost too"));
}

TEST_F(OutputStream, WithoutAReceiverOutputIsDropped) {
    setOutputReceiver(nullptr);
    uout() << std::u16string(u"nobody reads this");
    writeOutput(u"nor this");
    EXPECT_TRUE(pieces_.empty());
}

TEST_F(OutputStream, SettingAReceiverHandsTheEarlierOneBack) {
    OutputReceiver earlier = setOutputReceiver(nullptr);
    ASSERT_TRUE(earlier);
    EXPECT_FALSE(setOutputReceiver(earlier));
    writeOutput(u"text");
    EXPECT_EQ(pieces_, (Pieces{u"text"}));
}

TEST(CommandWindow, HasEightyColumnsUntilTheHostSaysOtherwise) {
    EXPECT_EQ(windowColumns(), 80U);
    setWindowColumns(132);
    EXPECT_EQ(windowColumns(), 132U);
    setWindowColumns(80);
}

}  // namespace
