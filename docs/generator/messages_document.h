// docs/messages.md: every identifier with its English text, made from the catalog and the message classes.
#pragma once

#include <filesystem>
#include <string>

namespace korvex::docs {

/// The document, UTF-8. `catalogFolder` holds the sources of the catalog: what its files say about their
/// arguments is taken over. Raises `std::runtime_error` for a component whose file cannot be read.
std::string messagesDocument(const std::filesystem::path& catalogFolder);

}  // namespace korvex::docs
