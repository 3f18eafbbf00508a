// How a message gets into a status under an identifier that does not follow the running command.
//
// What follows it, "KORVEX:<command>:<key>", goes through `FileManipulator::setStatusException`.
#pragma once

#include <string>
#include <utility>

#include "platform/filesystem_core.h"
#include "platform/user_exceptions.h"

namespace korvex::filemanip {

/// Stores the text of a message under another identifier; the code stays as it is.
template <class Tag>
void storeMessage(io::filesystem::core::Status& status, const Tag& message, std::string identifier) {
    using Stored = foundation::core::except::Exception<Tag>;
    status.exception = boost::copy_exception(Stored(message, std::move(identifier)));
}

/// Stores a message under its own identifier; the code stays as it is.
template <class Tag>
void storeMessage(io::filesystem::core::Status& status, const Tag& message) {
    storeMessage(status, message, message.identifier());
}

/// Stores the text of a message under another identifier, as a failure.
template <class Tag>
void storeFailure(io::filesystem::core::Status& status, const Tag& message, std::string identifier) {
    storeMessage(status, message, std::move(identifier));
    status.code = io::filesystem::core::Status::failure;
}

/// Stores a message under its own identifier, as a failure.
template <class Tag>
void storeFailure(io::filesystem::core::Status& status, const Tag& message) {
    storeFailure(status, message, message.identifier());
}

}  // namespace korvex::filemanip
