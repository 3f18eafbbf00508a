// A call of `dir`, what it printed, and the elements of its structure array.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/listing.h"
#include "runtime/interpreter/output.h"
#include "runtime/text/encoding.h"
#include "tests/unit/filemanip/entry_call.h"

namespace korvex::filemanip::tests {

/// Collects what is printed for as long as it lives, in the pieces in which it came.
class PrintedText {
public:
    PrintedText()
        : earlier_(runtime::interpreter::setOutputReceiver([this](std::u16string_view text) {
              pieces_.push_back(runtime::text::toDisplayBytes(text));
          })) {}
    ~PrintedText() { runtime::interpreter::setOutputReceiver(std::move(earlier_)); }
    PrintedText(const PrintedText&) = delete;
    PrintedText& operator=(const PrintedText&) = delete;

    std::string text() const {
        std::string all;
        for (const std::string& piece : pieces_)
            all += piece;
        return all;
    }
    const std::vector<std::string>& pieces() const noexcept { return pieces_; }

private:
    std::vector<std::string> pieces_;
    runtime::interpreter::OutputReceiver earlier_;
};

/// A window of that many columns for as long as it lives.
class WindowOfColumns {
public:
    explicit WindowOfColumns(std::uint64_t columns) : earlier_(runtime::interpreter::windowColumns()) {
        runtime::interpreter::setWindowColumns(columns);
    }
    ~WindowOfColumns() { runtime::interpreter::setWindowColumns(earlier_); }
    WindowOfColumns(const WindowOfColumns&) = delete;
    WindowOfColumns& operator=(const WindowOfColumns&) = delete;

private:
    const std::uint64_t earlier_;
};

struct ListingOutcome : Outcome {
    std::string printed;
};

inline ListingOutcome listing(int nlhs, const std::vector<const kxArray*>& arguments) {
    const PrintedText printed;
    ListingOutcome outcome{call(bnFullDirFcn, nlhs, arguments), {}};
    outcome.printed = printed.text();
    return outcome;
}

/// `dir` and `dir(name)` without an output: what is printed.
inline ListingOutcome print() { return listing(0, {}); }
inline ListingOutcome print(std::u16string_view name) { return listing(0, {text(name).get()}); }
/// `s = dir` and `s = dir(name)`.
inline ListingOutcome list() { return listing(1, {}); }
inline ListingOutcome list(std::u16string_view name) { return listing(1, {text(name).get()}); }

inline std::string textOf(const kxArray* characters) {
    const std::span<const char16_t> units = kxGetChars(characters);
    return runtime::text::toDisplayBytes({units.data(), units.size()});
}

inline const kxArray* field(const Array& structure, std::size_t element, const char* name) {
    return kxGetField(structure.get(), element, name);
}

/// The texts of a field, element by element.
inline std::vector<std::string> column(const Array& structure, const char* name) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < kxGetNumberOfElements(structure.get()); ++i)
        texts.push_back(textOf(field(structure, i, name)));
    return texts;
}

inline std::vector<std::string> fieldNamesOf(const Array& structure) {
    std::vector<std::string> names;
    for (int i = 0; i < kxGetNumberOfFields(structure.get()); ++i)
        names.emplace_back(kxGetFieldNameByNumber(structure.get(), i));
    return names;
}

/// 0-by-1 with the six fields in their order.
inline void expectEmptyStructure(const Array& structure) {
    ASSERT_NE(structure, nullptr);
    ASSERT_EQ(kxGetClassID(structure.get()), kxSTRUCT_CLASS);
    EXPECT_EQ(dimensions(structure), (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(fieldNamesOf(structure),
              (std::vector<std::string>{"name", "folder", "date", "bytes", "isdir", "datenum"}));
}

}  // namespace korvex::filemanip::tests
