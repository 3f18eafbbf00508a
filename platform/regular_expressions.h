// The environment's regular expressions: built piece by piece or from their text, to search texts and to
// replace in them.
//
//   const RE_Tree blanks(RE_Builder_Space::kleene(RE_Builder_Space::set(RE_Builder_Space::blanks, false),
//                                                 RE_Builder_Space::greedy));
//   RE_Replace(u"_").replace(u"a  b c", blanks)        gives u"a_b_c"
//   RE_Tree(u"b.c$", false).match(u"a b c", 0)         gives {2, 5}
//
// All positions and lengths count 16-bit units. A letter is what Unicode calls one.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// An expression that is none, or one that needs more memory for a text than it may take.
class RE_Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

namespace RE_Builder_Space {

/// A piece of an expression.
class Builder {
public:
    /// `syntax` is a valid expression; an atom is one that a quantifier behind it takes as a whole.
    Builder(std::u16string syntax, bool isAtom) : syntax_(std::move(syntax)), isAtom_(isAtom) {}
    const std::u16string& syntax() const noexcept { return syntax_; }
    bool isAtom() const noexcept { return isAtom_; }

private:
    std::u16string syntax_;
    bool isAtom_;
};

/// The kinds of characters that a set holds.
enum SetType {
    wordCharacters = 0,     ///< letters with their marks, digits, connectors as `_`
    nonWordCharacters = 1,  ///< all others, unpaired surrogates too
    digits = 2,
    blanks = 3,  ///< everything that is white
};

/// One character of that kind, or, when `isComplement`, one of any other kind.
Builder set(SetType type, bool isComplement);

enum QuantifierQualifier {
    greedy = 0,      ///< as many as the rest of the expression lets it have
    reluctant = 1,   ///< as few as that
    possessive = 2,  ///< as many as there are, whatever the rest needs
};

/// Any number of what was built, none included.
Builder kleene(const Builder& repeated, QuantifierQualifier qualifier);

}  // namespace RE_Builder_Space

/// Where an expression was found: [begin, end).
struct RE_Match {
    std::size_t begin;
    std::size_t end;

    bool operator==(const RE_Match&) const = default;
};

/// An expression that is ready to be used. Immutable; any thread may use it, and copies share it.
class RE_Tree {
public:
    /// Raises `RE_Error` for what is no expression.
    RE_Tree(const std::u16string& pattern, bool ignoresCase);
    explicit RE_Tree(const RE_Builder_Space::Builder& builder);

    /// The first place at or behind `from` where the expression is found, none where it is not. `^` is the
    /// beginning of the whole text; `$` is its end, and the place in front of a line end that it ends with.
    /// `\z` is its end alone. Raises `RE_Error` when the search needs too much memory.
    std::optional<RE_Match> match(const std::u16string& text, std::size_t from) const;
    /// All places from left to right, none in another; where it finds the empty text, those too. Raises as
    /// `match`.
    std::vector<RE_Match> matchAll(const std::u16string& text) const;

private:
    class Program;
    std::shared_ptr<const Program> program_;
};

/// A text to put in the place of what an expression finds. In it a back slash takes the unit behind it as it
/// stands, so that two of them mean one; every other unit, and a back slash at the end, stands for itself.
class RE_Replace {
public:
    explicit RE_Replace(const std::u16string& replacement);

    /// `text` with the replacement in the place of each thing found, from left to right. Where an expression
    /// finds nothing but the empty text, as a closure does between any two characters that are not its own,
    /// there is nothing to replace: such a place stays as it is. Raises as `RE_Tree::match`.
    std::u16string replace(const std::u16string& text, const RE_Tree& tree) const;

private:
    std::u16string inserted_;
};
