// The provider of http and https: which requests answer a question, and what their answers mean.
#include "runtime/storage/providers/http/web_provider.h"

#include <string>
#include <utility>

#include "runtime/storage/location.h"
#include "runtime/storage/providers/http/web_download.h"
#include "runtime/storage/providers/http/web_failures.h"
#include "runtime/storage/providers/http/web_pool.h"
#include "runtime/storage/providers/http/web_request.h"
#include "runtime/storage/transfer_progress.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

namespace {

constexpr const char16_t* existenceQuery = u"existence query";
constexpr const char16_t* readingContent = u"reading the content";

/// Servers that refuse HEAD, or allow an address to be read only, say so with one of these.
constexpr long statusesWorthASecondLook[] = {400, 403, 405, 501};
constexpr long notFound = 404;
constexpr long rangeNotSatisfiable = 416;
constexpr long gone = 410;

bool meansNothingThere(long status) noexcept { return status == notFound || status == gone; }

bool deservesSecondLook(const WebAnswer& answer) noexcept {
    for (const long status : statusesWorthASecondLook) {
        if (answer.status == status) return true;
    }
    return false;
}

/// Where redirects led, unless that is no location of the web.
AbsoluteIRI placeOfFailure(const AbsoluteIRI& asked, const WebAnswer& answer) {
    if (answer.redirectedTo.empty()) return asked;
    try {
        AbsoluteIRI place(text::fromBytes(answer.redirectedTo));
        return isWebScheme(place.parts().scheme) ? place : asked;
    } catch (const vfs::InvalidIRIException&) {
        return asked;
    }
}

[[noreturn]] void raiseFailure(const AbsoluteIRI& asked, const WebAnswer& answer, const char16_t* operation) {
    const AbsoluteIRI place = placeOfFailure(asked, answer);
    if (answer.wasInterrupted) {
        throw vfs::Exception(vfs::unknownError, place, std::u16string(interruptedContext),
                             answer.failureText);
    }
    if (answer.status == 0)
        throw vfs::Exception(errorOfTransfer(answer.failure), place, operation, answer.failureText);
    throw vfs::Exception(errorOfStatus(answer.status), place, operation,
                         "HTTP status " + std::to_string(answer.status));
}

WebAnswer setupFailure(const WebSetupError& error) {
    WebAnswer answer;
    answer.failure = CURLE_FAILED_INIT;
    answer.failureText = error.what();
    return answer;
}

/// Raises what keeps the content of the answer from being read.
void requireContent(const AbsoluteIRI& file, const WebAnswer& answer) {
    const AbsoluteIRI place = placeOfFailure(file, answer);
    if (meansNothingThere(answer.status)) throw vfs::Exception(vfs::resourceNotFound, place, readingContent);
    if (answer.status == partialContent)
        throw vfs::Exception(vfs::ioError, place, readingContent, "HTTP status 206, a part of the content");
    if (!isSuccess(answer.status)) raiseFailure(file, answer, readingContent);
}

class WebInput : public InputStream {
public:
    WebInput(std::shared_ptr<WebPool<WebDownload>> pool, AbsoluteIRI file)
        : pool_(std::move(pool)), file_(std::move(file)), download_(pool_->take()) {}
    ~WebInput() override {
        download_->end();
        pool_->giveBack(std::move(download_));
    }
    WebInput(const WebInput&) = delete;
    WebInput& operator=(const WebInput&) = delete;

    void begin(const std::string& address) { requireContent(file_, download_->begin(address)); }

    std::size_t read(std::span<std::byte> buffer) override try {
        stopIfInterrupted(file_);
        const std::size_t count = download_->read(buffer);
        if (count > 0 || buffer.empty()) return count;
        if (const auto failure = download_->failure()) raiseFailure(file_, *failure, readingContent);
        return 0;
    } catch (const WebSetupError& error) {
        raiseFailure(file_, setupFailure(error), readingContent);
    }
    FileAttributes attributes() const override { return download_->attributes(); }

private:
    const std::shared_ptr<WebPool<WebDownload>> pool_;
    const AbsoluteIRI file_;
    std::unique_ptr<WebDownload> download_;
};

}  // namespace

WebProvider::WebProvider(WebOptions options)
    : requests_(std::make_shared<WebPool<WebRequest>>(options)),
      downloads_(std::make_shared<WebPool<WebDownload>>(options)) {}
WebProvider::~WebProvider() = default;

ExistenceType WebProvider::existence(const AbsoluteIRI& location) {
    const auto address = text::toBytes(location.toString());
    if (!address) return provider::AsNeither;

    const WebAnswer answer = ask(*address);
    const bool isEmptyFile = answer.method == WebMethod::firstByte && answer.status == rangeNotSatisfiable;
    if (isEmptyFile || isSuccess(answer.status)) return provider::AsFile;
    if (meansNothingThere(answer.status)) return provider::AsNeither;
    raiseFailure(location, answer, existenceQuery);
}

ExistenceTypeExtended WebProvider::extendedExistence(const AbsoluteIRI& location) {
    return existence(location) == provider::AsFile ? provider::ExtendedFile : provider::ExtendedNothing;
}

CanonicalAbsoluteIRI WebProvider::canonicalLocation(const AbsoluteIRI& location) {
    if (existence(location) == provider::AsFile) return CanonicalAbsoluteIRI(location);
    throw vfs::Exception(vfs::resourceNotFound, location, existenceQuery);
}

std::unique_ptr<InputStream> WebProvider::read(const AbsoluteIRI& file) {
    const auto address = text::toBytes(file.toString());
    if (!address) throw vfs::Exception(vfs::resourceNotFound, file, readingContent);
    stopIfInterrupted(file);
    try {
        auto input = std::make_unique<WebInput>(downloads_, file);
        input->begin(*address);
        return input;
    } catch (const WebSetupError& error) {
        raiseFailure(file, setupFailure(error), readingContent);
    }
}

WebAnswer WebProvider::ask(const std::string& address) try {
    const WebPool<WebRequest>::Loan request(*requests_);
    WebAnswer answer = request->send(address, WebMethod::head);
    return deservesSecondLook(answer) ? request->send(address, WebMethod::firstByte) : answer;
} catch (const WebSetupError& error) {
    return setupFailure(error);
}

}  // namespace korvex::runtime::storage
