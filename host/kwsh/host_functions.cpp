// The table of the host's functions and those that look at values or make arrays; conversions between texts
// and numbers are in text_functions.cpp.
#include "host/kwsh/host_functions.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <limits>

#include "host/kwsh/command_arguments.h"
#include "host/kwsh/failure.h"
#include "host/kwsh/operators.h"
#include "host/kwsh/text_functions.h"
#include "runtime/process/process.h"

namespace korvex::host {
namespace {

constexpr std::size_t noLimit = std::numeric_limits<std::size_t>::max();

[[noreturn]] void raiseBad(const resource_core::BaseMsgID& message) {
    throw HostError("badArgument", message);
}

// ------------------------------------------------------------------------------------------ sizes

std::size_t sizeFrom(double number) {
    if (!(number >= 0) || number != std::trunc(number))
        raiseBad(messages::sizeNotWhole(widen(numberText(number))));
    // What is larger than any array is refused where the array is made.
    return static_cast<std::size_t>(std::min(number, 9e18));
}

std::size_t sizeFrom(const kxArray* argument) {
    if (kxGetClassID(argument) != kxDOUBLE_CLASS || !isScalar(argument))
        raiseBad(messages::sizeNotOneNumber(sizeAndClassText(argument)));
    return sizeFrom(kxGetScalar(argument));
}

/// One number is both rows and columns, one row of numbers is all sizes, several arguments are a size each.
Dimensions dimensionsFrom(std::span<const Value> arguments) {
    if (arguments.empty()) return {1, 1};
    const kxArray* first = arguments[0].get();
    Dimensions dimensions;
    if (arguments.size() > 1) {
        for (const Value& argument : arguments)
            dimensions.push_back(sizeFrom(argument.get()));
    } else if (isScalar(first)) {
        dimensions.assign(2, sizeFrom(first));
    } else if (kxGetClassID(first) == kxDOUBLE_CLASS && kxGetNumberOfElements(first) >= 2) {
        for (const double number : kxGetDoubles(first))
            dimensions.push_back(sizeFrom(number));
    } else {
        raiseBad(messages::sizesNotNumbers(sizeAndClassText(first)));
    }
    return dimensions;
}

// --------------------------------------------------------------------------------------- making

Value zerosOf(std::span<const Value> arguments) {
    return makeArray(kxDOUBLE_CLASS, dimensionsFrom(arguments));
}

Value onesOf(std::span<const Value> arguments) {
    Value array = zerosOf(arguments);
    std::ranges::fill(kxGetDoubles(array.get()), 1.0);
    return array;
}

Value cellOf(std::span<const Value> arguments) {
    return makeArray(kxCELL_CLASS, arguments.empty() ? Dimensions{0, 0} : dimensionsFrom(arguments));
}

Value stringsOf(std::span<const Value> arguments) {
    return makeArray(kxSTRING_CLASS, dimensionsFrom(arguments));
}

Value emptyStructure(std::span<const Value>) { return Value(kxCreateStructMatrix(1, 1, 0, nullptr)); }

Value logicalOf(std::span<const Value> arguments) {
    const kxArray* numbers = arguments[0].get();
    if (kxGetClassID(numbers) == kxLOGICAL_CLASS) return shared(numbers);
    if (kxGetClassID(numbers) != kxDOUBLE_CLASS)
        raiseBad(messages::logicalOfNumbersOnly(sizeAndClassText(numbers)));
    const auto dimensions = kxGetDimensions(numbers);
    Value truths = makeArray(kxLOGICAL_CLASS, {dimensions.begin(), dimensions.end()});
    std::ranges::transform(kxGetDoubles(numbers), kxGetLogicals(truths.get()).begin(), [](double number) {
        if (std::isnan(number)) raiseBad(messages::nanIsNoTruth());
        return number != 0;
    });
    return truths;
}

// ------------------------------------------------------------------------------------ rearranging

Value reshapeOf(std::span<const Value> arguments) {
    const kxArray* array = arguments[0].get();
    Dimensions dimensions = dimensionsFrom(arguments.subspan(1));
    // Multiplied as doubles: what is too large to count exactly is unequal in any case.
    double count = 1;
    for (const std::size_t dimension : dimensions)
        count *= static_cast<double>(dimension);
    if (count != static_cast<double>(kxGetNumberOfElements(array)))
        raiseBad(messages::reshapedCountDiffers(countText(kxGetNumberOfElements(array))));
    while (dimensions.size() > 2 && dimensions.back() == 1)
        dimensions.pop_back();
    Value reshaped(kxDuplicateArray(array));
    kxSetDimensions(reshaped.get(), dimensions);
    return reshaped;
}

Value repmatOf(std::span<const Value> arguments) {
    const kxArray* tile = arguments[0].get();
    const std::size_t down = sizeFrom(arguments[1].get());
    const std::size_t across = sizeFrom(arguments[2].get());
    const auto tileDimensions = kxGetDimensions(tile);
    if (tileDimensions.size() > 2) raiseBad(messages::repeatedMatrixOnly());

    const std::size_t tileRows = tileDimensions[0];
    const std::size_t tileColumns = tileDimensions[1];
    const auto times = [](std::size_t size, std::size_t count) {
        const bool overflows = size != 0 && count > std::numeric_limits<std::size_t>::max() / size;
        return overflows ? std::numeric_limits<std::size_t>::max() : size * count;
    };
    Value repeated = makeArrayLike(tile, {times(tileRows, down), times(tileColumns, across)});
    if (kxIsEmpty(repeated.get())) return repeated;
    std::size_t target = 0;
    const std::size_t columns = kxGetN(repeated.get());
    for (std::size_t column = 0; column < columns; ++column) {
        const std::size_t tileColumn = tileRows * (column % tileColumns);
        for (std::size_t copy = 0; copy < down; ++copy) {
            for (std::size_t row = 0; row < tileRows; ++row) {
                copyElement(repeated.get(), target++, tile, tileColumn + row);
            }
        }
    }
    return repeated;
}

// ------------------------------------------------------------------------------------ looking at

Value sizeOf(std::span<const Value> arguments) {
    const auto dimensions = kxGetDimensions(arguments[0].get());
    Value sizes(kxCreateDoubleMatrix(1, dimensions.size()));
    std::ranges::transform(dimensions, kxGetDoubles(sizes.get()).begin(),
                           [](std::size_t dimension) { return static_cast<double>(dimension); });
    return sizes;
}

Value classOf(std::span<const Value> arguments) {
    return makeText(widen(kxGetClassName(arguments[0].get())));
}

Value numelOf(std::span<const Value> arguments) {
    return makeDouble(static_cast<double>(kxGetNumberOfElements(arguments[0].get())));
}

Value isEmptyOf(std::span<const Value> arguments) { return makeLogical(kxIsEmpty(arguments[0].get())); }

// ------------------------------------------------------------------------------------- raising

/// Words of letters, digits, _ and -, with a colon between each two.
bool isIdentifier(std::string_view text) {
    const auto isWord = [](std::string_view word) {
        return !word.empty() && std::ranges::all_of(word, [](unsigned char unit) {
            return std::isalnum(unit) != 0 || unit == '_' || unit == '-';
        });
    };
    std::size_t words = 1;
    for (std::size_t colon = text.find(':'); colon != std::string_view::npos; colon = text.find(':')) {
        if (!isWord(text.substr(0, colon))) return false;
        text.remove_prefix(colon + 1);
        ++words;
    }
    return words > 1 && isWord(text);
}

Value raiseError(std::span<const Value> arguments) {
    if (arguments.size() == 1) throw HostError(Failure{"KORVEX:host:userError", textArgument(arguments[0])});
    Failure failure{nameArgument(arguments[0]), textArgument(arguments[1])};
    if (!isIdentifier(failure.identifier)) raiseBad(messages::identifierNotValid(textArgument(arguments[0])));
    throw HostError(std::move(failure));
}

Value requireTrue(std::span<const Value> arguments) {
    if (isTrue(arguments[0].get())) return {};
    if (arguments.size() == 1) throw FailedAssertion();
    throw HostError("assertionFailed", textArgument(arguments[1]));
}

// ------------------------------------------------------------------------------------ constants

Value trueValue(std::span<const Value>) { return makeLogical(true); }
Value falseValue(std::span<const Value>) { return makeLogical(false); }
Value missingValue(std::span<const Value>) { return makeString(std::nullopt); }
Value notANumber(std::span<const Value>) { return makeDouble(std::numeric_limits<double>::quiet_NaN()); }
Value infinity(std::span<const Value>) { return makeDouble(std::numeric_limits<double>::infinity()); }

Value temporaryFolder(std::span<const Value>) {
    return Value(matrix::create(runtime::process::makeTemporaryFolder()).release());
}

constexpr std::array functions = {
    HostFunction{"Inf", 0, 0, infinity, "Inf", "the infinite number"},
    HostFunction{"NaN", 0, 0, notANumber, "NaN", "the number that is none"},
    HostFunction{"assert", 1, 2, requireTrue, "assert(x, text)",
                 "an error unless x is true; text may be left out"},
    HostFunction{"cell", 0, noLimit, cellOf, "cell(dims...)", "a cell array of empty elements"},
    HostFunction{"char", 1, noLimit, charsOf, "char(n, ...)", "a character row of these code units"},
    HostFunction{"class", 1, 1, classOf, "class(x)", "the name of the class of x"},
    HostFunction{"double", 1, 1, doublesOf, "double(text)", "the code units of a text as numbers"},
    HostFunction{"error", 1, 2, raiseError, "error(id, text)", "raises an error; id may be left out"},
    HostFunction{"false", 0, 0, falseValue, "false", "the logical value"},
    HostFunction{"isempty", 1, 1, isEmptyOf, "isempty(x)", "true when x has no element"},
    HostFunction{"logical", 1, 1, logicalOf, "logical(x)", "false for 0, true for any other number"},
    HostFunction{"missing", 0, 0, missingValue, "missing", "a string that is not there"},
    HostFunction{"numel", 1, 1, numelOf, "numel(x)", "the number of elements"},
    HostFunction{"ones", 0, noLimit, onesOf, "ones(dims...)", "an array of ones"},
    HostFunction{"repmat", 3, 3, repmatOf, "repmat(x, m, n)", "x repeated m times down and n times across"},
    HostFunction{"reshape", 2, noLimit, reshapeOf, "reshape(x, dims...)", "the elements of x in other sizes"},
    HostFunction{"size", 1, 1, sizeOf, "size(x)", "the sizes of x"},
    HostFunction{"strcat", 1, noLimit, strcatOf, "strcat(a, b, ...)", "texts one behind the other"},
    HostFunction{"strcmp", 2, 2, sameTexts, "strcmp(a, b)", "true where the texts are the same"},
    HostFunction{"string", 1, 1, stringsFrom, "string(x)", "texts or numbers as a string array"},
    HostFunction{"strings", 0, noLimit, stringsOf, "strings(dims...)", "an array of empty strings"},
    HostFunction{"struct", 0, 0, emptyStructure, "struct()", "a structure without fields"},
    HostFunction{"tempfolder", 0, 0, temporaryFolder, "tempfolder",
                 "makes a folder for scratch work, gives its path"},
    HostFunction{"true", 0, 0, trueValue, "true", "the logical value"},
    HostFunction{"zeros", 0, noLimit, zerosOf, "zeros(dims...)", "an array of zeros"},
};
static_assert(std::ranges::is_sorted(functions, {}, &HostFunction::name));

}  // namespace

std::span<const HostFunction> hostFunctions() { return functions; }

const HostFunction* findHostFunction(std::string_view name) {
    const auto found = std::ranges::lower_bound(functions, name, {}, &HostFunction::name);
    return found != functions.end() && found->name == name ? &*found : nullptr;
}

Value callHostFunction(const HostFunction& function, int outputs, std::span<const Value> arguments) {
    if (outputs > 1) matrix::detail::error_maxlhs();
    if (arguments.size() > function.mostArguments) matrix::detail::error_maxrhs();
    if (arguments.size() < function.fewestArguments) matrix::detail::error_minrhs();
    return function.compute(arguments);
}

}  // namespace korvex::host
