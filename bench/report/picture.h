// The ratios as bars, in SVG: without scripts, in the colours of the reader's light or dark theme.
#pragma once

#include <iosfwd>
#include <vector>

#include "bench/report/results_file.h"

namespace korvex::bench::report {

void writePicture(std::ostream& picture, const std::vector<Place>& places);

}  // namespace korvex::bench::report
