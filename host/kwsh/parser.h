// From the tokens of one statement to its syntax tree.
//
//   statement   [targets] = expression | name = expression | expression
//   expression  number | 'text' | "text" | [rows] | {rows} | (expression) | name access...
//   access      (expressions) | {expressions} | .field
//
// Inside of [ ] and { } blanks separate, so that `[x (1)]` has two elements there and one everywhere else. A
// sign belongs to a number, NaN or Inf right behind it; there is no arithmetic.
#pragma once

#include <vector>

#include "host/kwsh/statement.h"

namespace korvex::host {

/// Takes tokens with an `end` token behind them. Raises `HostError` "KORVEX:host:syntax" with the position.
Statement parseStatement(const std::vector<Token>& tokens);

}  // namespace korvex::host
