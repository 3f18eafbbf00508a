// The options and watches of every request.
#include "runtime/storage/providers/http/web_handle.h"

#include <string_view>

#include "runtime/interpreter/interrupts.h"

namespace korvex::runtime::storage {

namespace {

constexpr const char* downgradeText = "redirect from https to http refused";

void initialiseOnce() {
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK) throw WebSetupError(curl_easy_strerror(result));
}

bool isRedirect(long status) noexcept { return status >= 300 && status < 400; }

/// The address to ask for, or why a text is none.
struct RequestAddress {
    CURLUcode result = CURLUE_OK;
    std::string text;
};

RequestAddress addressOf(const std::string& location) {
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> address(curl_url(), curl_url_cleanup);
    if (!address) return {CURLUE_OUT_OF_MEMORY, {}};
    CURLUcode result = curl_url_set(address.get(), CURLUPART_URL, location.c_str(), CURLU_URLENCODE);
    if (result == CURLUE_OK) result = curl_url_set(address.get(), CURLUPART_FRAGMENT, nullptr, 0);
    char* text = nullptr;
    if (result == CURLUE_OK) result = curl_url_get(address.get(), CURLUPART_URL, &text, 0);
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, curl_free);
    return {result, result == CURLUE_OK ? text : ""};
}

std::string_view currentAddress(CURL* handle) noexcept {
    const char* address = nullptr;
    curl_easy_getinfo(handle, CURLINFO_EFFECTIVE_URL, &address);
    return address == nullptr ? std::string_view() : std::string_view(address);
}

}  // namespace

WebHandle::WebHandle(const WebOptions& options) {
    initialiseOnce();
    handle_.reset(curl_easy_init());
    if (!handle_) throw std::bad_alloc();
    setOptions(options);
}

void WebHandle::setOptions(const WebOptions& options) {
    set(CURLOPT_ERRORBUFFER, errorText_.data());
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_USERAGENT, "korvex");
    set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));

    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, static_cast<long>(options.maximumRedirects));
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);

    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    if (options.certificateAuthorityFile) set(CURLOPT_CAINFO, options.certificateAuthorityFile->c_str());

    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(options.connectTimeout.count()));
    set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(options.stallTimeout.count()));

    set(CURLOPT_PREREQFUNCTION, &WebHandle::beforeRequest);
    set(CURLOPT_PREREQDATA, &watch_);
    set(CURLOPT_NOPROGRESS, 0L);
    set(CURLOPT_XFERINFOFUNCTION, &WebHandle::lookAtInterrupt);
    set(CURLOPT_XFERINFODATA, &watch_);
}

bool WebHandle::prepare(const std::string& location, WebAnswer& answer) {
    const RequestAddress address = addressOf(location);
    if (address.result != CURLUE_OK) {
        const bool isOutOfMemory = address.result == CURLUE_OUT_OF_MEMORY;
        answer.failure = isOutOfMemory ? CURLE_OUT_OF_MEMORY : CURLE_URL_MALFORMAT;
        answer.failureText = curl_url_strerror(address.result);
        return false;
    }
    set(CURLOPT_URL, address.text.c_str());
    watch_ = Watch{.handle = handle_.get()};
    errorText_.front() = '\0';
    return true;
}

long WebHandle::statusAtEndOfHeaders(std::string_view headerLine) const noexcept {
    if (headerLine != "\r\n" && headerLine != "\n") return 0;
    long status = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
    return status < 200 || isRedirect(status) ? 0 : status;
}

WebAnswer WebHandle::answerOf(WebMethod method, CURLcode result, long status) const {
    WebAnswer answer;
    answer.method = method;
    long redirects = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_REDIRECT_COUNT, &redirects);
    if (redirects > 0) answer.redirectedTo = currentAddress(handle_.get());
    answer.status = status;
    if (answer.status != 0) return answer;

    answer.wasInterrupted = watch_.wasInterrupted;
    answer.failure = watch_.wasDowngraded ? CURLE_UNSUPPORTED_PROTOCOL : result;
    if (watch_.wasDowngraded) {
        answer.failureText = downgradeText;
    } else {
        answer.failureText = errorText_.front() != '\0' ? errorText_.data() : curl_easy_strerror(result);
    }
    return answer;
}

/// Called when the connection stands, before anything is sent; once for each redirect.
int WebHandle::beforeRequest(void* watch, char*, char*, int, int) noexcept {
    auto& found = *static_cast<Watch*>(watch);
    const bool isSecure = currentAddress(found.handle).starts_with("https:");
    if (found.wasSecure && !isSecure) {
        found.wasDowngraded = true;
        return CURL_PREREQFUNC_ABORT;
    }
    found.wasSecure = isSecure;
    return CURL_PREREQFUNC_OK;
}

int WebHandle::lookAtInterrupt(void* watch, curl_off_t, curl_off_t, curl_off_t, curl_off_t) noexcept {
    auto& found = *static_cast<Watch*>(watch);
    found.wasInterrupted = found.wasInterrupted || interpreter::isInterruptPending();
    return found.wasInterrupted ? 1 : 0;
}

}  // namespace korvex::runtime::storage
