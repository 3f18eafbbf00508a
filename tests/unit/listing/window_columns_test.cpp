// The width of the command window, as the host has set it.
#include <gtest/gtest.h>

#include "platform/listing.h"
#include "runtime/interpreter/output.h"

namespace {

TEST(WindowColumnsTest, IsWhatTheHostHasSet) {
    const std::uint64_t earlier = ioGetNumWindowColumns();
    korvex::runtime::interpreter::setWindowColumns(132);
    EXPECT_EQ(ioGetNumWindowColumns(), 132U);
    korvex::runtime::interpreter::setWindowColumns(earlier);
}

}  // namespace
