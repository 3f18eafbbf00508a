// Lines of a script: of a text in memory, and of a stream.
#pragma once

#include <istream>
#include <string>
#include <string_view>

#include "host/kwsh/line_buffer.h"

namespace korvex::host {

/// A text in bytes, such as a script file's. Lines end with a line feed, with or without a carriage return
/// before it; a byte order mark at the begin is skipped.
class TextLines : public LineSource {
public:
    explicit TextLines(std::string text);
    std::optional<std::u16string> nextLine(bool isContinuation) override;

private:
    std::string text_;
    std::size_t at_ = 0;
};

/// A stream, read line by line as it comes, so that a program at its other end may wait for each answer.
class StreamLines : public LineSource {
public:
    explicit StreamLines(std::istream& stream) : stream_(stream) {}
    std::optional<std::u16string> nextLine(bool isContinuation) override;

private:
    std::istream& stream_;
    bool isFirst_ = true;
};

}  // namespace korvex::host
