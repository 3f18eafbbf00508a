// The page of results, in Markdown.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "bench/report/results_file.h"

namespace korvex::bench::report {

/// `picture` is the picture's name beside the page.
void writePage(std::ostream& page, const Description& machine, const std::vector<Place>& places,
               const std::string& picture);

}  // namespace korvex::bench::report
