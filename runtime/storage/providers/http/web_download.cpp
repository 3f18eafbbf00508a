// Downloads through libcurl's multi interface, which works only while somebody waits for bytes. When more
// comes than is wanted, the transfer is paused.
#include "runtime/storage/providers/http/web_download.h"

#include <algorithm>
#include <string_view>

#include "runtime/storage/providers/http/web_failures.h"

namespace korvex::runtime::storage {

namespace {

/// What waits in memory to be read; libcurl may hand over one block more.
constexpr std::size_t mostBytesWaiting = 256 * 1024;

/// How long libcurl may wait for the network before it looks at a pending interrupt again.
constexpr int longestPollMilliseconds = 100;

/// Of seconds since 1970; one that does not fit is the last one that does.
std::chrono::sys_time<std::chrono::nanoseconds> timeOf(curl_off_t seconds) noexcept {
    using Time = std::chrono::sys_time<std::chrono::nanoseconds>;
    const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
    return time > std::chrono::floor<std::chrono::seconds>(Time::max()) ? Time::max() : Time(time);
}

void require(CURLMcode code) {
    if (code == CURLM_OUT_OF_MEMORY) throw std::bad_alloc();
    if (code != CURLM_OK) throw WebSetupError(curl_multi_strerror(code));
}

}  // namespace

WebDownload::WebDownload(const WebOptions& options)
    : longestWaitForHeaders_(options.requestTimeout), handle_(options) {
    multi_.reset(curl_multi_init());
    if (!multi_) throw std::bad_alloc();
    bytes_.reserve(mostBytesWaiting);
    handle_.set(CURLOPT_HTTPGET, 1L);
    handle_.set(CURLOPT_FILETIME, 1L);
    handle_.set(CURLOPT_HEADERFUNCTION, &WebDownload::receiveHeader);
    handle_.set(CURLOPT_HEADERDATA, this);
    handle_.set(CURLOPT_WRITEFUNCTION, &WebDownload::receiveBody);
    handle_.set(CURLOPT_WRITEDATA, this);
}

WebDownload::~WebDownload() { end(); }

WebAnswer WebDownload::begin(const std::string& location) {
    end();
    WebAnswer refusal;
    if (!handle_.prepare(location, refusal)) return refusal;
    status_ = 0;
    result_ = CURLE_OK;
    require(curl_multi_add_handle(multi_.get(), handle_.get()));
    isRunning_ = true;
    workUntil([this] { return status_ != 0; }, std::chrono::steady_clock::now() + longestWaitForHeaders_);
    // A redirect without a target is an answer only when it arrived whole.
    if (!isRunning_ && result_ == CURLE_OK) {
        curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status_);
    }
    return handle_.answerOf(WebMethod::content, result_, status_);
}

std::size_t WebDownload::read(std::span<std::byte> buffer) {
    if (!hasBytes()) {
        bytes_.clear();
        position_ = 0;
        if (isPaused_) {
            isPaused_ = false;
            curl_easy_pause(handle_.get(), CURLPAUSE_CONT);
        }
        workUntil([this] { return hasBytes(); }, std::nullopt);
    }
    const auto waiting = std::span(bytes_).subspan(position_);
    const std::size_t count = std::min(buffer.size(), waiting.size());
    std::copy_n(waiting.begin(), count, buffer.begin());
    position_ += count;
    return count;
}

std::optional<WebAnswer> WebDownload::failure() const {
    if (isRunning_ || result_ == CURLE_OK) return std::nullopt;
    return handle_.answerOf(WebMethod::content, result_, 0);
}

void WebDownload::end() noexcept {
    if (isRunning_) curl_multi_remove_handle(multi_.get(), handle_.get());
    isRunning_ = false;
    isPaused_ = false;
    bytes_.clear();
    position_ = 0;
}

FileAttributes WebDownload::attributes() const {
    FileAttributes attributes;
    curl_off_t length = -1;
    curl_easy_getinfo(handle_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    if (length >= 0) attributes.size = static_cast<std::uint64_t>(length);
    curl_off_t changed = -1;
    curl_easy_getinfo(handle_.get(), CURLINFO_FILETIME_T, &changed);
    if (changed >= 0) attributes.changed = timeOf(changed);
    return attributes;
}

void WebDownload::workUntil(const std::function<bool()>& isEnough, std::optional<Time> deadline) {
    while (isRunning_ && !isEnough()) {
        int running = 0;
        require(curl_multi_perform(multi_.get(), &running));
        takeResult();
        if (!isRunning_ || isEnough()) return;
        if (deadline && std::chrono::steady_clock::now() >= *deadline) {
            end();
            result_ = CURLE_OPERATION_TIMEDOUT;
            return;
        }
        require(curl_multi_poll(multi_.get(), nullptr, 0, longestPollMilliseconds, nullptr));
    }
}

void WebDownload::takeResult() {
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(multi_.get(), &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        result_ = message->data.result;
        // What has come already can still be read.
        isRunning_ = false;
        isPaused_ = false;
        curl_multi_remove_handle(multi_.get(), handle_.get());
        return;
    }
}

std::size_t WebDownload::receiveHeader(char* line, std::size_t, std::size_t length, void* download) noexcept {
    auto& self = *static_cast<WebDownload*>(download);
    const long status = self.handle_.statusAtEndOfHeaders(std::string_view(line, length));
    if (status == 0) return length;
    self.status_ = status;
    return isSuccess(status) ? length : 0;
}

std::size_t WebDownload::receiveBody(char* data, std::size_t, std::size_t length, void* download) noexcept {
    auto& self = *static_cast<WebDownload*>(download);
    // The body of a redirect that leads nowhere.
    if (!isSuccess(self.status_)) return length;
    if (self.hasBytes() && self.bytes_.size() + length > mostBytesWaiting) {
        self.isPaused_ = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    const auto received = std::as_bytes(std::span(data, length));
    try {
        self.bytes_.insert(self.bytes_.end(), received.begin(), received.end());
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return length;
}

}  // namespace korvex::runtime::storage
