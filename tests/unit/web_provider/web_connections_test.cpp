// Connections: kept between requests, and never shared by two threads at once.
#include <array>
#include <chrono>
#include <future>

#include "tests/support/scratch_folder.h"
#include "tests/unit/web_provider/web_questions.h"

namespace korvex::tests {
namespace {

TEST(WebConnections, OneServesManyRequests) {
    LoopbackWebServer server(Protocol::http);
    WebProvider web;
    server.addFile("/file", "content");
    for (const char* const path :
         {"/file", "/absent", "/head/405/file", "/redirect/2", "/status/500", "/file"}) {
        if (std::string_view(path) == "/status/500") {
            EXPECT_EQ(errorOf(web, locationOn(server, path)), vfs::ioError);
        } else {
            web.existence(locationOn(server, path));
        }
    }
    EXPECT_EQ(server.requests().size(), 9U);
    EXPECT_EQ(server.connections(), 1U);
}

TEST(WebConnections, OneServesManyRequestsOverHttps) {
    const ScratchFolder folder;
    LoopbackWebServer server(Protocol::https);
    const std::string certificate = (folder.path() / "certificate.pem").string();
    server.writeCertificate(certificate);
    WebProvider web({.certificateAuthorityFile = certificate});
    for (int question = 0; question < 5; ++question) {
        EXPECT_EQ(web.existence(locationOn(server, "/absent")), provider::AsNeither);
    }
    EXPECT_EQ(server.connections(), 1U);
}

TEST(WebConnections, ThreadsAskAtTheSameTimeAndGetTheirOwnAnswers) {
    constexpr int questions = 50;
    LoopbackWebServer server(Protocol::http);
    WebProvider web;
    server.addFile("/file", "content");
    const auto askAll = [&] {
        int rightAnswers = 0;
        for (int question = 0; question < questions; ++question) {
            rightAnswers += web.existence(locationOn(server, "/file")) == provider::AsFile;
            rightAnswers += web.existence(locationOn(server, "/absent")) == provider::AsNeither;
        }
        return rightAnswers;
    };
    std::array<std::future<int>, 2> threads;
    for (auto& thread : threads)
        thread = std::async(std::launch::async, askAll);
    for (auto& thread : threads)
        EXPECT_EQ(thread.get(), 2 * questions);
    EXPECT_LE(server.connections(), 2U);
}

TEST(WebConnections, ARequestThatWaitsDoesNotHoldUpAnotherThread) {
    LoopbackWebServer server(Protocol::http);
    server.addFile("/file", "content");
    WebProvider web;
    auto waiting =
        std::async(std::launch::async, [&] { return errorOf(web, locationOn(server, "/silent")); });
    server.waitForRequest("/silent");
    EXPECT_EQ(web.existence(locationOn(server, "/file")), provider::AsFile);
    EXPECT_EQ(waiting.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    server.endSilence();
    EXPECT_EQ(waiting.get(), vfs::ioError);
}

}  // namespace
}  // namespace korvex::tests
