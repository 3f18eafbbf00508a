// Line ends and the byte order mark.
#include "host/kwsh/script_lines.h"

#include "runtime/process/process.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::u16string lineFrom(std::string_view bytes) {
    if (bytes.ends_with('\r')) bytes.remove_suffix(1);
    return runtime::text::fromBytes(bytes);
}

}  // namespace

TextLines::TextLines(std::string text)
    : text_(std::move(text)), at_(text_.starts_with(byteOrderMark) ? byteOrderMark.size() : 0) {}

std::optional<std::u16string> TextLines::nextLine(bool) {
    if (at_ >= text_.size()) return std::nullopt;
    const std::size_t end = std::min(text_.find('\n', at_), text_.size());
    const std::string_view line = std::string_view(text_).substr(at_, end - at_);
    at_ = end + 1;
    return lineFrom(line);
}

std::optional<std::u16string> StreamLines::nextLine(bool) {
    std::string line;
    const runtime::process::InterruptibleReading reading;
    if (!std::getline(stream_, line)) return std::nullopt;
    if (isFirst_ && line.starts_with(byteOrderMark)) line.erase(0, byteOrderMark.size());
    isFirst_ = false;
    return lineFrom(line);
}

}  // namespace korvex::host
