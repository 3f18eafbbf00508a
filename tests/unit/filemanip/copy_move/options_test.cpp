// The options of `copyfile` and `movefile`: every combination of words that a call has room for, through the
// entries, and lists of options that only the engine itself can be given.
#include <filesystem>
#include <ostream>

#include "io/filesystem/filemanip/CopyMoveFiles.h"
#include "runtime/dispatcher/current_folder.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace fs = std::filesystem;

constexpr const char* notText = "KORVEX:string:MustBeStringScalarOrCharacterVector";

/// What a list of option words stands for.
struct Meaning {
    bool isForced = false;
    LinkBehavior links = LinkBehavior::osdefault;

    bool operator==(const Meaning&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Meaning& meaning) {
    return stream << (meaning.isForced ? "forced" : "not forced") << ", links "
                  << static_cast<int>(meaning.links);
}

/// A file, a link to it and a protected file, on disk, since only a disk has links.
class OptionsTest : public testing::TestWithParam<Command> {
protected:
    OptionsTest() { runtime::dispatcher::setCurrentFolderPath(scratch_.text()); }
    ~OptionsTest() override { runtime::dispatcher::setCurrentFolderPath(u"/"); }

    const Command& command() const { return GetParam(); }
    std::u16string rule() const { return command().linkOption; }
    LinkBehavior defaultLinks() const {
        return command().isCopy ? LinkBehavior::osdefault : LinkBehavior::preserve;
    }

    /// Everything as it is at the start of each call.
    void prepare() const {
        for (const char* name : {"file", "link", "protected", "copy"})
            fs::remove(scratch_.path() / name);
        scratch_.writeFile("file", "F");
        scratch_.writeFile("protected", "P");
        fs::permissions(scratch_.path() / "protected", fs::perms::owner_read);
        fs::create_symlink("file", scratch_.path() / "link");
    }

