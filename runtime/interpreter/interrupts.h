// The pending-interrupt flag. May be raised from a signal handler or another thread.
#pragma once

namespace korvex::runtime::interpreter {

void raiseInterrupt() noexcept;
bool isInterruptPending() noexcept;
/// Takes a pending interrupt back; true when there was one.
bool takeInterrupt() noexcept;

}  // namespace korvex::runtime::interpreter
