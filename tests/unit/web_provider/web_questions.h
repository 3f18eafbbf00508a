// What the tests of the web provider ask, and how they look at a failure.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/storage/providers/http/web_provider.h"
#include "runtime/text/encoding.h"
#include "tests/support/loopback_web_server.h"

namespace korvex::tests {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

using runtime::storage::AbsoluteIRI;
using runtime::storage::WebOptions;
using runtime::storage::WebProvider;
using Protocol = LoopbackWebServer::Protocol;

inline AbsoluteIRI locationOf(const std::string& address) {
    return AbsoluteIRI(runtime::text::fromBytes(address));
}

inline AbsoluteIRI locationOn(const LoopbackWebServer& server, const std::string& path) {
    return locationOf(server.address() + path);
}

/// The exception that the question raises; fails the test when it raises none.
inline std::optional<vfs::Exception> failureOf(WebProvider& web, const AbsoluteIRI& location) {
    try {
        const provider::ExistenceType found = web.existence(location);
        ADD_FAILURE() << "no exception, but the answer " << found;
    } catch (const vfs::Exception& failure) {
        return failure;
    }
    return std::nullopt;
}

/// The code of that exception; `unknownError` beside a failed test when there is none.
inline vfs::ErrorCode errorOf(WebProvider& web, const AbsoluteIRI& location) {
    const auto failure = failureOf(web, location);
    return failure ? failure->getErrorCode() : vfs::unknownError;
}

inline std::vector<std::string> methodsOf(const LoopbackWebServer& server) {
    std::vector<std::string> methods;
    for (const auto& request : server.requests())
        methods.push_back(request.method);
    return methods;
}

}  // namespace korvex::tests
