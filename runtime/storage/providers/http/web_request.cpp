// Requests through libcurl. As soon as a status is known that no redirect follows, the answer stands: nothing
// that happens to the transfer afterwards changes it, and no more of it is read than keeps the connection
// usable.
#include "runtime/storage/providers/http/web_request.h"

#include <new>
#include <string_view>

#include "runtime/interpreter/interrupts.h"

namespace korvex::runtime::storage {

namespace {

constexpr long partialContent = 206;
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

WebRequest::WebRequest(const WebOptions& options) {
    initialiseOnce();
    handle_.reset(curl_easy_init());
    if (!handle_) throw std::bad_alloc();
    progress_.handle = handle_.get();
    setOptions(options);
}

template <class Value>
void WebRequest::set(CURLoption option, Value value) {
    const CURLcode result = curl_easy_setopt(handle_.get(), option, value);
    if (result == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
    if (result != CURLE_OK) throw WebSetupError(curl_easy_strerror(result));
}

void WebRequest::setOptions(const WebOptions& options) {
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
    set(CURLOPT_TIMEOUT_MS, static_cast<long>(options.requestTimeout.count()));
    set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(options.stallTimeout.count()));

    set(CURLOPT_PREREQFUNCTION, &WebRequest::beforeRequest);
    set(CURLOPT_PREREQDATA, &progress_);
    set(CURLOPT_HEADERFUNCTION, &WebRequest::receiveHeader);
    set(CURLOPT_HEADERDATA, &progress_);
    set(CURLOPT_WRITEFUNCTION, &WebRequest::receiveBody);
    set(CURLOPT_WRITEDATA, &progress_);
    set(CURLOPT_NOPROGRESS, 0L);
    set(CURLOPT_XFERINFOFUNCTION, &WebRequest::watch);
    set(CURLOPT_XFERINFODATA, &progress_);
}

WebAnswer WebRequest::send(const std::string& location, WebMethod method) {
    const RequestAddress address = addressOf(location);
    if (address.result != CURLUE_OK) {
        WebAnswer answer;
        const bool isOutOfMemory = address.result == CURLUE_OUT_OF_MEMORY;
        answer.failure = isOutOfMemory ? CURLE_OUT_OF_MEMORY : CURLE_URL_MALFORMAT;
        answer.failureText = curl_url_strerror(address.result);
        return answer;
    }
    set(CURLOPT_URL, address.text.c_str());
    const bool isHead = method == WebMethod::head;
    set(isHead ? CURLOPT_NOBODY : CURLOPT_HTTPGET, 1L);
    set(CURLOPT_RANGE, isHead ? static_cast<const char*>(nullptr) : "0-0");

    progress_ = Progress{.handle = handle_.get(), .method = method};
    errorText_.front() = '\0';
    return answerOf(curl_easy_perform(handle_.get()));
}

WebAnswer WebRequest::answerOf(CURLcode result) const {
    WebAnswer answer;
    answer.method = progress_.method;
    long redirects = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_REDIRECT_COUNT, &redirects);
    if (redirects > 0) answer.redirectedTo = currentAddress(handle_.get());
    answer.status = progress_.status;
    // A redirect without a target is an answer only when it arrived whole.
    if (result == CURLE_OK) curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &answer.status);
    if (answer.status != 0) return answer;

    answer.wasInterrupted = progress_.wasInterrupted;
    answer.failure = progress_.wasDowngraded ? CURLE_UNSUPPORTED_PROTOCOL : result;
    if (progress_.wasDowngraded) {
        answer.failureText = downgradeText;
    } else {
        answer.failureText = errorText_.front() != '\0' ? errorText_.data() : curl_easy_strerror(result);
    }
    return answer;
}

/// Called when the connection stands, before anything is sent; once for each redirect.
int WebRequest::beforeRequest(void* progress, char*, char*, int, int) noexcept {
    auto& found = *static_cast<Progress*>(progress);
    const bool isSecure = currentAddress(found.handle).starts_with("https:");
    if (found.wasSecure && !isSecure) {
        found.wasDowngraded = true;
        return CURL_PREREQFUNC_ABORT;
    }
    found.wasSecure = isSecure;
    return CURL_PREREQFUNC_OK;
}

std::size_t WebRequest::receiveHeader(char* line, std::size_t, std::size_t length, void* progress) noexcept {
    const std::string_view header(line, length);
    const bool isEndOfHeaders = header == "\r\n" || header == "\n";
    if (!isEndOfHeaders) return length;

    auto& found = *static_cast<Progress*>(progress);
    long status = 0;
    curl_easy_getinfo(found.handle, CURLINFO_RESPONSE_CODE, &status);
    if (status < 200 || isRedirect(status)) return length;
    found.status = status;
    // A body of one byte is read to its end, so that the connection can be used again.
    const bool isBodyWanted = found.method == WebMethod::head || status == partialContent;
    return isBodyWanted ? length : 0;
}

/// The body of a redirect that leads nowhere is dropped, and a server that sends more than a byte is cut off.
std::size_t WebRequest::receiveBody(char*, std::size_t, std::size_t length, void* progress) noexcept {
    const auto& found = *static_cast<const Progress*>(progress);
    return found.status == partialContent && length > 1 ? 0 : length;
}

int WebRequest::watch(void* progress, curl_off_t, curl_off_t, curl_off_t, curl_off_t) noexcept {
    auto& found = *static_cast<Progress*>(progress);
    found.wasInterrupted = found.wasInterrupted || interpreter::isInterruptPending();
    return found.wasInterrupted ? 1 : 0;
}

}  // namespace korvex::runtime::storage
