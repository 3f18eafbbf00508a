// What a failure of the storage ends in: every operation that `delete` asks for, with every error code, for
// paths and for locations, by name and by wildcard, links resolved or not.
//
// Each line gives one letter for each error code, in the order of the codes:
//
//   0 folderNotEmpty     4 resourceNotFound   8 noSpaceLeft        12 unknownError
//   1 invalidLocation    5 readOnlyProvider   9 ioError            13 one that nobody knows
//   2 permissionDenied   6 fileTooLarge      10 internalError
//   3 resourceAlready-   7 resourceInUse     11 unsupportedOperation
//     Exists
#include <optional>
#include <ostream>
#include <stdexcept>

#include "tests/unit/filemanip/delete/delete_fixture.h"

namespace korvex::filemanip::tests {
namespace {

constexpr int codes = 14;

/// How a name is given, and so what its failures are told as.
struct Manner {
    std::string name;
    bool isIRI;
    bool hasWildcard;
    bool isResolving;
    const char* letters;
};

const Manner manners[] = {
    {"Path", false, false, false, "FFPFFPFFFPFFFF"},
    {"PathResolved", false, false, true, "EFPFFPFFFPFFFF"},
    {"PathPattern", false, true, false, "F-PF-PFFFPFFFF"},
    {"PathPatternResolved", false, true, true, "E-PF-PFFFPFFFF"},
    {"Location", true, false, false, "cccccccccccccc"},
    {"LocationResolved", true, false, true, "cccccccccccccc"},
    {"LocationPattern", true, true, false, "c-cc-ccccccccc"},
    {"LocationPatternResolved", true, true, true, "c-cc-ccccccccc"},
};

Warnings meaningOf(char letter, int code, const std::u16string& given) {
    switch (letter) {
        case '-': return {};
        case 'F': return {warning(KORVEX::DELETE::FileNotFound(given))};
        case 'E': return {warning(KORVEX::DELETE::FolderNotEmpty(given))};
        case 'P': return {warning(KORVEX::DELETE::Permission())};
        case 'c': break;
        default: throw std::invalid_argument(std::string("no meaning for ") + letter);
    }
    constexpr const char* keys[] = {
        "folderNotEmpty",   "invalidLocation",  "permissionDenied", "resourceAlreadyExists",
        "resourceNotFound", "readOnlyProvider", "fileTooLarge",     "resourceInUse",
        "noSpaceLeft",      "ioError",          "internalError",    "unsupportedOperation",
        "unknownError",     "unknownError"};
    resource_core::BaseMsgID message;
    message.component = "KORVEX:virtualfilesystem";
    message.key = keys[code];
    message.args.emplace_back(given);
    return {warning(message)};
}

/// Where the storage fails.
struct Place {
    std::string name;
    Operation operation;
    /// What is there; "l>target" is a link.
    std::vector<std::string> tree;
    /// What is deleted by name and where the storage fails then. Empty where a name never gets there.
    std::u16string typed;
    std::u16string at;
    Names left;
    /// The same for a pattern.
    std::u16string typedPattern;
    std::u16string atPattern;
    Names leftWithPattern;
    /// What is left where the storage has done it by the time it fails; only what removes something can.
    std::optional<Names> leftAfterwards = std::nullopt;
    /// The value of the link option with which the storage gets there; both when there is none.
    std::optional<bool> isResolving = std::nullopt;
};

using enum Operation;

// clang-format off
const Place places[] = {
    {"KindOfTheName", extendedExistence, {"a1", "a2", "a3"},
     u"a2", u"a2", {"a1", "a2", "a3"},  u"a*", u"a*", {"a1", "a2", "a3"}},
    {"Listing", list, {"a1", "a2"},
     u"b", u"", {"a1", "a2"},  u"a*", u"", {"a1", "a2"}},
    {"Removal", removeFile, {"a1", "a2", "a3"},
     u"a2", u"a2", {"a1", "a2", "a3"},  u"a*", u"a2", {"a2", "a3"},  Names{"a1", "a3"}},
    {"CanonicalForm", canonicalLocation, {"a1", "a2", "a3"},
     u"a2", u"a2", {"a1", "a2", "a3"},  u"a*", u"a2", {"a2", "a3"},  std::nullopt, true},
};

const Place placesOnDisk[] = {
    {"KindOfAMatch", extendedExistence, {"a1", "a2", "a3"},
     u"", u"", {},  u"a*", u"a2", {"a2", "a3"}},
    {"RemovalOfALinkToAFolder", removeFolder, {"d/", "l>d"},
     u"l", u"l", {"d", "l"},  u"l*", u"l", {"d", "l"},  Names{"d"}, false},
    {"RemovalOfALinkedFolder", removeFolder, {"d/", "l>d"},
     u"l", u"d", {"d", "l"},  u"l*", u"d", {"d", "l"},  Names{"l"}, true},
    {"RemovalOfALinkToAFile", removeFile, {"f", "l>f"},
     u"l", u"l", {"f", "l"},  u"l*", u"l", {"f", "l"},  Names{"f"}, false},
    {"RemovalOfALinkedFile", removeFile, {"f", "l>f"},
     u"l", u"f", {"f", "l"},  u"l*", u"f", {"f", "l"},  Names{"l"}, true},
    {"CanonicalFormOfALink", canonicalLocation, {"f", "l>f"},
     u"l", u"l", {"f", "l"},  u"l*", u"l", {"f", "l"},  std::nullopt, true},
};
// clang-format on

std::vector<Place> allPlacesOnDisk() {
    std::vector<Place> all(std::begin(places), std::end(places));
    all.insert(all.end(), std::begin(placesOnDisk), std::end(placesOnDisk));
    return all;
}

void PrintTo(const Place& place, std::ostream* stream) { *stream << place.name; }

class DeleteFailuresTest : public DeleteTest {
protected:
    using Moment = Fault::Moment;

