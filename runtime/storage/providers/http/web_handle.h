// A handle of libcurl with all that is set for every request: where it may lead, whom it trusts, how long it
// waits, and that a pending interrupt ends it.
#pragma once

#include <curl/curl.h>

#include <array>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#include "runtime/storage/providers/http/web_provider.h"

namespace korvex::runtime::storage {

enum class WebMethod {
    head,
    firstByte,  ///< GET with a range of one byte; of a longer body no more than its beginning is read
    content,    ///< GET of everything
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

class WebHandle {
public:
    /// Raises `WebSetupError` and `std::bad_alloc`.
    explicit WebHandle(const WebOptions& options);
    WebHandle(const WebHandle&) = delete;
    WebHandle& operator=(const WebHandle&) = delete;

    CURL* get() const noexcept { return handle_.get(); }

    template <class Value>
    void set(CURLoption option, Value value) {
        const CURLcode result = curl_easy_setopt(handle_.get(), option, value);
        if (result == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
        if (result != CURLE_OK) throw WebSetupError(curl_easy_strerror(result));
    }

    /// Makes ready for the next request. `location` is a location's text in UTF-8, of http or https; it goes
    /// out without its fragment, and with everything beyond ASCII in its path encoded. False, with the reason
    /// in the answer, when it is no address.
    bool prepare(const std::string& location, WebAnswer& answer);

    /// The status of an answer whose headers are complete when `headerLine` ends them; 0 otherwise, and for
    /// an answer that another one follows.
    long statusAtEndOfHeaders(std::string_view headerLine) const noexcept;

    /// What became of the request: the status where there is one that counts (not 0), otherwise the failure.
    WebAnswer answerOf(WebMethod method, CURLcode result, long status) const;

private:
    struct HandleDeleter {
        void operator()(CURL* handle) const noexcept { curl_easy_cleanup(handle); }
    };
    /// What the callbacks of one transfer found out.
    struct Watch {
        CURL* handle = nullptr;
        bool wasSecure = false;
        bool wasDowngraded = false;
        bool wasInterrupted = false;
    };

    void setOptions(const WebOptions& options);

    static int beforeRequest(void* watch, char*, char*, int, int) noexcept;
    static int lookAtInterrupt(void* watch, curl_off_t, curl_off_t, curl_off_t, curl_off_t) noexcept;

    std::array<char, CURL_ERROR_SIZE> errorText_{};
    Watch watch_;
    std::unique_ptr<CURL, HandleDeleter> handle_;
};

}  // namespace korvex::runtime::storage
