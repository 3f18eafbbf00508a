// Builds a folder listing of a million entries as a structure array, and measures what an element costs.
// Exits with 1 when it is more than the system allows itself.
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "bench/array_memory/resident_memory.h"
#include "bench/support/results.h"
#include "platform/kx.h"

namespace {

constexpr std::size_t elements = 1'000'000;
constexpr double mostBytesPerElement = 700;

enum Field : int { name, folder, date, bytes, isdir, datenum, fieldCount };
constexpr std::array<const char*, fieldCount> fieldNames{"name",  "folder", "date",
                                                         "bytes", "isdir",  "datenum"};

struct SharedValues {
    matrix::ArrayOwner folder = matrix::create(u"/srv/measurements/2024/station-17/raw");
    std::array<matrix::ArrayOwner, 2> isdir{matrix::ArrayOwner(kxCreateLogicalScalar(false)),
                                            matrix::ArrayOwner(kxCreateLogicalScalar(true))};
};

// Eight units, another one for each element.
void setName(std::u16string& text, std::size_t index) {
    for (std::size_t place = text.size(); place-- > 1; index /= 10) {
        text[place] = static_cast<char16_t>(u'0' + index % 10);
    }
}

matrix::ArrayOwner buildListing(const SharedValues& shared) {
    matrix::ArrayOwner listing(kxCreateStructMatrix(elements, 1, fieldCount, fieldNames.data()));
    std::u16string text = u"f0000000";
    for (std::size_t index = 0; index < elements; ++index) {
        setName(text, index);
        const double number = static_cast<double>(index);
        kxSetFieldByNumber(listing.get(), index, name, matrix::create(text).release());
        kxSetFieldByNumber(listing.get(), index, folder, kxCreateReference(shared.folder.get()));
        kxSetFieldByNumber(listing.get(), index, date, matrix::create(u"17-Mar-2024 09:41:03").release());
        kxSetFieldByNumber(listing.get(), index, bytes, kxCreateDoubleScalar(number));
        kxSetFieldByNumber(listing.get(), index, isdir, kxCreateReference(shared.isdir[index % 2].get()));
        kxSetFieldByNumber(listing.get(), index, datenum, kxCreateDoubleScalar(739328.0 + number));
    }
    return listing;
}

template <class Work>
double millisecondsOf(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

int measure() {
    const SharedValues shared;
    matrix::ArrayOwner listing;
    const std::size_t before = korvex::bench::residentBytes();
    const double buildTime = millisecondsOf([&] { listing = buildListing(shared); });
    const std::size_t after = korvex::bench::residentBytes();
    const double destroyTime = millisecondsOf([&] { listing.reset(); });

    const double perElement = static_cast<double>(after - before) / static_cast<double>(elements);
    std::printf("%zu elements of %d fields: %.0f bytes an element, built in %.0f ms, destroyed in %.0f ms\n",
                elements, static_cast<int>(fieldCount), perElement, buildTime, destroyTime);
    korvex::bench::record(korvex::bench::Figure{"dir", "an element of its structure array", "bytes",
                                                perElement, mostBytesPerElement});
    if (perElement <= mostBytesPerElement) return EXIT_SUCCESS;
    std::printf("more than %.0f bytes an element\n", mostBytesPerElement);
    return EXIT_FAILURE;
}

}  // namespace

int main() {
    try {
        return measure();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
}
