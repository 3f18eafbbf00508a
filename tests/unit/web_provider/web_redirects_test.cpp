// Redirects: how many, where to, and where a failure at their end happened.
#include "tests/unit/web_provider/web_questions.h"

namespace korvex::tests {
namespace {

class WebRedirects : public ::testing::Test {
protected:
    LoopbackWebServer server_{Protocol::http};
    WebProvider web_;
};

TEST_F(WebRedirects, TenInARowAreFollowed) {
    EXPECT_EQ(web_.existence(locationOn(server_, "/redirect/10")), provider::AsFile);
    EXPECT_EQ(server_.requests().size(), 11U);
}

TEST_F(WebRedirects, MoreThanTenAreAnIoErrorWhereTheyStopped) {
    const auto failure = failureOf(web_, locationOn(server_, "/redirect/11"));
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::ioError);
    EXPECT_EQ(failure->getLocation(), locationOn(server_, "/redirect/1"));
}

TEST_F(WebRedirects, ALoopIsAnIoError) {
    EXPECT_EQ(errorOf(web_, locationOn(server_, "/loop")), vfs::ioError);
    EXPECT_EQ(server_.requests().size(), 11U);
}

TEST_F(WebRedirects, TheNumberCanBeChosen) {
    WebProvider web({.maximumRedirects = 1});
    EXPECT_EQ(web.existence(locationOn(server_, "/redirect/1")), provider::AsFile);
    EXPECT_EQ(errorOf(web, locationOn(server_, "/redirect/2")), vfs::ioError);
}

TEST_F(WebRedirects, AnotherServerMayBeTheTarget) {
    LoopbackWebServer other(Protocol::http);
    WebProvider web;
    other.addFile("/file", "x");
    server_.addRedirect("/link", other.address() + "/file");
    EXPECT_EQ(web.existence(locationOn(server_, "/link")), provider::AsFile);
    EXPECT_EQ(other.requests().size(), 1U);
}

TEST_F(WebRedirects, ATargetThatIsNotThereIsNothing) {
    server_.addRedirect("/link", "/absent");
    EXPECT_EQ(web_.existence(locationOn(server_, "/link")), provider::AsNeither);
}

TEST_F(WebRedirects, AFailureOfTheTargetIsRaisedAtTheTarget) {
    server_.addRedirect("/link", "/status/500");
    const auto failure = failureOf(web_, locationOn(server_, "/link"));
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::ioError);
    EXPECT_EQ(failure->getLocation(), locationOn(server_, "/status/500"));
}

TEST_F(WebRedirects, OtherSchemesAreRefusedAtTheLocationThatWasAsked) {
    for (const char* const target : {"file:///etc/passwd", "ftp://127.0.0.1/file", "gopher://127.0.0.1/1"}) {
        SCOPED_TRACE(target);
        server_.addRedirect("/link", target);
        const auto failure = failureOf(web_, locationOn(server_, "/link"));
        ASSERT_TRUE(failure.has_value());
        EXPECT_EQ(failure->getErrorCode(), vfs::unsupportedOperation);
        EXPECT_EQ(failure->getLocation(), locationOn(server_, "/link"));
    }
}

TEST_F(WebRedirects, ARefusedHeadAtTheTargetIsFollowedByAGet) {
    server_.addFile("/file", "x");
    server_.addRedirect("/link", "/head/405/file");
    EXPECT_EQ(web_.existence(locationOn(server_, "/link")), provider::AsFile);
    EXPECT_EQ(server_.requests().back().range, "bytes=0-0");
}

}  // namespace
}  // namespace korvex::tests
