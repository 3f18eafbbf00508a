// The provider of http and https: which requests answer a question, and what their answers mean.
#include "runtime/storage/providers/http/web_provider.h"

#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/storage/location.h"
#include "runtime/storage/providers/http/web_failures.h"
#include "runtime/storage/providers/http/web_request.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

/// Requests that are not in use, each with its open connections.
class WebProvider::RequestPool {
public:
    explicit RequestPool(WebOptions options) : options_(std::move(options)) { idle_.reserve(maximumIdle); }

    /// A request taken out of the pool for the length of a scope.
    class Loan {
    public:
        explicit Loan(RequestPool& pool) : pool_(pool), request_(pool.take()) {}
        ~Loan() { pool_.giveBack(std::move(request_)); }
        Loan(const Loan&) = delete;
        Loan& operator=(const Loan&) = delete;

        WebRequest* operator->() const noexcept { return request_.get(); }

    private:
        RequestPool& pool_;
        std::unique_ptr<WebRequest> request_;
    };

private:
    static constexpr std::size_t maximumIdle = 8;

    std::unique_ptr<WebRequest> take() {
        {
            const std::lock_guard lock(guard_);
            if (!idle_.empty()) {
                auto request = std::move(idle_.back());
                idle_.pop_back();
                return request;
            }
        }
        return std::make_unique<WebRequest>(options_);
    }

    void giveBack(std::unique_ptr<WebRequest> request) noexcept {
        const std::lock_guard lock(guard_);
        if (idle_.size() < maximumIdle) idle_.push_back(std::move(request));
    }

    const WebOptions options_;
    std::mutex guard_;
    std::vector<std::unique_ptr<WebRequest>> idle_;
};

namespace {

constexpr const char16_t* existenceQuery = u"existence query";
constexpr const char16_t* interruptedQuery = u"existence query, interrupted";

/// Servers that refuse HEAD, or allow an address to be read only, say so with one of these.
constexpr long statusesWorthASecondLook[] = {400, 403, 405, 501};
constexpr long notFound = 404;
constexpr long rangeNotSatisfiable = 416;
constexpr long gone = 410;

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

[[noreturn]] void raiseFailure(const AbsoluteIRI& asked, const WebAnswer& answer) {
    const AbsoluteIRI place = placeOfFailure(asked, answer);
    if (answer.wasInterrupted)
        throw vfs::Exception(vfs::ioError, place, interruptedQuery, answer.failureText);
    if (answer.status != 0) {
        throw vfs::Exception(errorOfStatus(answer.status), place, existenceQuery,
                             "HTTP status " + std::to_string(answer.status));
    }
    throw vfs::Exception(errorOfTransfer(answer.failure), place, existenceQuery, answer.failureText);
}

}  // namespace

WebProvider::WebProvider(WebOptions options) : pool_(std::make_unique<RequestPool>(std::move(options))) {}
WebProvider::~WebProvider() = default;

ExistenceType WebProvider::existence(const AbsoluteIRI& location) {
    const auto address = text::toBytes(location.toString());
    if (!address) return provider::AsNeither;

    const WebAnswer answer = ask(*address);
    const bool isEmptyFile = answer.method == WebMethod::firstByte && answer.status == rangeNotSatisfiable;
    if (isEmptyFile || (answer.status >= 200 && answer.status < 300)) return provider::AsFile;
    if (answer.status == notFound || answer.status == gone) return provider::AsNeither;
    raiseFailure(location, answer);
}

ExistenceTypeExtended WebProvider::extendedExistence(const AbsoluteIRI& location) {
    return existence(location) == provider::AsFile ? provider::ExtendedFile : provider::ExtendedNothing;
}

CanonicalAbsoluteIRI WebProvider::canonicalLocation(const AbsoluteIRI& location) {
    if (existence(location) == provider::AsFile) return CanonicalAbsoluteIRI(location);
    throw vfs::Exception(vfs::resourceNotFound, location, existenceQuery);
}

WebAnswer WebProvider::ask(const std::string& address) try {
    const RequestPool::Loan request(*pool_);
    WebAnswer answer = request->send(address, WebMethod::head);
    return deservesSecondLook(answer) ? request->send(address, WebMethod::firstByte) : answer;
} catch (const WebSetupError& error) {
    WebAnswer answer;
    answer.failure = CURLE_FAILED_INIT;
    answer.failureText = error.what();
    return answer;
}

}  // namespace korvex::runtime::storage