    void remake(const std::vector<std::string>& tree) const {
        for (const fs::directory_entry& entry : fs::directory_iterator(scratch_.path()))
            fs::remove_all(entry);
        for (const std::string& entry : tree) {
            const std::size_t arrow = entry.find('>');
            arrow == std::string::npos ? make({entry})
                                       : makeLink(entry.substr(arrow + 1), entry.substr(0, arrow));
        }
        make({"last"});
    }

    void remakeInBox(const std::vector<std::string>& tree) const {
        for (const auto& entry : box_->list(boxLocation(u""), u""))
            box_->removeFile(boxLocation(entry.name));
        for (const std::string& entry : tree)
            makeInBox({runtime::text::fromBytes(entry)});
        makeInBox({u"last"});
    }

    /// Deletes the name and another one behind it, which goes whatever has happened.
    Warnings run(const Manner& manner, const std::u16string& given, const std::u16string& last) {
        environment_.takeEvents();
        if (!manner.isResolving) return deleteNames({given, last});
        EXPECT_EQ(outcomeOfArrays(text(given), text(last), text(u"resolvesymboliclinks"), logical(true))
                      .errorIdentifier,
                  "");
        return environment_.takeWarnings();
    }

    static bool isOf(const Manner& manner, const Place& place) {
        if (place.isResolving.value_or(manner.isResolving) != manner.isResolving) return false;
        return manner.hasWildcard || !place.typed.empty();
    }

    /// Every code at the place; `Storage` says how a name is written, made, and looked at.
    template <class Storage>
    void failEachWay(const Manner& manner, const Place& place, const Storage& store) {
        for (const Moment moment : {Moment::before, Moment::after}) {
            if (moment == Moment::after && !place.leftAfterwards) continue;
            for (int code = 0; code < codes && !HasFailure(); ++code) {
                SCOPED_TRACE(manner.name + ", code " + std::to_string(code) +
                             (moment == Moment::after ? ", after it took effect" : ""));
                failOnce(manner, place, store, moment, code);
            }
        }
    }

    template <class Storage>
    void failOnce(const Manner& manner, const Place& place, const Storage& store, Moment moment, int code) {
        const vfs::AbsoluteIRI at = store.location(manner.hasWildcard ? place.atPattern : place.at);
        const std::u16string given = store.given(manner.hasWildcard ? place.typedPattern : place.typed);
        FaultInjectingProvider& provider = store.provider();
        store.remake(place.tree);
        provider.forgetFaults();
        const std::size_t faultsBefore = provider.faultsRaised();
        provider.failAt(place.operation, at, {.code = codeOf(code), .moment = moment});

        EXPECT_EQ(run(manner, given, store.given(u"last")), meaningOf(manner.letters[code], code, given));
        EXPECT_EQ(provider.faultsRaised(), faultsBefore + 1);
        const Names& before = manner.hasWildcard ? place.leftWithPattern : place.left;
        EXPECT_EQ(store.left(), moment == Moment::before ? before : afterwards(manner, place));
        checkThatNothingWasToldOf(at);
    }