    Failure failureWith(const Texts& options) const {
        prepare();
        Texts arguments{u"file", u"copy"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return failureOf(command(), arguments);
    }

    /// Found out by what two calls do: one onto a protected file, one with a link as its source.
    Meaning meaningOf(const Texts& options) const {
        Meaning meaning;
        prepare();
        meaning.isForced = call(u"file", u"protected", options) == noFailure();
        prepare();
        EXPECT_EQ(call(u"link", u"copy", options), noFailure());
        if (fs::is_symlink(scratch_.path() / "copy")) {
            meaning.links = LinkBehavior::preserve;
        } else {
            // A link that was resolved on the way in moves the file behind it.
            const bool fileIsLeft = fs::exists(scratch_.path() / "file");
            meaning.links = command().isCopy || !fileIsLeft ? LinkBehavior::resolve : LinkBehavior::osdefault;
        }
        return meaning;
    }

    Failure call(const std::u16string& source, const std::u16string& destination,
                 const Texts& options) const {
        Texts arguments{source, destination};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return failureOf(command(), arguments);
    }

    Failure invalidOption(const std::u16string& text) const {
        return plainFailure("KORVEX:" + command().word + ":InvalidOption", {text});
    }

    korvex::tests::ScratchFolder scratch_;
};

INSTANTIATE_TEST_SUITE_P(CopyMove, OptionsTest, testing::Values(copyCommand, moveCommand), nameOfCommand);

/// A plain copy and one that resolves look the same where the layer itself follows the link.
LinkBehavior asSeen(const Command& command, LinkBehavior links) {
    return command.isCopy && links == LinkBehavior::osdefault ? LinkBehavior::resolve : links;
}

TEST_P(OptionsTest, EachForceWordForces) {
    const LinkBehavior links = asSeen(command(), defaultLinks());
    EXPECT_EQ(meaningOf({}), (Meaning{false, links}));
    for (const char16_t* word : {u"f", u"F", u"writable"})
        EXPECT_EQ(meaningOf({word}), (Meaning{true, links}));
}

TEST_P(OptionsTest, LinkBehaviorsAreTaken) {
    EXPECT_EQ(meaningOf({rule(), u"preserve"}), (Meaning{false, LinkBehavior::preserve}));
    EXPECT_EQ(meaningOf({rule(), u"resolve"}), (Meaning{false, LinkBehavior::resolve}));
}

TEST_P(OptionsTest, SystemsDefaultIsAValueOfCopyfileOnly) {
    if (command().isCopy) {
        EXPECT_EQ(meaningOf({rule(), u"osdefault"}), (Meaning{false, LinkBehavior::resolve}));
    } else {
        EXPECT_EQ(failureWith({rule(), u"osdefault"}), invalidOption(u"osdefault"));
    }
}

TEST_P(OptionsTest, TheTwoKindsComeInEitherOrder) {
    for (const char16_t* word : {u"f", u"F", u"writable"}) {
        EXPECT_EQ(meaningOf({word, rule(), u"preserve"}), (Meaning{true, LinkBehavior::preserve}));
        EXPECT_EQ(meaningOf({rule(), u"preserve", word}), (Meaning{true, LinkBehavior::preserve}));
        EXPECT_EQ(meaningOf({word, rule(), u"resolve"}), (Meaning{true, LinkBehavior::resolve}));
        EXPECT_EQ(meaningOf({rule(), u"resolve", word}), (Meaning{true, LinkBehavior::resolve}));
    }
}

TEST_P(OptionsTest, NameAndValueOfARuleIgnoreCase) {
    std::u16string loud = rule();
    loud[0] = u'M';
    if (command().isCopy) loud[0] = u'C';
    EXPECT_EQ(meaningOf({loud, u"PRESERVE"}), (Meaning{false, LinkBehavior::preserve}));
    EXPECT_EQ(meaningOf({loud, u"Resolve"}), (Meaning{false, LinkBehavior::resolve}));
}

TEST_P(OptionsTest, WordsThatAreNoOptionAreNamed) {
    const std::u16string otherRule = command().isCopy ? u"movelinkbehavior" : u"copylinkbehavior";
    for (const std::u16string& word :
         {std::u16string(u"x"), std::u16string(u"WRITABLE"), std::u16string(u"Writable"),
          std::u16string(u"writable "), std::u16string(u"ff"), std::u16string(u"s"), std::u16string(u"S"),
          std::u16string(u"preserve"), std::u16string(u"resolve"), std::u16string(u"osdefault"),
          std::u16string(u"linkbehavior"), rule().substr(0, rule().size() - 1), rule() + u"s", otherRule}) {
        EXPECT_EQ(failureWith({word}), invalidOption(word));
        EXPECT_EQ(failureWith({word, u"preserve"}), invalidOption(word));
        EXPECT_EQ(failureWith({u"f", word}), invalidOption(word));
        EXPECT_EQ(failureWith({rule(), u"resolve", word}), invalidOption(word));
        EXPECT_FALSE(fs::exists(scratch_.path() / "copy"));
    }
}

TEST_P(OptionsTest, ValuesThatAreNotAllowedAreNamed) {
    for (const std::u16string& value :
         {std::u16string(u"f"), std::u16string(u"pres"), std::u16string(u"preserved"), std::u16string(u" "),
          std::u16string(u"memory://box/a"), std::u16string(u"http:/x"), rule(), std::u16string(u"")}) {
        EXPECT_EQ(failureWith({rule(), value}), invalidOption(value));
        EXPECT_EQ(failureWith({u"f", rule(), value}), invalidOption(value));
    }
}

TEST_P(OptionsTest, SecondForceWordIsAnError) {
    for (const char16_t* first : {u"f", u"F", u"writable"}) {
        for (const char16_t* second : {u"f", u"F", u"writable"}) {
            EXPECT_EQ(failureWith({first, second}), invalidOption(second));
            EXPECT_EQ(failureWith({first, second, u"f"}), invalidOption(second));
        }
    }
}

TEST_P(OptionsTest, WordBehindTheSecondOptionIsJudgedAndHasNoEffect) {
    EXPECT_EQ(failureWith({u"f", u"F", u"odd"}), invalidOption(u"odd"));
    EXPECT_EQ(failureWith({u"f", rule()}), plainFailure(notText));
    EXPECT_EQ(failureWith({u"f", u"f", rule()}), plainFailure(notText));
}

TEST_P(OptionsTest, ValueBehindTheLastArgumentIsNoText) {
    EXPECT_EQ(failureWith({rule()}), plainFailure(notText));
    EXPECT_EQ(failureWith({rule(), u"resolve", rule()}), plainFailure(notText));
    EXPECT_FALSE(fs::exists(scratch_.path() / "copy"));
}

TEST_P(OptionsTest, ValueIsReadWithoutTheJudgementOfNames) {
    const Array source = text(u"file");
    const Array destination = text(u"copy");
    const Array name = text(rule());
    const auto withValue = [&](const Array& value) {
        prepare();
        return failureOfArrays(command(), {source.get(), destination.get(), name.get(), value.get()});
    };
    EXPECT_EQ(withValue(number(1)), plainFailure(notText));
    EXPECT_EQ(withValue(cell({1, 1}, text(u"resolve"))), plainFailure(notText));
    EXPECT_EQ(withValue(strings({1, 2}, {u"resolve", u"resolve"})), plainFailure(notText));
    EXPECT_EQ(withValue(missing()), plainFailure("KORVEX:string:MissingNotSupported"));
    EXPECT_EQ(withValue(text(u"")), invalidOption(u""));
    EXPECT_EQ(withValue(string(u"")), invalidOption(u""));
    EXPECT_EQ(withValue(string(u"resolve")), noFailure());
    const Array column = text(u"resolve");
    kxSetDimensions(column.get(), std::vector<std::size_t>{7, 1});
    EXPECT_EQ(withValue(column), noFailure());
}

TEST_P(OptionsTest, InvalidOptionIsRaisedWhateverOutputsAreAskedFor) {
    const Array source = text(u"file");
    const Array destination = text(u"copy");
    for (const std::u16string& word : {std::u16string(u"odd"), rule()}) {
        const Array option = text(word);
        const Array value = text(u"odd");
        for (int nlhs = 0; nlhs <= 3; ++nlhs) {
            prepare();
            const Outcome outcome = tests::call(command().entry, nlhs,
                                                {source.get(), destination.get(), option.get(), value.get()});
            EXPECT_EQ(outcome.errorIdentifier, "KORVEX:" + command().word + ":InvalidOption");
            EXPECT_EQ(outcome.errorArguments, Texts{u"odd"});
            EXPECT_EQ(outcome.outputs[0], nullptr);
            EXPECT_FALSE(fs::exists(scratch_.path() / "copy"));
        }
    }
}

/// The options as the engine reads them, without an entry in front of it.
template <class Engine>
Failure failureOfEngine(const Texts& options) {
    try {
        Engine().ParseOptArgs(options);
    } catch (const foundation::core::except::IMsgIDException& raised) {
        Outcome outcome;
        outcome.fail(raised);
        return failure(outcome.errorIdentifier, outcome.catalogEntry, outcome.errorArguments);
    }
    return noFailure();
}

TEST(EngineOptionsTest, TakesOneOfEachKindInEitherOrder) {
    for (const Texts& options :
         {Texts{}, Texts{u"f"}, Texts{u"F"}, Texts{u"writable"}, Texts{u"preserve"}, Texts{u"resolve"},
          Texts{u"osdefault"}, Texts{u"f", u"preserve"}, Texts{u"resolve", u"writable"}}) {
        EXPECT_EQ(failureOfEngine<CopyFiles>(options), noFailure());
        EXPECT_EQ(failureOfEngine<MoveFiles>(options), noFailure());
    }
}

TEST(EngineOptionsTest, RefusesTheSecondOfAKindAndUnknownWords) {
    for (const auto& [options, named] :
         {std::pair<Texts, std::u16string>{{u"preserve", u"resolve"}, u"resolve"},
          {{u"f", u"f"}, u"f"},
          {{u"f", u"odd"}, u"odd"},
          {{u"preserve", u"odd"}, u"odd"},
          {{u"odd"}, u"odd"},
          {{u"odd", u"f"}, u"odd"},
          {{u"Preserve"}, u"Preserve"},
          {{u""}, u""}}) {
        EXPECT_EQ(failureOfEngine<CopyFiles>(options),
                  plainFailure("KORVEX:COPYFILE:InvalidOption", {named}));
        EXPECT_EQ(failureOfEngine<MoveFiles>(options),
                  plainFailure("KORVEX:MOVEFILE:InvalidOption", {named}));
    }
}

TEST(EngineOptionsTest, NeverLooksPastTheSecondEntry) {
    EXPECT_EQ(failureOfEngine<CopyFiles>({u"f", u"preserve", u"odd"}), noFailure());
    EXPECT_EQ(failureOfEngine<CopyFiles>({u"preserve", u"f", u"f"}), noFailure());
    EXPECT_EQ(failureOfEngine<CopyFiles>({u"f", u"f", u"odd"}),
              plainFailure("KORVEX:COPYFILE:InvalidOption", {u"f"}));
}

}  // namespace
}  // namespace korvex::filemanip::tests
