// A web server for tests, on 127.0.0.1 and a port that the system chooses. It listens from the constructor to
// the destructor, in threads of its own.
//
// Beside the files that a test adds, these paths answer:
//   /status/403      with that status and no content (any number); also to HEAD
//   /head/405/NAME   HEAD with that status, GET as the file /NAME
//   /redirect/3      to /redirect/2, and so on; /redirect/0 is a file
//   /loop            to itself
//   /endless         405 to HEAD; to GET with a body of `endlessBytes`, whatever range is asked for
//   /silent          never; with 500 when the silence is ended or the server stops
//   /stalling        405 to HEAD; to GET with status 200 and then with silence instead of the body
//   /broken          405 to HEAD; to GET with half of the length that it announces, and the connection's end
//   /broken-chunks   the same without a length
//   /dated           a file that was changed at `secondsOfDated`
// Everything else is 404. Paths are decoded. Methods beside HEAD and GET are 405.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace korvex::tests {

class LoopbackWebServer {
public:
    enum class Protocol { http, https };

    /// What a client asked for.
    struct Request {
        std::string method;
        std::string target;  ///< as it was sent: path and query
        std::string range;   ///< the Range header; empty without one
        std::string userAgent;
    };

    static constexpr std::uint64_t endlessBytes = std::uint64_t{1} << 30;
    /// Since 1970: 2 March 2015, 12:30:00 UTC.
    static constexpr std::int64_t secondsOfDated = 1425299400;

    /// Listens when the constructor is through. An https server has a certificate of its own, signed by
    /// itself, for these names and addresses. Raises `std::runtime_error`.
    explicit LoopbackWebServer(Protocol protocol,
                               const std::vector<std::string>& certificateNames = {"localhost", "127.0.0.1"});
    /// Ends all requests, also those that never answer. Waits for clients to close their idle connections, so
    /// clients should be gone by then.
    ~LoopbackWebServer();
    LoopbackWebServer(const LoopbackWebServer&) = delete;
    LoopbackWebServer& operator=(const LoopbackWebServer&) = delete;

    int port() const noexcept;
    /// "http://127.0.0.1:PORT", or with another host that leads here.
    std::string address(const std::string& host = "127.0.0.1") const;
    /// Writes the certificate (PEM), for a client to trust. Raises `std::runtime_error`.
    void writeCertificate(const std::string& file) const;

    /// `path` begins with "/" and is decoded, in bytes.
    void addFile(const std::string& path, const std::string& content);
    /// `target` is sent as it is.
    void addRedirect(const std::string& path, const std::string& target);

    /// All requests so far, in the order in which they came.
    std::vector<Request> requests() const;
    std::size_t connections() const noexcept;
    /// Waits until a request for this path has come.
    void waitForRequest(const std::string& path) const;
    /// Lets /silent and /stalling answer from now on.
    void endSilence();
    /// Waits until an answer of /endless is over, and gives the bytes that could be written.
    std::uint64_t waitForEndlessToEnd() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace korvex::tests
