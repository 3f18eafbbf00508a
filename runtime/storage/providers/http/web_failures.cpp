// From statuses and libcurl's results to the storage layer's error codes.
#include "runtime/storage/providers/http/web_failures.h"

#include <algorithm>
#include <iterator>

namespace korvex::runtime::storage {

namespace vfs = foundation::storage::vfs;

namespace {

struct StatusRange {
    long first;
    long last;
    vfs::ErrorCode code;
};

/// The first range that holds the status decides.
constexpr StatusRange statusRanges[] = {
    {400, 400, vfs::invalidLocation},  {401, 401, vfs::permissionDenied},
    {403, 403, vfs::permissionDenied}, {405, 405, vfs::unsupportedOperation},
    {407, 407, vfs::permissionDenied}, {408, 408, vfs::ioError},
    {414, 414, vfs::invalidLocation},  {423, 423, vfs::resourceInUse},
    {425, 425, vfs::resourceInUse},    {429, 429, vfs::resourceInUse},
    {451, 451, vfs::permissionDenied}, {501, 501, vfs::unsupportedOperation},
    {503, 503, vfs::resourceInUse},    {511, 511, vfs::permissionDenied},
    {500, 599, vfs::ioError},
};

struct TransferResult {
    CURLcode result;
    vfs::ErrorCode code;
};

/// What is not listed went wrong on the way: `ioError`.
constexpr TransferResult transferResults[] = {
    {CURLE_UNSUPPORTED_PROTOCOL, vfs::unsupportedOperation},
    {CURLE_URL_MALFORMAT, vfs::invalidLocation},
    {CURLE_REMOTE_ACCESS_DENIED, vfs::permissionDenied},
    {CURLE_LOGIN_DENIED, vfs::permissionDenied},
    {CURLE_PEER_FAILED_VERIFICATION, vfs::permissionDenied},
    {CURLE_SSL_ISSUER_ERROR, vfs::permissionDenied},
    {CURLE_SSL_INVALIDCERTSTATUS, vfs::permissionDenied},
    {CURLE_SSL_CACERT_BADFILE, vfs::internalError},
    {CURLE_SSL_CERTPROBLEM, vfs::internalError},
    {CURLE_FAILED_INIT, vfs::internalError},
    {CURLE_NOT_BUILT_IN, vfs::internalError},
    {CURLE_OUT_OF_MEMORY, vfs::internalError},
    {CURLE_BAD_FUNCTION_ARGUMENT, vfs::internalError},
    {CURLE_UNKNOWN_OPTION, vfs::internalError},
};

}  // namespace

vfs::ErrorCode errorOfStatus(long status) noexcept {
    const auto* const row =
        std::find_if(std::begin(statusRanges), std::end(statusRanges),
                     [=](const auto& range) { return range.first <= status && status <= range.last; });
    return row == std::end(statusRanges) ? vfs::unknownError : row->code;
}

vfs::ErrorCode errorOfTransfer(CURLcode result) noexcept {
    const auto* const row =
        std::find_if(std::begin(transferResults), std::end(transferResults),
                     [=](const TransferResult& candidate) { return candidate.result == result; });
    return row == std::end(transferResults) ? vfs::ioError : row->code;
}

}  // namespace korvex::runtime::storage
