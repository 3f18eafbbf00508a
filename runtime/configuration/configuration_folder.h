// Where the environment keeps what outlives a run.
#pragma once

#include <string>

namespace korvex::runtime::configuration {

/// The folder as an absolute native path; made when something is first written to it. Empty, as it is at the
/// start, while nothing is kept: what the services know then lasts for this run.
std::u16string configurationFolder();

/// To be set by the host before a service is used. The services forget what they have read, and what they
/// knew without a folder.
void setConfigurationFolder(const std::u16string& path);

}  // namespace korvex::runtime::configuration
