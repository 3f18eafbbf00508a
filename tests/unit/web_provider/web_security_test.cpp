// https: whose certificates count, and that nothing leads back to http.
#include "tests/support/scratch_folder.h"
#include "tests/unit/web_provider/web_questions.h"

namespace korvex::tests {
namespace {

class WebSecurity : public ::testing::Test {
protected:
    WebSecurity() {
        secure_.addFile("/file", "x");
        plain_.addFile("/file", "x");
    }

    /// A provider that trusts exactly this server.
    WebOptions trusting(const LoopbackWebServer& server) const {
        const std::string file = (folder_.path() / "certificate.pem").string();
        server.writeCertificate(file);
        return {.certificateAuthorityFile = file};
    }

    ScratchFolder folder_;
    LoopbackWebServer secure_{Protocol::https};
    LoopbackWebServer plain_{Protocol::http};
};

TEST_F(WebSecurity, ACertificateThatIsTrustedAndForThisHostIsAccepted) {
    WebProvider web(trusting(secure_));
    EXPECT_EQ(web.existence(locationOn(secure_, "/file")), provider::AsFile);
    EXPECT_EQ(web.existence(locationOf(secure_.address("localhost") + "/file")), provider::AsFile);
    EXPECT_EQ(web.existence(locationOn(secure_, "/absent")), provider::AsNeither);
}

TEST_F(WebSecurity, AnUnknownCertificateIsRefusedBeforeAnythingIsSent) {
    WebProvider web;
    EXPECT_EQ(errorOf(web, locationOn(secure_, "/file")), vfs::permissionDenied);
    EXPECT_TRUE(secure_.requests().empty());
}

TEST_F(WebSecurity, ATrustedCertificateForAnotherHostIsRefused) {
    const LoopbackWebServer elsewhere(Protocol::https, {"elsewhere.example", "127.0.0.2"});
    WebProvider web(trusting(elsewhere));
    EXPECT_EQ(errorOf(web, locationOn(elsewhere, "/file")), vfs::permissionDenied);
    EXPECT_EQ(errorOf(web, locationOf(elsewhere.address("localhost") + "/file")), vfs::permissionDenied);
    EXPECT_TRUE(elsewhere.requests().empty());
}

TEST_F(WebSecurity, ACertificateFileThatIsMissingIsAnInternalError) {
    WebProvider web({.certificateAuthorityFile = (folder_.path() / "absent.pem").string()});
    EXPECT_EQ(errorOf(web, locationOn(secure_, "/file")), vfs::internalError);
}

TEST_F(WebSecurity, AServerThatDoesNotSpeakTlsIsAnIoError) {
    WebProvider web;
    const std::string port = std::to_string(plain_.port());
    EXPECT_EQ(errorOf(web, locationOf("https://127.0.0.1:" + port + "/file")), vfs::ioError);
}

TEST_F(WebSecurity, ARedirectFromHttpToHttpsIsFollowed) {
    plain_.addRedirect("/link", secure_.address() + "/file");
    WebProvider web(trusting(secure_));
    EXPECT_EQ(web.existence(locationOn(plain_, "/link")), provider::AsFile);
}

TEST_F(WebSecurity, ARedirectFromHttpsToHttpIsRefusedBeforeItIsFollowed) {
    secure_.addRedirect("/link", plain_.address() + "/file");
    WebProvider web(trusting(secure_));
    const auto failure = failureOf(web, locationOn(secure_, "/link"));
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::unsupportedOperation);
    EXPECT_EQ(failure->getLocation(), locationOn(plain_, "/file"));
    EXPECT_TRUE(plain_.requests().empty());
}

TEST_F(WebSecurity, TheWayBackToHttpIsRefusedToAChainThatBeganWithHttpToo) {
    plain_.addRedirect("/link", secure_.address() + "/back");
    secure_.addRedirect("/back", plain_.address() + "/file");
    WebProvider web(trusting(secure_));
    EXPECT_EQ(errorOf(web, locationOn(plain_, "/link")), vfs::unsupportedOperation);
    EXPECT_EQ(plain_.requests().size(), 1U);
}

}  // namespace
}  // namespace korvex::tests
