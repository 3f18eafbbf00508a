// One request at a time to web servers, over connections that stay open between requests.
#pragma once

#include <curl/curl.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <string>

#include "runtime/storage/providers/http/web_provider.h"

namespace korvex::runtime::storage {

enum class WebMethod {
    head,
    firstByte,  ///< GET with a range of one byte; of a longer body no more than its beginning is read
};

/// libcurl cannot be used, or lacks what is needed of it.
class WebSetupError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What became of a request.
struct WebAnswer {
    WebMethod method = WebMethod::head;
    /// The status of the last answer; 0 when there was none that counts.
    long status = 0;
    /// Why there was none, and libcurl's words for it.
    CURLcode failure = CURLE_OK;
    std::string failureText;
    bool wasInterrupted = false;
    /// Where redirects led, also when they failed there; empty without redirects.
    std::string redirectedTo;
};

class WebRequest {
public:
    /// Raises `WebSetupError` and `std::bad_alloc`.
    explicit WebRequest(const WebOptions& options);

    /// `location` is a location's text in UTF-8, of http or https. It goes out without its fragment, and with
    /// everything beyond ASCII in its path encoded. A pending interrupt ends the request and stays pending.
    WebAnswer send(const std::string& location, WebMethod method);

private:
    struct HandleDeleter {
        void operator()(CURL* handle) const noexcept { curl_easy_cleanup(handle); }
    };
    /// What the callbacks of one transfer found out.
    struct Progress {
        CURL* handle = nullptr;
        WebMethod method = WebMethod::head;
        long status = 0;
        bool wasSecure = false;
        bool wasDowngraded = false;
        bool wasInterrupted = false;
    };

    void setOptions(const WebOptions& options);
    template <class Value>
    void set(CURLoption option, Value value);
    WebAnswer answerOf(CURLcode result) const;

    static int beforeRequest(void* progress, char*, char*, int, int) noexcept;
    static std::size_t receiveHeader(char*, std::size_t, std::size_t, void* progress) noexcept;
    static std::size_t receiveBody(char*, std::size_t, std::size_t, void* progress) noexcept;
    static int watch(void* progress, curl_off_t, curl_off_t, curl_off_t, curl_off_t) noexcept;

    std::array<char, CURL_ERROR_SIZE> errorText_{};
    Progress progress_;
    std::unique_ptr<CURL, HandleDeleter> handle_;
};

}  // namespace korvex::runtime::storage
