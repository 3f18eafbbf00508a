// Errors that the interpreter itself raises, and the gate through which user errors reach it.
#include "platform/kx.h"
#include "runtime/messages/environment_messages.h"

namespace matrix::detail {

using foundation::core::except::Exception;

void error_maxlhs() { throw Exception<KORVEX::maxlhs>(KORVEX::maxlhs()); }

void error_maxrhs() { throw Exception<KORVEX::maxrhs>(KORVEX::maxrhs()); }

void error_minrhs() { throw Exception<KORVEX::minrhs>(KORVEX::minrhs()); }

void do_legacy_kx_error(const foundation::core::except::IUserException& error) { error.throwCopy(); }

}  // namespace matrix::detail
