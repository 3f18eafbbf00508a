// The trees that the storage benchmarks work on.
#pragma once

#include <filesystem>
#include <string>

namespace korvex::bench {

/// Makes the data set of that name as `folder`:
///   small   50,000 files of 4 KiB in 500 folders, two levels
///   mixed   a copy of the include and documentation folders of the machine
///   flat    100,000 empty files in one folder
///   big     one file of 2 GiB
///   sparse  one file of 4 GiB with 16 MiB of data
/// Raises `std::invalid_argument` for another name.
void makeDataSet(const std::string& name, const std::filesystem::path& folder);

}  // namespace korvex::bench
