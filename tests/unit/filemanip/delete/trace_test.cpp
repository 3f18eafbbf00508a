// What `delete` writes to the diagnostic trace: that web locations are read-only, and nothing else.
#include <sstream>

#include "platform/diagnostic_log.h"
#include "runtime/log/trace_output.h"
#include "tests/unit/filemanip/delete/delete_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class DeleteTraceTest : public DeleteTest {
protected:
    std::vector<std::string> traceOf(const Texts& names,
                                     std::uint32_t mask = foundation::log::severity::all) {
        std::ostringstream stream;
        {
            const runtime::log::TraceOutput output(stream, mask);
            deleteNames(names);
        }
        std::vector<std::string> lines;
        std::istringstream written(stream.str());
        for (std::string line; std::getline(written, line);)
            lines.push_back(line);
        return lines;
    }
};

TEST_F(DeleteTraceTest, WebLocationLeavesTwoRecords) {
    EXPECT_THAT(traceOf({u"https://host/a"}),
                ElementsAre(testing::AllOf(HasSubstr("512 "), HasSubstr("HTTP/S URLs are read only.")),
                            testing::AllOf(HasSubstr("16 "), HasSubstr("Exception caught: "),
                                           HasSubstr("No diagnostic information available."))));
}

TEST_F(DeleteTraceTest, EachRecordFollowsItsSeverity) {
    EXPECT_THAT(traceOf({u"https://host/a"}, foundation::log::severity::error),
                ElementsAre(HasSubstr("HTTP/S URLs are read only.")));
    EXPECT_THAT(traceOf({u"https://host/a"}, foundation::log::severity::exceptionInFlight),
                ElementsAre(HasSubstr("Exception caught: ")));
}

TEST_F(DeleteTraceTest, OtherNamesLeaveNone) {
    make({"a"});
    EXPECT_THAT(traceOf({u"a", u"nothing", u"memory:/a", u""}), IsEmpty());
}

}  // namespace
}  // namespace korvex::filemanip::tests
