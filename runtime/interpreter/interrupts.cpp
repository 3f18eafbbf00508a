// The pending-interrupt flag, and whether it is delivered at the moment.
#include "runtime/interpreter/interrupts.h"

#include <atomic>

#include "platform/kx.h"
#include "runtime/messages/environment_messages.h"

namespace korvex::runtime::interpreter {
namespace {

std::atomic<bool> interruptPending = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets this flag");

// Only the interpreter's thread asks for delivery and switches it.
bool interruptsDelivered = true;

}  // namespace

void raiseInterrupt() noexcept { interruptPending.store(true); }

bool isInterruptPending() noexcept { return interruptPending.load(); }

bool takeInterrupt() noexcept { return interruptPending.exchange(false); }

}  // namespace korvex::runtime::interpreter

using korvex::runtime::interpreter::interruptsDelivered;

void utInterruptState::ThrowIfInterruptPending() {
    if (!interruptsDelivered || !korvex::runtime::interpreter::takeInterrupt()) return;
    throw foundation::core::except::Exception<KORVEX::host::interrupted>(KORVEX::host::interrupted());
}

utInterruptMode::utInterruptMode(Mode mode) : earlier_(interruptsDelivered) {
    interruptsDelivered = mode == on;
}

utInterruptMode::~utInterruptMode() { interruptsDelivered = earlier_; }
