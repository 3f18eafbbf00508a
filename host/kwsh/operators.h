// What the operators do with values, and what counts as true. They raise `HostError` "badCondition" and
// "badOperand" for classes that they do not take, "differentSizes" for sides that do not fit.
#pragma once

#include <span>

#include "host/kwsh/statement.h"
#include "host/kwsh/values.h"

namespace korvex::host {

/// Whether a condition holds: it is not empty, and no element is zero or false. Numbers, logical values and
/// characters are conditions; NaN and everything else is none.
bool isTrue(const kxArray* condition);

/// ~ of each element.
Value negated(const kxArray* array);

/// A sign in front of numbers: of each element.
Value withSign(char16_t sign, const kxArray* array);

/// ==, ~=, <, <=, >, >= element by element; one element is compared with all of the other side. Numbers,
/// logical values and characters go together by their values; strings, with character rows too, by their
/// texts, and only for == and ~=. A missing string equals nothing, not even another one.
Value compared(Operator comparison, const kxArray* left, const kxArray* right);

/// strcmp(a, b): whether texts are the same, element by element where one is a cell or string array. What is
/// no text is the same as nothing.
Value sameTexts(std::span<const Value> arguments);

}  // namespace korvex::host
