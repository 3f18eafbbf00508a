// Requests through libcurl. As soon as a status is known that no redirect follows, the answer stands: nothing
// that happens to the transfer afterwards changes it, and no more of it is read than keeps the connection
// usable.
#include "runtime/storage/providers/http/web_request.h"

#include <string_view>

#include "runtime/storage/providers/http/web_failures.h"

namespace korvex::runtime::storage {

WebRequest::WebRequest(const WebOptions& options) : handle_(options) {
    handle_.set(CURLOPT_TIMEOUT_MS, static_cast<long>(options.requestTimeout.count()));
    handle_.set(CURLOPT_HEADERFUNCTION, &WebRequest::receiveHeader);
    handle_.set(CURLOPT_HEADERDATA, this);
    handle_.set(CURLOPT_WRITEFUNCTION, &WebRequest::receiveBody);
    handle_.set(CURLOPT_WRITEDATA, this);
}

WebAnswer WebRequest::send(const std::string& location, WebMethod method) {
    WebAnswer refusal;
    if (!handle_.prepare(location, refusal)) return refusal;
    const bool isHead = method == WebMethod::head;
    handle_.set(isHead ? CURLOPT_NOBODY : CURLOPT_HTTPGET, 1L);
    handle_.set(CURLOPT_RANGE, isHead ? static_cast<const char*>(nullptr) : "0-0");

    method_ = method;
    status_ = 0;
    const CURLcode result = curl_easy_perform(handle_.get());
    // A redirect without a target is an answer only when it arrived whole.
    if (result == CURLE_OK) curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status_);
    return handle_.answerOf(method, result, status_);
}

std::size_t WebRequest::receiveHeader(char* line, std::size_t, std::size_t length, void* request) noexcept {
    auto& self = *static_cast<WebRequest*>(request);
    const long status = self.handle_.statusAtEndOfHeaders(std::string_view(line, length));
    if (status == 0) return length;
    self.status_ = status;
    // A body of one byte is read to its end, so that the connection can be used again.
    const bool isBodyWanted = self.method_ == WebMethod::head || status == partialContent;
    return isBodyWanted ? length : 0;
}

/// The body of a redirect that leads nowhere is dropped, and a server that sends more than a byte is cut off.
std::size_t WebRequest::receiveBody(char*, std::size_t, std::size_t length, void* request) noexcept {
    const auto& self = *static_cast<const WebRequest*>(request);
    return self.status_ == partialContent && length > 1 ? 0 : length;
}

}  // namespace korvex::runtime::storage