    /// The last one is one that nobody knows.
    static vfs::ErrorCode codeOf(int code) {
        return static_cast<vfs::ErrorCode>(code == codes - 1 ? 99 : code);
    }

    /// What went ahead of the failure in a listing is gone, too.
    static Names afterwards(const Manner& manner, const Place& place) {
        Names names = place.leftAfterwards.value();
        if (manner.hasWildcard) names.erase("a1");
        return names;
    }

    void checkThatNothingWasToldOf(const vfs::AbsoluteIRI& location) {
        const std::string event =
            "upstreamEntriesNotified " + runtime::text::toDisplayBytes(vfs::fromAbsoluteIRI(location).text());
        EXPECT_THAT(environment_.takeEvents(), testing::Not(testing::Contains(event)));
    }
};

class DeleteFailuresOnDiskTest : public DeleteFailuresTest, public testing::WithParamInterface<Place> {
protected:
    struct Disk {
        const DeleteFailuresOnDiskTest& test;
        const Manner& manner;

        void remake(const std::vector<std::string>& tree) const { test.remake(tree); }
        FaultInjectingProvider& provider() const { return *test.local_; }
        vfs::AbsoluteIRI location(const std::u16string& name) const {
            return name.empty() ? Velquist::PathManagement::GetIRIFromString(test.here_)
                                : test.locationOf(name);
        }
        std::u16string given(const std::u16string& name) const {
            return manner.isIRI ? u"file://" + test.pathOf(name) : name;
        }
        Names left() const { return test.left(); }
    };
};

INSTANTIATE_TEST_SUITE_P(Places, DeleteFailuresOnDiskTest, testing::ValuesIn(allPlacesOnDisk()),
                         [](const auto& place) { return place.param.name; });

TEST_P(DeleteFailuresOnDiskTest, AreWarnedOfByTheirCode) {
    for (const Manner& manner : manners) {
        if (isOf(manner, GetParam())) failEachWay(manner, GetParam(), Disk{*this, manner});
    }
}

class DeleteFailuresInMemoryTest : public DeleteFailuresTest, public testing::WithParamInterface<Place> {
protected:
    struct Box {
        const DeleteFailuresInMemoryTest& test;

        void remake(const std::vector<std::string>& tree) const { test.remakeInBox(tree); }
        FaultInjectingProvider& provider() const { return *test.memory_; }
        static vfs::AbsoluteIRI location(const std::u16string& name) { return boxLocation(name); }
        static std::u16string given(const std::u16string& name) { return u"memory://box/" + name; }
        Names left() const { return test.leftInBox(); }
    };
};

INSTANTIATE_TEST_SUITE_P(Places, DeleteFailuresInMemoryTest, testing::ValuesIn(places),
                         [](const auto& place) { return place.param.name; });

TEST_P(DeleteFailuresInMemoryTest, AreWarnedOfByTheirCode) {
    for (const Manner& manner : manners) {
        if (manner.isIRI && isOf(manner, GetParam())) failEachWay(manner, GetParam(), Box{*this});
    }
}

TEST_F(DeleteFailuresTest, ProtectionThatDoesNotComeOffIsPassedOver) {
    for (int code = 0; code < codes; ++code) {
        SCOPED_TRACE(code);
        remake({"a1", "a2"});
        local_->forgetFaults();
        for (const char16_t* name : {u"a1", u"a2", u"last"})
            local_->failAt(Operation::setWritable, locationOf(name), {.code = codeOf(code)});
        EXPECT_THAT(deleteNames({u"a1", u"a*"}), testing::IsEmpty());
        EXPECT_THAT(deleteResolving(u"last"), testing::IsEmpty());
        EXPECT_EQ(left(), Names{});
    }
    EXPECT_EQ(local_->faultsRaised(), 3U * codes);
}

TEST_F(DeleteFailuresTest, FolderThatIsNotEmptyBehindALinkIsToldOnlyWhenLinksAreResolved) {
    make({"d/inside"});
    makeLink("d", "l");
    EXPECT_THAT(deleteResolving(u"l"), testing::ElementsAre(warning(KORVEX::DELETE::FolderNotEmpty(u"l"))));
    EXPECT_THAT(
        deleteResolving(u"file://" + pathOf(u"l")),
        testing::ElementsAre(warning(KORVEX::virtualfilesystem::folderNotEmpty(u"file://" + pathOf(u"l")))));
    EXPECT_TRUE(fs::exists(diskPath("d/inside")));
    EXPECT_EQ(left(), (Names{"d", "l"}));
}

}  // namespace
}  // namespace korvex::filemanip::tests
