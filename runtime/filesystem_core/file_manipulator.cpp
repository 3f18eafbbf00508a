// The base of the engines: how failures are recorded, and what the environment is told.
#include <algorithm>
#include <exception>
#include <iterator>
#include <system_error>

#include "platform/filesystem_core.h"
#include "platform/message_identifiers.h"
#include "runtime/dispatcher/environment_events.h"
#include "runtime/filesystem_core/stored_messages.h"
#include "runtime/messages/environment_messages.h"
#include "runtime/text/encoding.h"

namespace korvex::io::filesystem::core {

namespace dispatcher = korvex::runtime::dispatcher;
namespace except = foundation::core::except;
namespace internal = korvex::runtime::filesystem_core;
namespace text = korvex::runtime::text;
namespace vfs = foundation::storage::vfs;

namespace {

template <class Message>
boost::exception_ptr stored(const Message& message, std::string identifier) {
    return boost::copy_exception(except::Exception<Message>(message, std::move(identifier)));
}

template <class Message>
boost::exception_ptr stored(const Message& message) {
    return stored(message, message.identifier());
}

/// The operating system's own words in the exception that is being handled, if any.
std::u16string systemWordsOfPresentFailure() {
    if (!std::current_exception()) return {};
    try {
        throw;
    } catch (const vfs::Exception& failure) {
        return text::fromBytes(failure.getSystemText());
    } catch (const std::system_error& failure) {
        return text::fromBytes(failure.code().message());
    } catch (...) {
        return {};
    }
}

boost::exception_ptr systemFailure(std::string identifier) {
    const std::u16string reason = systemWordsOfPresentFailure();
    if (reason.empty()) return stored(KORVEX::FileManip::OSError(), std::move(identifier));
    return stored(KORVEX::FileManip::OSErrorWithReason(reason), std::move(identifier));
}

template <class Message>
boost::exception_ptr ownMessage(std::string identifier) {
    return stored(Message(), std::move(identifier));
}

/// The failures that have an entry of their own; all others are the system's.
struct FailureByKey {
    std::string_view word;
    std::string_view key;
    boost::exception_ptr (*make)(std::string identifier);
};

constexpr FailureByKey failuresByKey[] = {
    {"FILEATTRIB", "CannotFindFile", ownMessage<KORVEX::FILEATTRIB::CannotFindFile>},
    {"FILEATTRIB", "CouldNotSetAttributes", ownMessage<KORVEX::FILEATTRIB::CouldNotSetAttributes>},
};

}  // namespace

FileManipulator::FileManipulator() = default;
FileManipulator::~FileManipulator() = default;

Status FileManipulator::GetStatus() { return status_; }

// The signature is the interface's.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void FileManipulator::ParseOptArgs(std::vector<std::u16string>) {}

std::string FileManipulator::GetErrorMsgIdPrefix() { return "FILE"; }

void FileManipulator::MarkDirOutOfDate(std::u16string& folder) { dispatcher::markFolderOutOfDate(folder); }

void FileManipulator::RequestPathRefresh() const { dispatcher::requestPathRefresh(); }

void FileManipulator::SetErrorStatus(const char* word, const char* key) {
    const auto known =
        std::find_if(std::begin(failuresByKey), std::end(failuresByKey),
                     [&](const FailureByKey& failure) { return failure.word == word && failure.key == key; });
    const auto make = known != std::end(failuresByKey) ? known->make : systemFailure;
    status_.exception = make(std::string("KORVEX:") + word + ':' + key);
    status_.code = Status::failure;
}

void FileManipulator::SetVFSErrorStatus(const vfs::Exception& failure, const std::u16string& path) {
    const std::string identifier = vfs::messageOf(failure.getErrorCode(), path).identifier();
    internal::storeMessageOfOneArgument(status_, identifier, path);
}

bool FileManipulator::SetErrorExceptionContext(const std::u16string& contexts, const std::u16string& path) {
    const std::string identifier = text::toDisplayBytes(contexts);
    if (!internal::storeMessageOfOneArgument(status_, identifier, path)) return false;
    status_.code = Status::failure;
    return true;
}

bool FileManipulator::CheckStringForPathMax(const std::u16string& path, std::size_t limit) {
    if (path.size() <= limit) return true;
    status_.exception = stored(KORVEX::FILE::PATHMAX());
    status_.code = Status::failure;
    return false;
}

bool FileManipulator::FilenameContainsNull(const std::u16string& path) {
    if (path.find(u'\0') == std::u16string::npos) return false;
    status_.exception = stored(KORVEX::FileManip::NullCharacterInName());
    status_.code = Status::failure;
    return true;
}

}  // namespace korvex::io::filesystem::core
