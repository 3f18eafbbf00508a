// Reading the content of web locations: in full or not at all, and no faster than somebody reads.
#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <span>
#include <stdexcept>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/http/web_handle.h"
#include "runtime/storage/transfer_progress.h"
#include "tests/support/posix/few_open_files.h"
#include "tests/unit/web_provider/one_answer_server.h"
#include "tests/unit/web_provider/web_questions.h"

namespace korvex::tests {
namespace {

using runtime::storage::InputStream;
using ::testing::HasSubstr;

std::string contentOf(InputStream& stream, std::size_t bufferSize = 64 * 1024) {
    std::string content;
    std::string buffer(bufferSize, '\0');
    while (const std::size_t count = stream.read(std::as_writable_bytes(std::span(buffer))))
        content.append(buffer, 0, count);
    return content;
}

/// The exception that reading to the end raises.
std::optional<vfs::Exception> failureOfReading(WebProvider& web, const AbsoluteIRI& location) {
    try {
        contentOf(*web.read(location));
        ADD_FAILURE() << "no exception";
    } catch (const vfs::Exception& failure) {
        return failure;
    }
    return std::nullopt;
}

/// Bytes of which every stretch is different.
std::string manyBytes(std::size_t size) {
    std::string bytes;
    for (int number = 0; bytes.size() < size; ++number)
        bytes += std::to_string(number) + '\n';
    bytes.resize(size);
    return bytes;
}

class WebContent : public ::testing::Test {
protected:
    ~WebContent() override { runtime::interpreter::takeInterrupt(); }

    std::unique_ptr<InputStream> open(const std::string& path) {
        return web_.read(locationOn(server_, path));
    }
    void expectFailure(const std::string& path, vfs::ErrorCode code, const std::string& where) {
        SCOPED_TRACE(path);
        const auto failure = failureOfReading(web_, locationOn(server_, path));
        ASSERT_TRUE(failure.has_value());
        EXPECT_EQ(failure->getErrorCode(), code);
        EXPECT_EQ(failure->getLocation(), locationOn(server_, where));
    }

