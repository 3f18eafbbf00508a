// Sinks of the diagnostic trace, and how a record is laid out.
#include "runtime/log/trace_output.h"

#include <algorithm>
#include <boost/log/core.hpp>
#include <boost/log/expressions/message.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sinks/text_ostream_backend.hpp>
#include <boost/log/utility/exception_handler.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <cerrno>
#include <fstream>
#include <iomanip>
#include <system_error>

#include "platform/diagnostic_log.h"
#include "platform/foundation_filesystem.h"
#include "runtime/log/diagnostic_source.h"

namespace korvex::runtime::log {

namespace {

using io::filesystem::core::log::getLogger;
using StreamPointer = boost::shared_ptr<std::ostream>;
using Frontend = boost::log::sinks::synchronous_sink<boost::log::sinks::text_ostream_backend>;

constexpr int severityColumns = 4;
constexpr int blanksOfLevel = 2;

std::uint32_t severityOf(const boost::log::attribute_value_set& values) {
    return boost::log::extract_or_default<std::uint32_t>(severityAttribute, values, 0U);
}

void writeLine(const boost::log::record_view& record, boost::log::formatting_ostream& line) {
    const int level = boost::log::extract_or_default<int>(indentAttribute, record, 0);
    line << std::setw(severityColumns) << severityOf(record.attribute_values()) << ' '
         << std::string(static_cast<std::size_t>(std::max(level, 0) * blanksOfLevel), ' ')
         << record[boost::log::expressions::smessage];
}

StreamPointer borrowed(std::ostream& stream) {
    return StreamPointer(&stream, [](std::ostream*) {});
}

StreamPointer emptiedFile(const std::u16string& path) {
    errno = 0;
    const auto file = boost::make_shared<std::ofstream>(fl::filesystem::system_path(path),
                                                        std::ios::trunc | std::ios::binary);
    if (!*file) throw std::system_error(errno, std::generic_category());
    return file;
}

}  // namespace

/// A sink of the logging library, in force as long as the object lives. While the last one goes, logging goes
/// off: without a sink the library would write to the console.
class TraceOutput::Sink {
public:
    explicit Sink(const StreamPointer& stream) : frontend_(boost::make_shared<Frontend>()) {
        frontend_->locked_backend()->add_stream(stream);
        frontend_->locked_backend()->auto_flush(true);
        frontend_->set_formatter(&writeLine);
        frontend_->set_filter([](const boost::log::attribute_value_set& values) {
            return getLogger().isEnabled(severityOf(values));
        });
        frontend_->set_exception_handler(boost::log::make_exception_suppressor());
        const auto lock = diagnosticSource().holdOpening();
        boost::log::core::get()->add_sink(frontend_);
        boost::log::core::get()->set_logging_enabled(++sinks() > 0);
    }
    ~Sink() {
        const auto lock = diagnosticSource().holdOpening();
        boost::log::core::get()->set_logging_enabled(--sinks() > 0);
        boost::log::core::get()->remove_sink(frontend_);
    }
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

private:
    /// How many there are; changed under the lock only.
    static int& sinks() {
        static int count = 0;
        return count;
    }

    boost::shared_ptr<Frontend> frontend_;
};

TraceOutput::TraceOutput(std::ostream& stream, std::uint32_t mask)
    : sink_(std::make_unique<Sink>(borrowed(stream))), maskBefore_(getLogger().mask()) {
    getLogger().setMask(mask);
}

TraceOutput::TraceOutput(const std::u16string& path, std::uint32_t mask)
    : sink_(std::make_unique<Sink>(emptiedFile(path))), maskBefore_(getLogger().mask()) {
    getLogger().setMask(mask);
}

TraceOutput::~TraceOutput() { getLogger().setMask(maskBefore_); }

}  // namespace korvex::runtime::log
