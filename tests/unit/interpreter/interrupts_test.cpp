// The pending interrupt, and switching its delivery off and on.
#include "runtime/interpreter/interrupts.h"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

#include "platform/kx.h"
#include "platform/user_exceptions.h"
#include "runtime/messages/environment_messages.h"

namespace {

using foundation::core::except::Exception;
using korvex::runtime::interpreter::isInterruptPending;
using korvex::runtime::interpreter::raiseInterrupt;
using korvex::runtime::interpreter::takeInterrupt;

using Interrupted = Exception<KORVEX::host::interrupted>;

class Interrupts : public testing::Test {
protected:
    void SetUp() override { takeInterrupt(); }
    void TearDown() override { takeInterrupt(); }
};

TEST_F(Interrupts, WithoutOneNothingIsRaised) {
    EXPECT_FALSE(isInterruptPending());
    EXPECT_NO_THROW(utInterruptState::ThrowIfInterruptPending());
}

TEST_F(Interrupts, APendingOneIsRaisedOnceWithItsIdentifier) {
    raiseInterrupt();
    try {
        utInterruptState::ThrowIfInterruptPending();
        FAIL() << "nothing was raised";
    } catch (const Interrupted& interrupted) {
        EXPECT_EQ(interrupted.get_error_id(), "KORVEX:host:interrupted");
    }
    EXPECT_FALSE(isInterruptPending());
    EXPECT_NO_THROW(utInterruptState::ThrowIfInterruptPending());
}

TEST_F(Interrupts, WithDeliveryOffItStaysPendingAndIsRaisedAfterwards) {
    raiseInterrupt();
    {
        const utInterruptMode mode(utInterruptMode::off);
        EXPECT_NO_THROW(utInterruptState::ThrowIfInterruptPending());
        EXPECT_TRUE(isInterruptPending());
    }
    EXPECT_THROW(utInterruptState::ThrowIfInterruptPending(), Interrupted);
}

TEST_F(Interrupts, ScopesPutTheEarlierModeBack) {
    const utInterruptMode outer(utInterruptMode::off);
    raiseInterrupt();
    {
        const utInterruptMode inner(utInterruptMode::on);
        EXPECT_THROW(utInterruptState::ThrowIfInterruptPending(), Interrupted);
    }
    raiseInterrupt();
    { const utInterruptMode inner(utInterruptMode::off); }
    EXPECT_NO_THROW(utInterruptState::ThrowIfInterruptPending());
}

TEST_F(Interrupts, TheModeComesBackWhenAnExceptionLeavesTheScope) {
    raiseInterrupt();
    try {
        const utInterruptMode mode(utInterruptMode::off);
        throw 1;
    } catch (int) {
        EXPECT_THROW(utInterruptState::ThrowIfInterruptPending(), Interrupted);
    }
}

TEST_F(Interrupts, TakingItBackTellsWhetherThereWasOne) {
    EXPECT_FALSE(takeInterrupt());
    raiseInterrupt();
    raiseInterrupt();
    EXPECT_TRUE(takeInterrupt());
    EXPECT_FALSE(takeInterrupt());
}

TEST_F(Interrupts, AnotherThreadMayRaiseOne) {
    std::thread(raiseInterrupt).join();
    EXPECT_TRUE(isInterruptPending());
}

TEST_F(Interrupts, ASignalHandlerMayRaiseOne) {
    const auto earlier = std::signal(SIGINT, [](int) { raiseInterrupt(); });
    std::raise(SIGINT);
    std::signal(SIGINT, earlier);
    EXPECT_TRUE(isInterruptPending());
}

}  // namespace
