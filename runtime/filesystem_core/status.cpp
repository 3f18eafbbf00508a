// The outcome of a command: lists of failures, and how an outcome becomes outputs or an error.
#include <array>

#include "platform/filesystem_core.h"
#include "platform/message_catalog.h"
#include "platform/user_exceptions.h"
#include "runtime/messages/environment_messages.h"
#include "runtime/text/encoding.h"

namespace korvex::io::filesystem::core {

namespace except = foundation::core::except;

namespace {

constexpr std::size_t listLimit = 4096;

using SystemFailure = except::Exception<KORVEX::FileManip::OSError>;

/// Calls `read` with a stored exception; a null pointer gives an empty result.
template <class Result, class Read>
Result readStored(const boost::exception_ptr& exception, Read read) {
    if (!exception) return {};
    try {
        boost::rethrow_exception(exception);
    } catch (const except::IMsgIDException& stored) {
        return read(stored);
    } catch (const std::exception&) {
        return {};  // nothing of the kind is stored by anybody; it must not get out of here all the same
    }
}

[[noreturn]] void raiseStored(const boost::exception_ptr& exception) {
    try {
        boost::rethrow_exception(exception);
    } catch (const except::IUserException& stored) {
        matrix::detail::do_legacy_kx_error(stored);
        throw;
    }
}

}  // namespace

bool Status::AppendWithLimit(std::u16string& list, const resource_core::BaseMsgID& message) {
    if (!list.empty()) list += u'\n';
    list += fl::i18n::MessageCatalog::get_message(message, fl::i18n::KwLocale::global());
    return list.size() >= listLimit;
}

namespace detail {

std::string GetID(const boost::exception_ptr& exception) {
    return readStored<std::string>(exception, [](const auto& stored) { return stored.get_error_id(); });
}

std::u16string GetUnicodeMessageTxt(const boost::exception_ptr& exception) {
    return readStored<std::u16string>(exception,
                                      [](const auto& stored) { return stored.GetUnicodeMessageTxt(); });
}

}  // namespace detail

void ResultHandler::HandleStatus(Status status, int nlhs, kxArray* plhs[]) {
    const bool succeeded = status.code == Status::success;
    if (!succeeded && !status.exception) {
        status.exception =
            boost::copy_exception(SystemFailure(KORVEX::FileManip::OSError(), "KORVEX:FILE:OSError"));
    }
    if (nlhs <= 0) {
        if (!succeeded) raiseStored(status.exception);
        return;
    }
    // All outputs are made before the first is handed over, so that running out of memory leaks none.
    std::array<matrix::ArrayOwner, 3> outputs;
    outputs[0].reset(kxCreateLogicalScalar(succeeded));
    if (nlhs > 1) outputs[1] = matrix::create(detail::GetUnicodeMessageTxt(status.exception));
    if (nlhs > 2) outputs[2] = matrix::create(runtime::text::fromBytes(detail::GetID(status.exception)));
    for (std::size_t i = 0; i < outputs.size() && i < static_cast<std::size_t>(nlhs); ++i) {
        plhs[i] = matrix::to_korvex(std::move(outputs[i]));
    }
}

}  // namespace korvex::io::filesystem::core
