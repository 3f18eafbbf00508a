// Lines of fields with tabs between.
#include "bench/report/results_file.h"

#include <cmath>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <stdexcept>

namespace korvex::bench::report {

namespace {

using Fields = std::vector<std::string>;

Fields fieldsOf(const std::string& line) {
    Fields fields;
    for (std::size_t begin = 0; begin <= line.size();) {
        const std::size_t end = std::min(line.find('\t', begin), line.size());
        fields.push_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
    return fields;
}

std::string inDigits(double number, int digits) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << number;
    return text.str();
}

template <class Take>
void forEachLine(const std::filesystem::path& path, const Take& take) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error(path.string() + " cannot be read");
    for (std::string line; std::getline(file, line);) {
        if (!take(fieldsOf(line))) throw std::runtime_error(path.string() + " has a strange line: " + line);
    }
}

}  // namespace

Place readPlace(std::string title, const std::filesystem::path& results) {
    Place place{std::move(title), {}, {}};
    forEachLine(results, [&](const Fields& fields) {
        if (fields.size() == 7 && fields[0] == "contest") {
            place.contests.push_back({fields[1], fields[2], fields[3], std::stod(fields[4]),
                                      std::stod(fields[5]), std::stod(fields[6])});
        } else if (fields.size() == 6 && fields[0] == "figure") {
            place.figures.push_back(
                {fields[1], fields[2], fields[3], std::stod(fields[4]), std::stod(fields[5])});
        } else {
            return false;
        }
        return true;
    });
    return place;
}

Description readDescription(const std::filesystem::path& file) {
    Description description;
    forEachLine(file, [&](const Fields& fields) {
        if (fields.size() != 2) return false;
        description.emplace_back(fields[0], fields[1]);
        return true;
    });
    return description;
}

std::string shortNumber(double number) {
    const double size = std::abs(number);
    return inDigits(number, size >= 100 ? 0 : size >= 1 ? 2 : 3);
}

std::string ratioText(double ratio) { return inDigits(ratio, 2); }

}  // namespace korvex::bench::report
