// What a server's answers mean, and how it is asked.
#include <gmock/gmock.h>

#include "tests/unit/web_provider/web_questions.h"

namespace korvex::tests {
namespace {

using ::testing::ElementsAre;

class WebAnswers : public ::testing::Test {
protected:
    LoopbackWebServer server_{Protocol::http};
    WebProvider web_;
};

TEST_F(WebAnswers, ALocationThatAnswersIsAFile) {
    server_.addFile("/table.csv", "1,2\n");
    EXPECT_EQ(web_.existence(locationOn(server_, "/table.csv")), provider::AsFile);
    EXPECT_EQ(web_.extendedExistence(locationOn(server_, "/table.csv")), provider::ExtendedFile);
    EXPECT_THAT(methodsOf(server_), ElementsAre("HEAD", "HEAD"));
}

TEST_F(WebAnswers, ALocationThatIsNotFoundOrGoneIsNothing) {
    EXPECT_EQ(web_.existence(locationOn(server_, "/absent")), provider::AsNeither);
    EXPECT_EQ(web_.existence(locationOn(server_, "/status/410")), provider::AsNeither);
    EXPECT_EQ(web_.extendedExistence(locationOn(server_, "/absent")), provider::ExtendedNothing);
    EXPECT_THAT(methodsOf(server_), ElementsAre("HEAD", "HEAD", "HEAD"));
}

TEST_F(WebAnswers, AnAnswerWithoutContentIsAFile) {
    EXPECT_EQ(web_.existence(locationOn(server_, "/status/204")), provider::AsFile);
}

TEST_F(WebAnswers, ARefusedHeadIsFollowedByAGetOfTheFirstByte) {
    server_.addFile("/table.csv", "1,2\n");
    for (const char* const path :
         {"/head/400/table.csv", "/head/403/table.csv", "/head/405/table.csv", "/head/501/table.csv"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(web_.existence(locationOn(server_, path)), provider::AsFile);
        EXPECT_EQ(server_.requests().back().method, "GET");
        EXPECT_EQ(server_.requests().back().range, "bytes=0-0");
    }
}

TEST_F(WebAnswers, TheAnswerToTheGetCountsAfterARefusedHead) {
    EXPECT_EQ(web_.existence(locationOn(server_, "/head/405/absent")), provider::AsNeither);
}

TEST_F(WebAnswers, AnEmptyFileHasNoFirstByteButIsThere) {
    server_.addFile("/empty", "");
    EXPECT_EQ(web_.existence(locationOn(server_, "/head/405/empty")), provider::AsFile);
    EXPECT_EQ(web_.existence(locationOn(server_, "/empty")), provider::AsFile);
}

TEST_F(WebAnswers, AnUnsatisfiableRangeThatNobodyAskedForIsAnError) {
    EXPECT_EQ(errorOf(web_, locationOn(server_, "/head/416/x")), vfs::unknownError);
}

TEST_F(WebAnswers, HeadIsAskedAgainAfterAGet) {
    server_.addFile("/table.csv", "1,2\n");
    EXPECT_EQ(web_.existence(locationOn(server_, "/head/405/table.csv")), provider::AsFile);
    EXPECT_EQ(web_.existence(locationOn(server_, "/table.csv")), provider::AsFile);
    EXPECT_EQ(server_.requests().back().method, "HEAD");
    EXPECT_EQ(server_.requests().back().range, "");
}

TEST_F(WebAnswers, ABodyThatIgnoresTheRangeIsCutOff) {
    EXPECT_EQ(web_.existence(locationOn(server_, "/endless")), provider::AsFile);
    EXPECT_LT(server_.waitForEndlessToEnd(), LoopbackWebServer::endlessBytes / 8);
}

TEST_F(WebAnswers, ABodyThatNeverComesIsNotWaitedFor) {
    EXPECT_EQ(web_.existence(locationOn(server_, "/stalling")), provider::AsFile);
    EXPECT_THAT(methodsOf(server_), ElementsAre("HEAD", "GET"));
}

TEST_F(WebAnswers, TheQueryIsSentAndTheFragmentIsNot) {
    server_.addFile("/table.csv", "1,2\n");
    EXPECT_EQ(web_.existence(locationOn(server_, "/table.csv?year=2020&part=%20#rows")), provider::AsFile);
    EXPECT_EQ(server_.requests().back().target, "/table.csv?year=2020&part=%20");
}

TEST_F(WebAnswers, LettersBeyondAsciiAreSentEncodedAndEscapesAsTheyAre) {
    server_.addFile(
        "/gr\xC3\xBC\xC3\x9F"
        "e.csv",
        "1,2\n");
    EXPECT_EQ(web_.existence(locationOn(server_,
                                        "/gr\xC3\xBC%C3%9F"
                                        "e.csv")),
              provider::AsFile);
    EXPECT_EQ(server_.requests().back().target, "/gr%c3%bc%C3%9Fe.csv");
}

TEST_F(WebAnswers, TheProgramNamesItself) {
    EXPECT_EQ(web_.existence(locationOn(server_, "/absent")), provider::AsNeither);
    EXPECT_EQ(server_.requests().back().userAgent, "korvex");
}

TEST_F(WebAnswers, TextThatIsNoUnicodeIsNothing) {
    const AbsoluteIRI location(runtime::text::fromBytes(server_.address()) + u"/" + char16_t{0xD800});
    EXPECT_EQ(web_.existence(location), provider::AsNeither);
    EXPECT_TRUE(server_.requests().empty());
}

TEST_F(WebAnswers, TheCanonicalLocationIsTheLocationItself) {
    server_.addFile("/table.csv", "1,2\n");
    server_.addRedirect("/link", "/table.csv");
    const AbsoluteIRI location = locationOn(server_, "/link?year=2020");
    EXPECT_EQ(web_.canonicalLocation(location), location);
}

TEST_F(WebAnswers, WhatIsNotThereHasNoCanonicalLocation) {
    const AbsoluteIRI location = locationOn(server_, "/absent");
    try {
        web_.canonicalLocation(location);
        FAIL() << "no exception";
    } catch (const vfs::Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), vfs::resourceNotFound);
        EXPECT_EQ(failure.getLocation(), location);
    }
}

}  // namespace
}  // namespace korvex::tests