    LoopbackWebServer server_{Protocol::http};
    WebProvider web_{{.stallTimeout = std::chrono::seconds(1)}};
};

TEST_F(WebContent, IsReadFromFrontToBack) {
    server_.addFile("/table.csv", "1,2\n3,4\n");
    EXPECT_EQ(contentOf(*open("/table.csv")), "1,2\n3,4\n");
    EXPECT_EQ(contentOf(*open("/table.csv"), 1), "1,2\n3,4\n");
    EXPECT_EQ(server_.requests().back().method, "GET");
    EXPECT_EQ(server_.requests().back().range, "");
}

TEST_F(WebContent, OfManyBlocksIsReadWhole) {
    const std::string bytes = manyBytes(3'000'001);
    server_.addFile("/large", bytes);
    EXPECT_TRUE(contentOf(*open("/large")) == bytes);
    EXPECT_TRUE(contentOf(*open("/large"), 1000) == bytes);
}

TEST_F(WebContent, OfAnEmptyFileIsEmpty) {
    server_.addFile("/empty", "");
    const auto stream = open("/empty");
    EXPECT_EQ(contentOf(*stream), "");
    EXPECT_EQ(contentOf(*stream), "");
    EXPECT_EQ(contentOf(*open("/status/204")), "");
}

TEST_F(WebContent, IsFoundThroughRedirects) { EXPECT_EQ(contentOf(*open("/redirect/3")), "the end"); }

TEST_F(WebContent, TellsItsLengthAndItsTimeOfLastChange) {
    const auto attributes = open("/dated")->attributes();
    EXPECT_EQ(attributes.size, 5U);
    ASSERT_TRUE(attributes.changed.has_value());
    EXPECT_EQ(attributes.changed->time_since_epoch(),
              std::chrono::seconds(LoopbackWebServer::secondsOfDated));
    EXPECT_EQ(attributes.isWritable, std::nullopt);
    EXPECT_EQ(open("/endless")->attributes().size, std::nullopt);
}

TEST_F(WebContent, ATimeOfLastChangeThatDoesNotFitIsTheLastOneThatDoes) {
    using Time = std::chrono::sys_time<std::chrono::nanoseconds>;
    for (const std::string date : {"Thu, 12 Apr 2262 00:00:00 GMT", "Fri, 31 Dec 9999 23:59:59 GMT"}) {
        const OneAnswerServer server(
            "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n"
            "Last-Modified: " +
            date + "\r\n\r\n");
        EXPECT_EQ(web_.read(locationOf(server.address()))->attributes().changed, Time::max()) << date;
    }
}

TEST_F(WebContent, ThatNobodyReadsIsNotSent) {
    {
        const auto stream = open("/endless");
        std::array<std::byte, 1000> buffer{};
        EXPECT_GT(stream->read(buffer), 0U);
    }
    EXPECT_LT(server_.waitForEndlessToEnd(), LoopbackWebServer::endlessBytes / 8);
}

TEST_F(WebContent, OneConnectionServesManyDownloads) {
    server_.addFile("/file", "content");
    for (int download = 0; download < 5; ++download) {
        EXPECT_EQ(contentOf(*open("/file")), "content");
    }
    EXPECT_EQ(server_.connections(), 1U);
}

TEST_F(WebContent, SeveralStreamsAreReadAtTheSameTime) {
    server_.addFile("/one", "first");
    server_.addFile("/two", "second");
    const auto one = open("/one");
    const auto two = open("/two");
    EXPECT_EQ(contentOf(*two), "second");
    EXPECT_EQ(contentOf(*one), "first");
}

TEST_F(WebContent, AStreamMayOutliveOthersThatWereGivenUp) {
    const std::string bytes = manyBytes(1'000'000);
    server_.addFile("/large", bytes);
    const auto kept = open("/large");
    for (int givenUp = 0; givenUp < 3; ++givenUp) {
        std::array<std::byte, 10> buffer{};
        EXPECT_EQ(open("/large")->read(buffer), buffer.size());
    }
    EXPECT_TRUE(contentOf(*kept) == bytes);
}

TEST_F(WebContent, OfWhatIsNotThereIsRefusedWhenItIsOpened) {
    for (const char* const path : {"/absent", "/status/410"}) {
        SCOPED_TRACE(path);
        try {
            open(path);
            FAIL() << "no exception";
        } catch (const vfs::Exception& failure) {
            EXPECT_EQ(failure.getErrorCode(), vfs::resourceNotFound);
            EXPECT_EQ(failure.getLocation(), locationOn(server_, path));
        }
    }
}

TEST_F(WebContent, AStatusThatIsNoSuccessIsAnError) {
    expectFailure("/status/403", vfs::permissionDenied, "/status/403");
    expectFailure("/status/503", vfs::resourceInUse, "/status/503");
    expectFailure("/status/500", vfs::ioError, "/status/500");
    expectFailure("/status/304", vfs::unknownError, "/status/304");
    expectFailure("/loop", vfs::ioError, "/loop");
}

TEST_F(WebContent, AFailureBehindARedirectIsRaisedAtItsTarget) {
    server_.addRedirect("/link", "/status/403");
    server_.addRedirect("/toNothing", "/absent");
    expectFailure("/link", vfs::permissionDenied, "/status/403");
    expectFailure("/toNothing", vfs::resourceNotFound, "/absent");
}

TEST_F(WebContent, APartThatNobodyAskedForIsNoContent) {
    expectFailure("/status/206", vfs::ioError, "/status/206");
}

TEST_F(WebContent, AConnectionThatBreaksBeforeTheEndIsAnErrorAndNotAShortFile) {
    expectFailure("/broken", vfs::ioError, "/broken");
    expectFailure("/broken-chunks", vfs::ioError, "/broken-chunks");
}

TEST_F(WebContent, AServerThatStopsSendingIsAnError) {
    const auto failure = failureOfReading(web_, locationOn(server_, "/stalling"));
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::ioError);
    EXPECT_EQ(runtime::text::toDisplayBytes(failure->getExceptionContextsString()), "reading the content");
}

TEST_F(WebContent, AServerThatDoesNotBeginInTimeIsAnError) {
    WebProvider web({.requestTimeout = std::chrono::milliseconds(200)});
    const auto failure = failureOfReading(web, locationOn(server_, "/silent"));
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::ioError);
    EXPECT_FALSE(failure->getSystemText().empty());
}

