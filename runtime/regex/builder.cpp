// Expressions from pieces: each piece is the text of an expression in ICU's syntax.
#include <array>

#include "platform/regular_expressions.h"

namespace RE_Builder_Space {

namespace {

struct SetSyntax {
    const char16_t* members;
    const char16_t* complement;
};

/// By `SetType`. In brackets, since ICU takes a run of these without a step back to remember for each
/// character of it.
constexpr std::array<SetSyntax, 4> setSyntax{{
    {u"[\\w]", u"[\\W]"},
    {u"[\\W]", u"[\\w]"},
    {u"[\\d]", u"[\\D]"},
    {u"[\\s]", u"[\\S]"},
}};

/// By `QuantifierQualifier`.
constexpr std::array<const char16_t*, 3> closureSyntax{u"*", u"*?", u"*+"};

}  // namespace

Builder set(SetType type, bool isComplement) {
    const SetSyntax& syntax = setSyntax.at(type);
    return Builder(isComplement ? syntax.complement : syntax.members, true);
}

Builder kleene(const Builder& repeated, QuantifierQualifier qualifier) {
    const std::u16string whole = repeated.isAtom() ? repeated.syntax() : u"(?:" + repeated.syntax() + u')';
    return Builder(whole + closureSyntax.at(qualifier), false);
}

}  // namespace RE_Builder_Space
