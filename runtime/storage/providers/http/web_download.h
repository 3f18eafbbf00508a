// The content of a web location, as much at a time as is asked for: the server is made to wait meanwhile.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "runtime/storage/providers/http/web_handle.h"

namespace korvex::runtime::storage {

/// One download at a time, over connections that stay open between downloads.
class WebDownload {
public:
    /// Raises `WebSetupError` and `std::bad_alloc`.
    explicit WebDownload(const WebOptions& options);
    ~WebDownload();
    WebDownload(const WebDownload&) = delete;
    WebDownload& operator=(const WebDownload&) = delete;

    /// Asks for the content and waits for the headers of the answer, no longer than a request may take. The
    /// content can be read when the status is a success.
    WebAnswer begin(const std::string& location);
    /// Fills the buffer as far as there are bytes; 0 when all has come or the rest will not.
    std::size_t read(std::span<std::byte> buffer);
    /// What became of it, after `read` has given 0; nothing when everything has come.
    std::optional<WebAnswer> failure() const;
    /// Gives up what has not been read yet.
    void end() noexcept;

    FileAttributes attributes() const;

private:
    struct MultiDeleter {
        void operator()(CURLM* multi) const noexcept { curl_multi_cleanup(multi); }
    };
    using Time = std::chrono::steady_clock::time_point;

    /// Lets libcurl work until there is enough or nothing more to come.
    void workUntil(const std::function<bool()>& isEnough, std::optional<Time> deadline);
    void takeResult();
    bool hasBytes() const noexcept { return position_ < bytes_.size(); }

    static std::size_t receiveHeader(char*, std::size_t, std::size_t, void* download) noexcept;
    static std::size_t receiveBody(char*, std::size_t, std::size_t, void* download) noexcept;

    const std::chrono::milliseconds longestWaitForHeaders_;
    long status_ = 0;
    bool isRunning_ = false;
    bool isPaused_ = false;
    CURLcode result_ = CURLE_OK;
    /// Received and not read yet, from `position_` on.
    std::vector<std::byte> bytes_;
    std::size_t position_ = 0;
    std::unique_ptr<CURLM, MultiDeleter> multi_;
    // Behind the multi handle: it must be gone first.
    WebHandle handle_;
};

}  // namespace korvex::runtime::storage
