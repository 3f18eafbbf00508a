// What a status means, and an unsuccessful answer, or none, as an error of the storage layer: two tables.
#pragma once

#include <curl/curl.h>

#include "platform/storage_vfs.h"

namespace korvex::runtime::storage {

inline constexpr long partialContent = 206;

constexpr bool isSuccess(long status) noexcept { return status >= 200 && status < 300; }

/// Of a status that is neither success nor "not found".
foundation::storage::vfs::ErrorCode errorOfStatus(long status) noexcept;

/// Of a request that got no answer.
foundation::storage::vfs::ErrorCode errorOfTransfer(CURLcode result) noexcept;

}  // namespace korvex::runtime::storage