TEST_F(WebContent, MayTakeLongerThanARequestOnceItHasBegun) {
    constexpr auto requestTimeout = std::chrono::milliseconds(500);
    WebProvider web({.requestTimeout = requestTimeout});
    const auto stream = web.read(locationOn(server_, "/endless"));
    const auto begin = std::chrono::steady_clock::now();
    std::array<std::byte, 64 * 1024> buffer{};
    bool isReadable = true;
    // Slower than the server, since only a little is taken at a time.
    while (isReadable && std::chrono::steady_clock::now() - begin < requestTimeout * 3 / 2)
        isReadable = stream->read(std::span(buffer).first(1)) > 0;
    EXPECT_TRUE(isReadable);
}

TEST_F(WebContent, WhenTheLibraryItselfFailsOnTheWayItIsAnInternalError) {
    const auto stream = open("/stalling");
    // A sanitizer looks at a type with handles of its own, once: that has to be before there are none.
    const runtime::storage::WebSetupError seen("seen");
    (void)static_cast<const std::runtime_error&>(seen).what();
    (void)stream->attributes();
    std::optional<vfs::Exception> failure = vfs::Exception(vfs::unknownError, locationOn(server_, "/"));
    failure = vfs::Exception(*failure);
    failure.reset();
    {
        // So few that the library cannot even wait for the connection that it has.
        const korvex::tests::FewOpenFiles few(1);
        try {
            std::array<std::byte, 10> buffer{};
            stream->read(buffer);
        } catch (const vfs::Exception& raised) {
            failure = raised;
        }
    }
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::internalError);
    EXPECT_EQ(failure->getLocation(), locationOn(server_, "/stalling"));
    EXPECT_FALSE(failure->getSystemText().empty());
}

TEST_F(WebContent, TextThatIsNoAddressIsRefused) {
    EXPECT_EQ(failureOfReading(web_, locationOf("http://127.0.0.1:port/file"))->getErrorCode(),
              vfs::invalidLocation);
}

TEST_F(WebContent, APendingInterruptKeepsTheRequestFromBeingSent) {
    server_.addFile("/file", "content");
    runtime::interpreter::raiseInterrupt();
    const auto failure = failureOfReading(web_, locationOn(server_, "/file"));
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::unknownError);
    EXPECT_EQ(failure->getExceptionContextsString(), runtime::storage::interruptedContext);
    EXPECT_TRUE(runtime::interpreter::isInterruptPending());
    EXPECT_TRUE(server_.requests().empty());
}

TEST_F(WebContent, AnInterruptEndsADownloadThatWaits) {
    for (const char* const path : {"/silent", "/stalling"}) {
        SCOPED_TRACE(path);
        WebProvider web;
        const auto user = std::async(std::launch::async, [&] {
            server_.waitForRequest(path);
            runtime::interpreter::raiseInterrupt();
        });
        const auto failure = failureOfReading(web, locationOn(server_, path));
        user.wait();
        ASSERT_TRUE(failure.has_value());
        EXPECT_EQ(failure->getErrorCode(), vfs::unknownError);
        EXPECT_EQ(failure->getExceptionContextsString(), runtime::storage::interruptedContext);
        EXPECT_TRUE(runtime::interpreter::takeInterrupt());
    }
}

TEST_F(WebContent, TheNextDownloadAfterAFailureIsReadWhole) {
    server_.addFile("/file", "content");
    expectFailure("/broken", vfs::ioError, "/broken");
    EXPECT_EQ(contentOf(*open("/file")), "content");
}

}  // namespace
}  // namespace korvex::tests
