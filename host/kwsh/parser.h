// From the tokens of one statement to its syntax tree.
//
//   statement   [targets] = expression | name = expression | expression
//   expression  all || all || ...            the first that is true decides
//   all         comparison && comparison ... the first that is not true decides
//   comparison  operand == operand ...       also ~=, <, <=, >, >=; from the left
//   operand     ~operand | value
//   value       number | 'text' | "text" | [rows] | {rows} | (expression) | name access...
//   access      (expressions) | {expressions} | .field
//
// Inside of [ ] and { } blanks separate, so that `[x (1)]` has two elements there and one everywhere else; an
// operator between two values joins them, with blanks around it or not. A sign belongs to a number, NaN or
// Inf right behind it; there is no arithmetic.
//
// All take tokens with an `end` token behind them and raise `HostError` "KORVEX:host:syntax" with the
// position.
#pragma once

#include <vector>

#include "host/kwsh/statement.h"

namespace korvex::host {

Statement parseStatement(const std::vector<Token>& tokens);

/// Behind `if` and `elseif`.
Expression parseCondition(const std::vector<Token>& tokens);
/// Behind `for`: name = expression.
LoopHead parseLoopHead(const std::vector<Token>& tokens);
/// Behind `catch`: the name of a variable, or nothing.
std::optional<std::string> parseCatchHead(const std::vector<Token>& tokens);
/// Behind `end`: nothing.
void requireNothing(const std::vector<Token>& tokens);

}  // namespace korvex::host
