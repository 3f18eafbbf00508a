// From exceptions of every origin to the text and identifier that the user is shown.
#include "host/kwsh/failure.h"

#include <new>

#include "platform/message_catalog.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"
#include "platform/storage_vfs.h"
#include "platform/user_exceptions.h"
#include "runtime/configuration/stored_document.h"
#include "runtime/messages/environment_messages.h"
#include "runtime/text/encoding.h"

namespace korvex::host {

namespace vfs = foundation::storage::vfs;

using foundation::core::except::IException;
using foundation::core::except::IMsgIDException;
using foundation::core::except::IUserException;

std::u16string catalogText(const resource_core::BaseMsgID& message) {
    return fl::i18n::MessageCatalog::get_message(message, fl::i18n::KwLocale::global());
}

HostError::HostError(std::string_view key, std::u16string text)
    : HostError(Failure{"KORVEX:host:" + std::string(key), std::move(text)}) {}

HostError::HostError(std::string_view key, const resource_core::BaseMsgID& message)
    : HostError(key, catalogText(message)) {}

HostError::HostError(Failure failure)
    : failure_(std::move(failure)), narrowText_(runtime::text::toDisplayBytes(failure_.text)) {}

namespace {

/// What happened and to what; where the storage layer was at the time is for the trace.
Failure describeStorageFailure(const vfs::Exception& error) {
    const resource_core::BaseMsgID message =
        vfs::messageOf(error.getErrorCode(), Velquist::PathManagement::GetStringFromIRI(error.getLocation()));
    return {message.identifier(), catalogText(message)};
}

}  // namespace

Failure describeCurrentException() {
    constexpr const char* unexpected = "KORVEX:host:unexpectedError";
    try {
        throw;
    } catch (const HostError& error) {
        return error.failure();
    } catch (const IMsgIDException& error) {
        return {error.get_error_id(), error.GetUnicodeMessageTxt()};
    } catch (const IUserException& error) {
        Failure failure{unexpected, {}};
        error.convert_str(failure.text);
        return failure;
    } catch (const vfs::Exception& error) {
        return describeStorageFailure(error);
    } catch (const vfs::InvalidIRIException& error) {
        return {KORVEX::virtualfilesystem::invalidIRI(error.getInvalidIRIString()).identifier(),
                error.ToUstring()};
    } catch (const vfs::UnsupportedIRISchemeException& error) {
        return {KORVEX::virtualfilesystem::unsupportedProvider(error.getScheme()).identifier(),
                error.ToUstring()};
    } catch (const runtime::configuration::ConfigurationError& error) {
        return {"KORVEX:host:configuration", runtime::text::fromBytes(error.what())};
    } catch (const IException& error) {
        return {unexpected, runtime::text::fromBytes(error.what())};
    } catch (const std::bad_alloc&) {
        return {"KORVEX:host:outOfMemory", catalogText(messages::allocationFailed())};
    } catch (const std::exception& error) {
        return {unexpected, runtime::text::fromBytes(error.what())};
    }
}

FailedAssertion::FailedAssertion() : HostError("assertionFailed", messages::assertionFailed(u"assert")) {}

Failure FailedAssertion::failureIn(std::u16string_view statement) const {
    return {failure().identifier, catalogText(messages::assertionFailed(std::u16string(statement)))};
}

Failure interruptedFailure() {
    const KORVEX::host::interrupted message;
    return {message.identifier(), catalogText(message)};
}

bool isInterrupt(const Failure& failure) {
    return failure.identifier == KORVEX::host::interrupted::fullIdentifier;
}

void raiseUndefined(std::string_view name) {
    throw HostError(Failure{std::string(KORVEX::UndefinedFunction::fullIdentifier),
                            catalogText(messages::undefinedName(runtime::text::fromBytes(name)))});
}

}  // namespace korvex::host
