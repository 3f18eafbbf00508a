// Interpreted functions that commands call by name.
#include "runtime/interpreter/functions.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/kx.h"
#include "platform/user_exceptions.h"

namespace {

using foundation::core::except::IMsgIDException;
using korvex::runtime::interpreter::registerFunction;

class InterpretedFunctions : public testing::Test {
protected:
    void TearDown() override { registerFunction(name_, nullptr); }

    static void call() { inCallFcn(0, nullptr, 0, nullptr, name_); }

    static constexpr const char* name_ = "korvex.test.function";
};

TEST_F(InterpretedFunctions, ACallHandsArgumentsInAndOutputsBack) {
    registerFunction(name_, [](int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
        plhs[0] = kxCreateDoubleScalar(kxGetScalar(prhs[0]) + 10.0 * nrhs + 100.0 * nlhs);
    });
    const matrix::ArrayOwner argument(kxCreateDoubleScalar(7));
    const kxArray* arguments[] = {argument.get(), nullptr};
    kxArray* outputs[] = {nullptr};
    inCallFcn(1, outputs, 1, arguments, name_);
    const matrix::ArrayOwner result(outputs[0]);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(kxGetScalar(result.get()), 117.0);
}

TEST_F(InterpretedFunctions, AnUnknownNameRaisesUndefinedFunctionWithTheName) {
    try {
        inCallFcn(0, nullptr, 0, nullptr, "korvex.no.such.function");
        FAIL() << "nothing was raised";
    } catch (const IMsgIDException& error) {
        EXPECT_EQ(error.get_error_id(), "KORVEX:UndefinedFunction");
        EXPECT_NE(error.GetUnicodeMessageTxt().find(u"korvex.no.such.function"), std::u16string::npos);
    }
}

TEST_F(InterpretedFunctions, WhatAFunctionRaisesPassesThrough) {
    registerFunction(name_,
                     [](int, kxArray*[], int, const kxArray*[]) { throw std::domain_error("its own"); });
    EXPECT_THROW(call(), std::domain_error);
}

TEST_F(InterpretedFunctions, ALaterRegistrationReplacesTheFunction) {
    int calls = 0;
    registerFunction(name_,
                     [](int, kxArray*[], int, const kxArray*[]) { throw std::logic_error("replaced"); });
    registerFunction(name_, [&calls](int, kxArray*[], int, const kxArray*[]) { ++calls; });
    call();
    EXPECT_EQ(calls, 1);
}

TEST_F(InterpretedFunctions, AnEmptyFunctionTakesTheNameAway) {
    registerFunction(name_, [](int, kxArray*[], int, const kxArray*[]) {});
    registerFunction(name_, nullptr);
    EXPECT_THROW(call(), IMsgIDException);
}

TEST_F(InterpretedFunctions, AFunctionMayRemoveItselfWhileItRuns) {
    int calls = 0;
    registerFunction(name_, [&calls](int, kxArray*[], int, const kxArray*[]) {
        registerFunction(name_, nullptr);
        ++calls;
    });
    call();
    EXPECT_EQ(calls, 1);
    EXPECT_THROW(call(), IMsgIDException);
}

}  // namespace
