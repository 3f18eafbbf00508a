// The provider of "http" and "https", each with a server of its own on this machine.
#include "runtime/storage/providers/http/web_provider.h"
#include "runtime/text/encoding.h"
#include "tests/contract/provider_under_test.h"
#include "tests/support/loopback_web_server.h"
#include "tests/support/scratch_folder.h"

namespace korvex::tests {

namespace {

using Protocol = LoopbackWebServer::Protocol;

class WebProviderUnderTest : public ProviderUnderTest {
public:
    explicit WebProviderUnderTest(Protocol protocol) : server_(protocol) {
        runtime::storage::WebOptions options;
        if (protocol == Protocol::https) {
            options.certificateAuthorityFile = (folder_.path() / "certificate.pem").string();
            server_.writeCertificate(*options.certificateAuthorityFile);
        }
        system_->add(root().getScheme(), std::make_shared<runtime::storage::WebProvider>(options));
    }

    vfs::StorageSystemReference storage() const override { return vfs::StorageSystemReference(system_); }
    AbsoluteIRI root() const override {
        return AbsoluteIRI(runtime::text::fromBytes(server_.address() + "/"));
    }
    AbsoluteIRI home() const override { return root(); }

    void makeFile(const std::u16string& path, const std::string& content) override {
        server_.addFile("/" + runtime::text::toBytes(path).value(), content);
    }

private:
    ScratchFolder folder_;
    LoopbackWebServer server_;
    // Behind the server, so that its connections are closed before the server stops.
    std::shared_ptr<vfs::StorageSystem> system_ = std::make_shared<vfs::StorageSystem>();
};

}  // namespace

std::unique_ptr<ProviderUnderTest> makeHttpProviderUnderTest() {
    return std::make_unique<WebProviderUnderTest>(Protocol::http);
}

std::unique_ptr<ProviderUnderTest> makeHttpsProviderUnderTest() {
    return std::make_unique<WebProviderUnderTest>(Protocol::https);
}

}  // namespace korvex::tests
