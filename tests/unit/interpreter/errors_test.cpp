// The interpreter's own errors.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "platform/kx.h"
#include "platform/message_identifiers.h"
#include "platform/user_exceptions.h"

namespace {

using foundation::core::except::Exception;
using foundation::core::except::IMsgIDException;

std::string identifierRaisedBy(const std::function<void()>& call) {
    try {
        call();
    } catch (const IMsgIDException& error) {
        return error.get_error_id();
    }
    return "nothing";
}

TEST(InterpreterErrors, TheCountErrorsCarryTheirIdentifiers) {
    EXPECT_EQ(identifierRaisedBy(matrix::detail::error_maxlhs), "KORVEX:maxlhs");
    EXPECT_EQ(identifierRaisedBy(matrix::detail::error_maxrhs), "KORVEX:maxrhs");
    EXPECT_EQ(identifierRaisedBy(matrix::detail::error_minrhs), "KORVEX:minrhs");
}

TEST(InterpreterErrors, AHandedOverErrorIsRaisedAsWhatItIs) {
    using KORVEX::COPYFILE::InvalidOption;
    const Exception<InvalidOption> error(InvalidOption(u"x"), "KORVEX:COPYFILE:Other");
    EXPECT_THROW(matrix::detail::do_legacy_kx_error(error), Exception<InvalidOption>);
    EXPECT_EQ(identifierRaisedBy([&] { matrix::detail::do_legacy_kx_error(error); }),
              "KORVEX:COPYFILE:Other");
}

}  // namespace
