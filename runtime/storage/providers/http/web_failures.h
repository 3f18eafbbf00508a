// What an unsuccessful answer, or none, means as an error of the storage layer: two tables.
#pragma once

#include <curl/curl.h>

#include "platform/storage_vfs.h"

namespace korvex::runtime::storage {

/// Of a status that is neither success nor "not found".
foundation::storage::vfs::ErrorCode errorOfStatus(long status) noexcept;

/// Of a request that got no answer.
foundation::storage::vfs::ErrorCode errorOfTransfer(CURLcode result) noexcept;

}  // namespace korvex::runtime::storage
