// A row a contest: its name, a bar as long as the ratio, and a mark at the goal.
#include "bench/report/picture.h"

#include <algorithm>
#include <ostream>

namespace korvex::bench::report {

namespace {

// In the picture's own units, which are pixels at its natural size.
constexpr double width = 960;
constexpr double barsBegin = 430;
constexpr double barsEnd = 890;
constexpr double rowHeight = 22;
constexpr double barHeight = 12;
constexpr double titleHeight = 40;
constexpr double headHeight = 54;
/// Bars beyond the axis are cut; their number tells the ratio.
constexpr double longestAxis = 3;

constexpr const char* style = R"(<style>
  .page { fill: #ffffff } text { font: 12px system-ui, sans-serif; fill: #1f2328 }
  .title { font-weight: 600; font-size: 14px }
  .small { font-size: 11px; fill: #59636e }
  .met { fill: #2da44e } .slower { fill: #8c959f } .missed { fill: #cf222e }
  .axis { stroke: #d1d9e0 } .even { stroke: #59636e; stroke-dasharray: 3 3 } .goal { stroke: #0969da; stroke-width: 3 }
  @media (prefers-color-scheme: dark) {
    .page { fill: #0d1117 } text { fill: #f0f6fc } .small { fill: #9198a1 }
    .met { fill: #3fb950 } .slower { fill: #848d97 } .missed { fill: #f85149 }
    .axis { stroke: #3d444d } .even { stroke: #9198a1 } .goal { stroke: #58a6ff }
  }
</style>
)";

std::string escaped(const std::string& text) {
    std::string result;
    for (const char unit : text) {
        switch (unit) {
            case '&': result += "&amp;"; break;
            case '<': result += "&lt;"; break;
            case '>': result += "&gt;"; break;
            default: result += unit;
        }
    }
    return result;
}

class Picture {
public:
    Picture(std::ostream& stream, const std::vector<Place>& places) : stream_(stream), places_(places) {
        for (const Place& place : places_) {
            if (place.contests.empty()) continue;
            height_ += titleHeight + rowHeight * static_cast<double>(place.contests.size());
            for (const Contest& contest : place.contests)
                axis_ = std::max({axis_, contest.ratio(), contest.goal});
        }
        axis_ = std::min(axis_ * 1.05, longestAxis);
    }

    void write() {
        stream_ << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << width << ' ' << height_
                << "\" width=\"" << width << "\" height=\"" << height_ << "\" role=\"img\">\n"
                << "<title>Our time as a ratio to the peer's, contest by contest</title>\n"
                << style << "<rect class=\"page\" width=\"100%\" height=\"100%\" rx=\"6\"/>\n";
        writeText(10, 20, "title", "Our time / the peer's time: shorter is faster");
        writeText(10, 38, "small", "Dashed: as fast as the peer. Blue mark: the goal.");
        double y = headHeight;
        for (const Place& place : places_)
            if (!place.contests.empty()) writePlace(place, y);
        stream_ << "</svg>\n";
    }

private:
    double placeOf(double ratio) const noexcept {
        return barsBegin + (barsEnd - barsBegin) * std::min(ratio / axis_, 1.0);
    }

    void writeText(double x, double y, const char* kind, const std::string& text, bool endsThere = false) {
        stream_ << "<text x=\"" << x << "\" y=\"" << y << "\" class=\"" << kind << '"'
                << (endsThere ? " text-anchor=\"end\"" : "") << '>' << escaped(text) << "</text>\n";
    }

    void writeLine(double x, double top, double bottom, const char* kind) {
        stream_ << "<line x1=\"" << x << "\" y1=\"" << top << "\" x2=\"" << x << "\" y2=\"" << bottom
                << "\" class=\"" << kind << "\"/>\n";
    }

    void writePlace(const Place& place, double& y) {
        y += titleHeight;
        writeText(10, y - 12, "title", place.title);
        const double bottom = y + rowHeight * static_cast<double>(place.contests.size());
        writeLine(barsBegin, y, bottom, "axis");
        for (const Contest& contest : place.contests) {
            writeContest(contest, y);
            y += rowHeight;
        }
        writeLine(placeOf(1), bottom - rowHeight * static_cast<double>(place.contests.size()), bottom,
                  "even");
    }

    void writeContest(const Contest& contest, double top) {
        const double middle = top + rowHeight / 2;
        const char* const kind = !contest.isGoalMet()                        ? "missed"
                                 : contest.hasGoal() || contest.ratio() <= 1 ? "met"
                                                                             : "slower";
        writeText(barsBegin - 8, middle + 4, "label",
                  contest.command + ", " + contest.name + " / " + contest.peer, true);
        const double end = placeOf(contest.ratio());
        stream_ << "<rect x=\"" << barsBegin << "\" y=\"" << middle - barHeight / 2 << "\" width=\""
                << end - barsBegin << "\" height=\"" << barHeight << "\" class=\"" << kind << "\"/>\n";
        if (contest.hasGoal()) {
            writeLine(placeOf(contest.goal), middle - barHeight / 2 - 2, middle + barHeight / 2 + 2, "goal");
        }
        writeText(barsEnd + 12, middle + 4, "label", ratioText(contest.ratio()));
    }

    std::ostream& stream_;
    const std::vector<Place>& places_;
    double axis_ = 1;
    double height_ = headHeight + 10;
};

}  // namespace

void writePicture(std::ostream& picture, const std::vector<Place>& places) {
    Picture(picture, places).write();
}

}  // namespace korvex::bench::report
