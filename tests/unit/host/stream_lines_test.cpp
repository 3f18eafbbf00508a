// Statements from a stream are answered as they come.
#include <gtest/gtest.h>

#include <sstream>
#include <streambuf>

#include "tests/unit/host/host_fixture.h"

namespace korvex::tests {
namespace {

/// Gives one line at a time, and notes how much had happened before each.
class SlowLines : public std::streambuf {
public:
    SlowLines(std::vector<std::string> lines, const std::vector<std::string>& events)
        : lines_(std::move(lines)), events_(events) {}
    std::vector<std::size_t> eventsBeforeLine;

private:
    int_type underflow() override {
        eventsBeforeLine.push_back(events_.size());
        if (at_ == lines_.size()) return traits_type::eof();
        std::string& line = lines_[at_++];
        setg(line.data(), line.data(), line.data() + line.size());
        return traits_type::to_int_type(line[0]);
    }

    std::vector<std::string> lines_;
    const std::vector<std::string>& events_;
    std::size_t at_ = 0;
};

TEST(StreamLines, EachStatementIsAnsweredBeforeTheNextLineIsRead) {
    HostSession host;
    SlowLines slow({"x = 1;\n", "y = [1\n", "2];\n"}, host.presenter.events);
    std::istream stream(&slow);
    host::StreamLines lines(stream);
    host::StatementReader reader(lines, host::isCommandName);
    host.session.runAll(reader, true);
    EXPECT_EQ(slow.eventsBeforeLine, (std::vector<std::size_t>{0, 3, 3, 6}));
}

TEST(StreamLines, TheLastLineNeedsNoEnd) {
    HostSession host;
    std::istringstream stream("\xEF\xBB\xBFx = 1\r\ny = 2");
    host::StreamLines lines(stream);
    host::StatementReader reader(lines, host::isCommandName);
    host.session.runAll(reader, true);
    EXPECT_EQ(host.session.workspace().variables.size(), 2U);
}

}  // namespace
}  // namespace korvex::tests
