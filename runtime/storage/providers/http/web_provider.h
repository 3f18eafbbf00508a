// Locations of the web ("http", "https"), for reading only: a location that answers is a file.
//
// Asked with HEAD, and where a server refuses that (400, 403, 405, 501) with a GET of the first byte, whose
// answer counts then. Statuses 404 and 410 are nothing there; every other status but success is an error, and
// so is a server that cannot be asked:
//
//   permissionDenied      the server wants to know who asks, or forbids it (401, 403, 407, 451, 511); its
//                         certificate cannot be trusted or is for another host
//   resourceInUse         try again later (423, 425, 429, 503)
//   invalidLocation       not the text of a web address; an address that the server does not understand
//                         (400) or that is too long for it (414)
//   unsupportedOperation  neither HEAD nor GET (405, 501); a redirect to another scheme than http and https,
//                         or from https back to http
//   ioError               no such host, no connection, no answer in time, a broken TLS handshake, more
//                         redirects than allowed, 408 and all other statuses from 500 on
//   internalError         out of memory, a broken installation of certificates, a library that cannot go on
//   unknownError          any other status; and an interrupt, as `stopIfInterrupted` raises it
//
// The exception's location is the one that failed, so the last one of a chain of redirects.
//
// Content is read with a GET, as it comes: no more than some hundred thousand bytes of it wait in memory. A
// connection that breaks before the announced length, or an answer with a part of the content that nobody
// asked for, is an `ioError`, so that no short file looks like a whole one.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "runtime/storage/provider.h"

namespace korvex::runtime::storage {

struct WebAnswer;
class WebDownload;
class WebRequest;
template <class Connector>
class WebPool;

struct WebOptions {
    /// For the name look-up, the connection and its TLS handshake, each time there is a new one.
    std::chrono::milliseconds connectTimeout = std::chrono::seconds(10);
    /// How long a server may send nothing at all, before its first byte as well as in between.
    std::chrono::seconds stallTimeout = std::chrono::seconds(30);
    /// Bound of a whole request with all its redirects. Of a request for content: until the content begins;
    /// it may take as long as something comes.
    std::chrono::milliseconds requestTimeout = std::chrono::seconds(60);
    int maximumRedirects = 10;
    /// Native path of a file with the certificates (PEM) to trust in place of the system's.
    std::optional<std::string> certificateAuthorityFile = std::nullopt;
};

class WebProvider : public Provider {
public:
    explicit WebProvider(WebOptions options = {});
    ~WebProvider() override;

    /// A pending interrupt ends the request, with the exception of `stopIfInterrupted`; it stays pending.
    ExistenceType existence(const AbsoluteIRI& location) override;
    ExistenceTypeExtended extendedExistence(const AbsoluteIRI& location) override;
    /// The location itself, since only the server knows which of its addresses mean the same.
    CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) override;

    bool onlyReads() const noexcept override { return true; }
    /// The answer has begun when the stream is handed out. A pending interrupt ends it at any time, as
    /// `stopIfInterrupted` does.
    std::unique_ptr<InputStream> read(const AbsoluteIRI& file) override;

private:
    WebAnswer ask(const std::string& address);

    const std::shared_ptr<WebPool<WebRequest>> requests_;
    const std::shared_ptr<WebPool<WebDownload>> downloads_;
};

}  // namespace korvex::runtime::storage
