// Which error stands for which failure, and what its exception tells.
#include "runtime/storage/providers/http/web_failures.h"

#include <gmock/gmock.h>

#include <chrono>
#include <future>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/transfer_progress.h"
#include "tests/unit/web_provider/web_questions.h"

namespace korvex::tests {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

struct StatusCase {
    int status;
    vfs::ErrorCode error;
};

class WebStatus : public ::testing::TestWithParam<StatusCase> {};

TEST_P(WebStatus, IsRaisedAsAnErrorAtTheLocation) {
    const LoopbackWebServer server(Protocol::http);
    WebProvider web;
    const AbsoluteIRI location = locationOn(server, "/status/" + std::to_string(GetParam().status));
    const auto failure = failureOf(web, location);
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), GetParam().error);
    EXPECT_EQ(failure->getLocation(), location);
    EXPECT_EQ(failure->getSystemText(), "HTTP status " + std::to_string(GetParam().status));
    EXPECT_EQ(failure->getExceptionContextsString(), u"existence query");
}

constexpr StatusCase statusCases[] = {
    {300, vfs::unknownError},
    {304, vfs::unknownError},
    {400, vfs::invalidLocation},
    {401, vfs::permissionDenied},
    {402, vfs::unknownError},
    {403, vfs::permissionDenied},
    {405, vfs::unsupportedOperation},
    {407, vfs::permissionDenied},
    {408, vfs::ioError},
    {414, vfs::invalidLocation},
    {418, vfs::unknownError},
    {423, vfs::resourceInUse},
    {425, vfs::resourceInUse},
    {429, vfs::resourceInUse},
    {451, vfs::permissionDenied},
    {500, vfs::ioError},
    {501, vfs::unsupportedOperation},
    {502, vfs::ioError},
    {503, vfs::resourceInUse},
    {504, vfs::ioError},
    {511, vfs::permissionDenied},
    {599, vfs::ioError},
};

INSTANTIATE_TEST_SUITE_P(Statuses, WebStatus, ::testing::ValuesIn(statusCases),
                         [](const auto& status) { return std::to_string(status.param.status); });

TEST(WebTransferErrors, AreIoErrorsUnlessListed) {
    using runtime::storage::errorOfTransfer;
    EXPECT_EQ(errorOfTransfer(CURLE_GOT_NOTHING), vfs::ioError);
    EXPECT_EQ(errorOfTransfer(CURLE_RECV_ERROR), vfs::ioError);
    EXPECT_EQ(errorOfTransfer(CURLE_SSL_CONNECT_ERROR), vfs::ioError);
    EXPECT_EQ(errorOfTransfer(CURLE_OUT_OF_MEMORY), vfs::internalError);
    EXPECT_EQ(errorOfTransfer(CURLE_SSL_CACERT_BADFILE), vfs::internalError);
    EXPECT_EQ(errorOfTransfer(CURLE_LOGIN_DENIED), vfs::permissionDenied);
}

TEST(WebFailures, AHostWithoutAnAddressIsAnIoErrorWithTheSystemsWords) {
    WebProvider web;
    const auto failure = failureOf(web, locationOf("http://no-such-host.invalid/file"));
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::ioError);
    EXPECT_THAT(failure->getSystemText(), HasSubstr("no-such-host.invalid"));
}

TEST(WebFailures, APortWhereNobodyListensIsAnIoError) {
    std::string address;
    {
        const LoopbackWebServer server(Protocol::http);
        address = server.address();
    }
    WebProvider web;
    const auto failure = failureOf(web, locationOf(address + "/file"));
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::ioError);
    EXPECT_FALSE(failure->getSystemText().empty());
}

TEST(WebFailures, TextThatIsNoWebAddressIsAnInvalidLocation) {
    WebProvider web;
    EXPECT_EQ(errorOf(web, locationOf("http://127.0.0.1:port/file")), vfs::invalidLocation);
    EXPECT_EQ(errorOf(web, locationOf("http://[::1/file")), vfs::invalidLocation);
}

TEST(WebFailures, AServerThatDoesNotAnswerInTimeIsAnIoError) {
    const LoopbackWebServer server(Protocol::http);
    WebProvider web({.requestTimeout = std::chrono::milliseconds(200)});
    EXPECT_EQ(errorOf(web, locationOn(server, "/silent")), vfs::ioError);
}

TEST(WebFailures, AServerThatSendsNothingForTooLongIsAnIoErrorLongBeforeTheRequestsOwnBound) {
    const LoopbackWebServer server(Protocol::http);
    WebProvider web({.stallTimeout = std::chrono::seconds(1), .requestTimeout = std::chrono::minutes(1)});
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(errorOf(web, locationOn(server, "/silent")), vfs::ioError);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
}

/// Leaves no interrupt behind for the next test.
class WebInterrupts : public ::testing::Test {
protected:
    ~WebInterrupts() override { runtime::interpreter::takeInterrupt(); }

    LoopbackWebServer server_{Protocol::http};
    WebProvider web_;
};

TEST_F(WebInterrupts, APendingInterruptKeepsTheRequestFromBeingSentAndStaysPending) {
    server_.addFile("/file", "x");
    runtime::interpreter::raiseInterrupt();
    const auto failure = failureOf(web_, locationOn(server_, "/file"));
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::unknownError);
    EXPECT_EQ(failure->getExceptionContextsString(), runtime::storage::interruptedContext);
    EXPECT_TRUE(runtime::interpreter::isInterruptPending());
    EXPECT_TRUE(server_.requests().empty());
}

TEST_F(WebInterrupts, AnInterruptEndsARequestThatWaits) {
    const auto user = std::async(std::launch::async, [this] {
        server_.waitForRequest("/silent");
        runtime::interpreter::raiseInterrupt();
    });
    const auto failure = failureOf(web_, locationOn(server_, "/silent"));
    user.wait();
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::unknownError);
    EXPECT_EQ(failure->getExceptionContextsString(), runtime::storage::interruptedContext);
}

TEST_F(WebInterrupts, TheNextRequestAfterAnInterruptIsAnswered) {
    server_.addFile("/file", "x");
    runtime::interpreter::raiseInterrupt();
    EXPECT_EQ(errorOf(web_, locationOn(server_, "/file")), vfs::unknownError);
    runtime::interpreter::takeInterrupt();
    EXPECT_EQ(web_.existence(locationOn(server_, "/file")), provider::AsFile);
}

}  // namespace
}  // namespace korvex::tests
