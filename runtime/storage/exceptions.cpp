// The three exceptions of the storage layer.
#include <utility>

#include "platform/message_identifiers.h"
#include "platform/storage_vfs.h"
#include "runtime/text/encoding.h"

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

std::string describe(ErrorCode code, const AbsoluteIRI& location, const std::u16string& context,
                     const std::string& systemText) {
    const std::u16string path =
        location.getScheme() == u"file" ? fromAbsoluteIRI(location).text() : location.toString();
    std::string text = except::detail::toUtf8(except::detail::catalogText(messageOf(code, path)));
    if (!context.empty()) text += " (" + except::detail::toUtf8(context) + ")";
    if (!systemText.empty()) text += " [" + systemText + "]";
    return text;
}

}  // namespace

resource_core::BaseMsgID messageOf(ErrorCode code, const std::u16string& path) {
    const auto number = static_cast<std::size_t>(code);
    return (number < std::size(makers) ? makers[number] : make<messages::unknownError>)(path);
}

Exception::Exception(ErrorCode code, AbsoluteIRI location, std::u16string context, std::string systemText)
    : code_(code),
      location_(std::move(location)),
      context_(std::move(context)),
      systemText_(std::move(systemText)),
      narrowText_(describe(code_, location_, context_, systemText_)) {}

std::unique_ptr<except::IException> Exception::copyToHeap() const { return std::make_unique<Exception>(*this); }
void Exception::throwCopy() const { throw Exception(*this); }
std::u16string Exception::ToUstringImpl() const { return korvex::runtime::text::fromBytes(narrowText_); }

InvalidIRIException::InvalidIRIException(std::u16string text)
    : text_(std::move(text)),
      narrowText_(except::detail::toUtf8(except::detail::catalogText(messages::invalidIRI(text_)))) {}

std::unique_ptr<except::IException> InvalidIRIException::copyToHeap() const {
    return std::make_unique<InvalidIRIException>(*this);
}
void InvalidIRIException::throwCopy() const { throw InvalidIRIException(*this); }
std::u16string InvalidIRIException::ToUstringImpl() const {
    return korvex::runtime::text::fromBytes(narrowText_);
}

UnsupportedIRISchemeException::UnsupportedIRISchemeException(std::u16string scheme)
    : scheme_(std::move(scheme)),
      narrowText_(
          except::detail::toUtf8(except::detail::catalogText(messages::unsupportedProvider(scheme_)))) {}

std::unique_ptr<except::IException> UnsupportedIRISchemeException::copyToHeap() const {
    return std::make_unique<UnsupportedIRISchemeException>(*this);
}
void UnsupportedIRISchemeException::throwCopy() const { throw UnsupportedIRISchemeException(*this); }
std::u16string UnsupportedIRISchemeException::ToUstringImpl() const {
    return korvex::runtime::text::fromBytes(narrowText_);
}

}  // namespace foundation::storage::vfs
