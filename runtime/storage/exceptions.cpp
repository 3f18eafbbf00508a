// The three exceptions of the storage layer.
#include <mutex>
#include <utility>

#include "platform/message_identifiers.h"
#include "platform/storage_vfs.h"
#include "runtime/storage/location.h"

namespace foundation::storage::vfs {

namespace {

namespace messages = KORVEX::virtualfilesystem;
namespace except = foundation::core::except;

/// The message of each error code, in the order of the codes.
using MakeMessage = resource_core::BaseMsgID (*)(const std::u16string& path);

template <class Message>
resource_core::BaseMsgID make(const std::u16string& path) {
    return Message(path);
}

constexpr MakeMessage makers[] = {
    make<messages::folderNotEmpty>,   make<messages::invalidLocation>,
    make<messages::permissionDenied>, make<messages::resourceAlreadyExists>,
    make<messages::resourceNotFound>, make<messages::readOnlyProvider>,
    make<messages::fileTooLarge>,     make<messages::resourceInUse>,
    make<messages::noSpaceLeft>,      make<messages::ioError>,
    make<messages::internalError>,    make<messages::unsupportedOperation>,
};

static_assert(std::size(makers) == unknownError, "every error code before it has a message of its own");

std::string utf8TextOf(const resource_core::BaseMsgID& message) {
    return except::detail::toUtf8(except::detail::catalogText(message));
}

std::string describe(ErrorCode code, const AbsoluteIRI& location, const std::u16string& context,
                     const std::string& systemText) {
    const std::u16string path = location.getScheme() == korvex::runtime::storage::localScheme
                                    ? fromAbsoluteIRI(location).text()
                                    : location.toString();
    std::string text = utf8TextOf(messageOf(code, path));
    if (!context.empty()) text += " (" + except::detail::toUtf8(context) + ")";
    if (!systemText.empty()) text += " [" + systemText + "]";
    return text;
}

}  // namespace

resource_core::BaseMsgID messageOf(ErrorCode code, const std::u16string& path) {
    const auto number = static_cast<std::size_t>(code);
    return (number < std::size(makers) ? makers[number] : make<messages::unknownError>)(path);
}

namespace detail {

struct LazyText::State {
    std::function<std::string()> make;
    std::once_flag made;
    std::string text;
};

LazyText::LazyText(std::function<std::string()> make) : state_(std::make_shared<State>()) {
    state_->make = std::move(make);
}

const char* LazyText::get() const noexcept {
    try {
        std::call_once(state_->made, [this] { state_->text = state_->make(); });
        return state_->text.c_str();
    } catch (const std::exception&) {
        return "The storage failed, and there is no memory left to say how.";
    }
}

}  // namespace detail

Exception::Exception(ErrorCode code, AbsoluteIRI location, std::u16string context, std::string systemText)
    : code_(code),
      location_(std::move(location)),
      context_(std::move(context)),
      systemText_(std::move(systemText)),
      text_([code, where = location_, during = context_, words = systemText_] {
          return describe(code, where, during, words);
      }) {}

std::unique_ptr<except::IException> Exception::copyToHeap() const {
    return std::make_unique<Exception>(*this);
}
void Exception::throwCopy() const { throw Exception(*this); }

InvalidIRIException::InvalidIRIException(std::u16string text)
    : invalidText_(std::move(text)),
      text_([shown = invalidText_] { return utf8TextOf(messages::invalidIRI(shown)); }) {}

std::unique_ptr<except::IException> InvalidIRIException::copyToHeap() const {
    return std::make_unique<InvalidIRIException>(*this);
}
void InvalidIRIException::throwCopy() const { throw InvalidIRIException(*this); }

UnsupportedIRISchemeException::UnsupportedIRISchemeException(std::u16string scheme)
    : scheme_(std::move(scheme)),
      text_([shown = scheme_] { return utf8TextOf(messages::unsupportedProvider(shown)); }) {}

std::unique_ptr<except::IException> UnsupportedIRISchemeException::copyToHeap() const {
    return std::make_unique<UnsupportedIRISchemeException>(*this);
}
void UnsupportedIRISchemeException::throwCopy() const { throw UnsupportedIRISchemeException(*this); }

}  // namespace foundation::storage::vfs
