// Finding the begin of a character that is not complete.
#include "host/kwsh/shell_output.h"

#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

/// How many bytes at the end are the begin of a UTF-8 sequence that needs more.
std::size_t incompleteBytes(std::string_view bytes) {
    constexpr std::size_t longestSequence = 4;
    for (std::size_t back = 1; back < longestSequence && back <= bytes.size(); ++back) {
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - back]);
        const bool isFollower = byte >= 0x80 && byte < 0xC0;
        if (isFollower) continue;
        const bool canBegin = byte >= 0xC2 && byte <= 0xF4;
        const std::size_t length = !canBegin ? 1 : byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
        return length > back ? back : 0;
    }
    return 0;
}

}  // namespace

std::u16string ShellOutput::complete(std::string_view bytes) {
    pending_ += bytes;
    const std::size_t whole = pending_.size() - incompleteBytes(pending_);
    std::u16string text = runtime::text::fromBytes(std::string_view(pending_).substr(0, whole));
    pending_.erase(0, whole);
    return text;
}

std::u16string ShellOutput::rest() {
    std::u16string text = runtime::text::fromBytes(pending_);
    pending_.clear();
    return text;
}

}  // namespace korvex::host
