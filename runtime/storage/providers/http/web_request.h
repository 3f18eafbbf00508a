// One request at a time to web servers, over connections that stay open between requests.
#pragma once

#include <cstddef>
#include <string>

#include "runtime/storage/providers/http/web_handle.h"

namespace korvex::runtime::storage {

class WebRequest {
public:
    /// Raises `WebSetupError` and `std::bad_alloc`.
    explicit WebRequest(const WebOptions& options);

    /// `location` is a location's text in UTF-8, of http or https. The method is one that wants no content. A
    /// pending interrupt ends the request and stays pending.
    WebAnswer send(const std::string& location, WebMethod method);

private:
    static std::size_t receiveHeader(char*, std::size_t, std::size_t, void* request) noexcept;
    static std::size_t receiveBody(char*, std::size_t, std::size_t, void* request) noexcept;

    WebMethod method_ = WebMethod::head;
    /// Of the answer that counts, as soon as its headers are complete.
    long status_ = 0;
    WebHandle handle_;
};

}  // namespace korvex::runtime::storage
