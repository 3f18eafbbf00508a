// What a failure of the storage ends in: every operation that `mkdir` and `rmdir` ask for, with every error
// code, on a path and on a location.
//
// A row names the operation that fails and where, and gives one letter for each error code 0 to 12, in the
// order of the codes:
//
//   0 folderNotEmpty     4 resourceNotFound   8 noSpaceLeft        12 unknownError
//   1 invalidLocation    5 readOnlyProvider   9 ioError
//   2 permissionDenied   6 fileTooLarge      10 internalError
//   3 resourceAlready-   7 resourceInUse     11 unsupportedOperation
//     Exists
#include <optional>
#include <set>
#include <stdexcept>
#include <tuple>

#include "runtime/messages/environment_messages.h"
#include "tests/unit/filemanip/dir_manip/dir_manip_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace provider = foundation::storage::provider;
using Names = std::set<std::string>;

constexpr int codes = 13;

/// What the letters of the tables mean: `typed` is the path as it was typed, `item` the text of the location
/// at which the storage failed.
CommandResult meaningOf(char letter, vfs::ErrorCode code, const std::u16string& typed,
                        const std::u16string& item) {
    const auto some = [](const std::u16string& list) {
        return failure(KORVEX::RMDIR::SomeDirectoriesNotRemoved(list));
    };
    const auto twice = [](const std::u16string& line) { return line + u"\n" + line; };
    const std::u16string couldNotRemove = textOf(KORVEX::FileManip::CouldNotRemove(item));
    const std::u16string readOnly = textOf(KORVEX::FileManip::ReadOnly(item));
    const std::u16string ofCode = textOf(vfs::messageOf(code, item));
    switch (letter) {
        case '+': return success();
        // rmdir: nothing was removed
        case 'D': return failure(KORVEX::RMDIR::DirectoryNotRemoved(typed));
        case 'N': return failure(KORVEX::RMDIR::NoDirectoriesRemoved());
        case 'L': return failure(KORVEX::RMDIR::NotADirectory(typed));
        // rmdir: some were, and the list has one line, or the same line twice
        case 'c': return some(couldNotRemove);
        case 'C': return some(twice(couldNotRemove));
        case 'r': return some(readOnly);
        case 'R': return some(twice(readOnly));
        case 'm': return some(ofCode);
        case 'M': return some(twice(ofCode));
        case 'g': return some(textOf(KORVEX::virtualfilesystem::resourceNotFound(item)));
        // rmdir: it was not even known what to remove
        case 'F': return failure(KORVEX::FileManip::NotADirectory(typed), "KORVEX:RMDIR:NotADirectory");
        // the code's own message with the typed path
        case 'T': return failure(vfs::messageOf(code, typed));
        // mkdir
        case 'O': return failure(KORVEX::FileManip::OSErrorWithReason(u"Words"), "KORVEX:MKDIR:OSError");
        case 'E': return noted(KORVEX::MKDIR::DirectoryExists());
        case 'P': return failure(KORVEX::MKDIR::PermissionDenied(typed));
        case 'U': return failure(KORVEX::MKDIR::FailureToMkdir(typed));
        default: throw std::invalid_argument(std::string("no meaning for ") + letter);
    }
}

constexpr const char* all(char letter) {
    switch (letter) {
        case '+': return "+++++++++++++";
        case 'D': return "DDDDDDDDDDDDD";
        case 'N': return "NNNNNNNNNNNNN";
        case 'L': return "LLLLLLLLLLLLL";
        case 'm': return "mmmmmmmmmmmmm";
        case 'M': return "MMMMMMMMMMMMM";
        case 'T': return "TTTTTTTTTTTTT";
        default: return "!!!!!!!!!!!!!";
    }
}

/// Raised out of the command as it is: the one letter that is no outcome of the command's own.
constexpr char raised = '!';

/// On a local path the codes of a failed item are told that say "not removed" or "read only"; the others are
/// dropped as if nothing had been.
constexpr const char* toldOnPath = "c+r++r+++c+++";
constexpr const char* toldTwiceOnPath = "C+R++R+++C+++";

enum Options : unsigned { plain = 0, recursive = 1, resolving = 2 };

/// Where the storage fails, and how.
struct FailingCall {
    Operation operation;
    std::u16string at;
    /// That of the call that fails, of all calls of the operation; 0 for every call at the location.
    std::size_t number = 0;
    Fault::Moment moment = Fault::Moment::before;
};

struct Row {
    std::string name;
    /// What is there: a folder ends in "/", a link is "name>target".
    std::vector<std::string> tree;
    std::u16string typed;
    unsigned options;
    FailingCall failing;
    std::string onPath;
    /// Empty where locations have nothing of the kind.
    std::string onLocation;
    Names left;
    /// For the codes 0 and 9, after which the whole is removed in one operation; as `left` if not given.
    std::optional<Names> leftByLastResort = std::nullopt;
    /// That operation is taken apart, so that what has failed fails in it as well.
    bool isTakenApart = false;
};

void PrintTo(const Row& row, std::ostream* stream) { *stream << row.name; }

using enum Operation;

// clang-format off
const Row removals[] = {
    // ---- what the location is
    {"TypeOfTheNamedItem", {"t/"}, u"t", plain, {extendedExistence, u"t"},
     all('!'), all('!'), {"t/"}},
    {"TypeOfAMatch", {"t1/"}, u"t*", plain, {extendedExistence, u"t1"},
     "+F++F++++F+++", all('T'), {"t1/"}},
    {"TypeOfAFolderInATree", {"t/", "t/b", "t/u/"}, u"t", recursive, {extendedExistence, u"t/u"},
     "+NNNNNNNN+NNN", "+NNNNNNNN+NNN", {"t/", "t/u/"}, Names{}},

    // ---- listing
    {"ListOfMatches", {"t1/"}, u"t*", plain, {list, u""},
     "+F++F++++F+++", all('T'), {"t1/"}},
    {"ListOfTheNamedFolder", {"t/", "t/a"}, u"t", recursive, {list, u"t"},
     "+NNNNNNNN+NNN", "+NNNNNNNN+NNN", {"t/", "t/a"}, Names{}},
    {"ListOfAFolderInATree", {"t/", "t/b", "t/u/", "t/u/f"}, u"t", recursive, {list, u"t/u"},
     all('+'), all('+'), {}},
    {"ListOfAFolderInATreeToTheEnd", {"t/", "t/b", "t/u/", "t/u/f"}, u"t", recursive, {list, u"t/u"},
     toldTwiceOnPath, all('M'), {"t/", "t/u/", "t/u/f"}, std::nullopt, true},

    // ---- attributes
    {"ExistenceOfTheNamedFolder", {"t/"}, u"t", plain, {existence, u"t"},
     all('D'), all('D'), {"t/"}},
    {"ExistenceOfOneOfTwoMatches", {"t1/", "t2/"}, u"t*", plain, {existence, u"t1"},
     toldOnPath, all('m'), {"t1/"}},
    {"ExistenceBehindANamedLink", {"l>u", "u/"}, u"l", plain, {existence, u"l"},
     all('L'), "", {"l", "u/"}},
    {"AttributesOfTheNamedFolder", {"t/"}, u"t", plain, {isWritable, u"t"},
     all('D'), all('D'), {"t/"}},
    {"AttributesOfOneOfTwoMatches", {"t1/", "t2/"}, u"t*", plain, {isWritable, u"t1"},
     toldOnPath, all('m'), {"t1/"}},
    {"AttributesOfAFileInATree", {"t/", "t/f"}, u"t", recursive, {setWritable, u"t/f"},
     all('+'), all('+'), {}},
    {"AttributesOfTheTree", {"t/", "t/f"}, u"t", recursive, {setWritable, u"t"},
     all('+'), all('+'), {}},

    // ---- following links
    {"CanonicalFormOfTheNamedFolder", {"t/"}, u"t", resolving, {canonicalLocation, u"t"},
     all('D'), all('D'), {"t/"}},
    {"CanonicalFormOfTheNamedTree", {"t/", "t/f"}, u"t", recursive | resolving, {canonicalLocation, u"t"},
     all('N'), all('N'), {"t/", "t/f"}},
    {"CanonicalFormOfANamedLink", {"l>u", "u/"}, u"l", resolving, {canonicalLocation, u"l"},
     all('L'), "", {"l", "u/"}},
    {"CanonicalFormOfANamedLinkToATree", {"l>u", "u/", "u/f"}, u"l", recursive | resolving,
     {canonicalLocation, u"l"},
     all('L'), "", {"l", "u/", "u/f"}},
    {"CanonicalFormOfOneOfTwoMatches", {"t1/", "t2/"}, u"t*", resolving, {canonicalLocation, u"t1"},
     toldOnPath, all('m'), {"t1/"}},
    {"CanonicalFormOfAFileInATree", {"t/", "t/a", "t/b"}, u"t", recursive | resolving,
     {canonicalLocation, u"t/a"},
     all('+'), all('+'), {}},

    // ---- removing a file
    {"FileInATree", {"t/", "t/a", "t/b"}, u"t", recursive, {removeFile, u"t/a"},
     all('+'), all('+'), {}},
    {"FileInATreeToTheEnd", {"t/", "t/a", "t/b"}, u"t", recursive, {removeFile, u"t/a"},
     toldTwiceOnPath, all('M'), {"t/", "t/a"}, std::nullopt, true},
    {"OnlyFileInATreeToTheEnd", {"t/", "t/a"}, u"t", recursive, {removeFile, u"t/a"},
     all('N'), all('N'), {"t/", "t/a"}, std::nullopt, true},
    // It has gone all the same, and so the folder goes; the failure of the file remains.
    {"FileInATreeWhoseAnswerIsLost", {"t/", "t/a"}, u"t", recursive,
     {removeFile, u"t/a", 0, Fault::Moment::after},
     toldOnPath, all('m'), {}},

    // ---- removing a folder
    {"NamedFolder", {"t/"}, u"t", plain, {removeFolder, u"t"},
     all('D'), all('D'), {"t/"}},
    {"NamedEmptyTree", {"t/"}, u"t", recursive, {removeFolder, u"t"},
     all('N'), all('N'), {"t/"}},
    {"OneOfTwoMatches", {"t1/", "t2/"}, u"t*", plain, {removeFolder, u"t1"},
     toldOnPath, all('m'), {"t1/"}},
    {"OneOfTwoMatchingTrees", {"t1/", "t2/", "t2/f"}, u"t*", recursive, {removeFolder, u"t1"},
     toldOnPath, all('m'), {"t1/"}},
    // "Not there" is no failure once something has been removed.
    {"TreeThatWasEmptied", {"t/", "t/f"}, u"t", recursive, {removeFolder, u"t"},
     toldOnPath, "mmmm+mmmmmmmm", {"t/"}},
    // The last resort finds nothing any more.
    {"TreeThatWasEmptiedWhoseAnswerIsLost", {"t/", "t/f"}, u"t", recursive,
     {removeFolder, u"t", 0, Fault::Moment::after},
     "++r++r+++++++", "gmmm+mmmmgmmm", {}},
    {"FolderInATree", {"t/", "t/u/", "t/u/f"}, u"t", recursive, {removeFolder, u"t/u"},
     all('+'), all('+'), {}},
    {"LinkInATree", {"t/", "t/l>../u", "u/", "u/f"}, u"t", recursive, {removeFolder, u"t/l"},
     all('+'), "", {"u/", "u/f"}},
    {"NamedLinkThatIsResolved", {"l>u", "u/"}, u"l", resolving, {removeFolder, u"u"},
     all('L'), "", {"l", "u/"}},
};

const Row creations[] = {
    {"NothingThere", {}, u"a", plain, {createFolderRecursive, u"a"},
     "OOOEOOOOOOOOO", "TTTETTTTTTTTT", {}},
    {"ChainOfFolders", {"a/"}, u"a/b/c", plain, {createFolderRecursive, u"a/b/c"},
     "OOOEOOOOOOOOO", "TTTETTTTTTTTT", {"a/"}},
    {"ChainWhoseAnswerIsLost", {}, u"a/b", plain, {createFolderRecursive, u"a/b", 0, Fault::Moment::after},
     "OOOEOOOOOOOOO", "TTTETTTTTTTTT", {"a/", "a/b/"}},
    // Asked again after the code that says "exists", the storage fails again.
    {"WayUp", {}, u"a", plain, {existence, u"a"},
     "OOOUOOOOOOOOO", "TTTUTTTTTTTTT", {}},
    // The folder is there; what it is cannot be told.
    {"WhatStandsThere", {"a/"}, u"a", plain, {existence, u"a", 2},
     "UUPUUUUUUUUUU", "UUPUUUUUUUUUU", {"a/"}},
};
// clang-format on

enum class Storage { path, location };

/// One row over one storage.
class StorageFailureTest : public DirManipTest, public testing::WithParamInterface<std::tuple<Row, Storage>> {
protected:
    const Row& row() const { return std::get<0>(GetParam()); }
    bool isOnPath() const { return std::get<1>(GetParam()) == Storage::path; }
    const std::string& letters() const { return isOnPath() ? row().onPath : row().onLocation; }
    FaultInjectingProvider& watched() const { return isOnPath() ? *local_ : *memory_; }

    /// A name below the scratch folder or in the box, as it is typed and as messages show it.
    std::u16string shown(const std::u16string& name) const {
        if (!isOnPath()) return u"memory://box/" + name;
        return name.empty() ? here_ : pathOf(name);
    }
    vfs::AbsoluteIRI location(const std::u16string& name) const {
        return Velquist::PathManagement::GetIRIFromString(shown(name));
    }

    void make(const std::string& entry) const {
        const std::u16string name(entry.begin(), entry.end());
        const std::size_t arrow = entry.find('>');
        const bool isFolder = entry.ends_with('/');
        if (arrow != std::string::npos) return makeLink(entry.substr(arrow + 1), entry.substr(0, arrow));
        if (!isOnPath())
            return isFolder ? box_->putFolder(location(name)) : box_->putFile(location(name), "");
        if (isFolder) {
            scratch_.makeFolder(entry);
        } else {
            scratch_.writeFile(entry);
        }
    }

    /// All that is left, folders with "/" at their end.
    Names namesLeft() const {
        Names names;
        isOnPath() ? addNamesOnDisk(names) : addNamesInBox(u"", names);
        return names;
    }
    void addNamesOnDisk(Names& names) const {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(scratch_.path())) {
            const bool isFolder = fs::is_directory(entry.symlink_status());
            const std::string name = entry.path().lexically_relative(scratch_.path()).string();
            names.insert(isFolder ? name + '/' : name);
        }
    }
    void addNamesInBox(const std::u16string& folder, Names& names) const {
        for (const runtime::storage::ListedEntry& entry : box_->list(boxLocation(folder), u"")) {
            const std::u16string name = folder + entry.name + (entry.isFolder ? u"/" : u"");
            names.insert(runtime::text::toDisplayBytes(name));
            if (entry.isFolder) addNamesInBox(name, names);
        }
    }

    /// Puts the row's tree in the place of what an earlier code has left, and has the storage fail.
    void prepare(vfs::ErrorCode code) const {
        watched().forgetFaults();
        watched().takeFoldersApart(row().isTakenApart);
        for (const fs::directory_entry& entry : fs::directory_iterator(scratch_.path()))
            fs::remove_all(entry);
        for (const runtime::storage::ListedEntry& entry : box_->list(boxLocation(u""), u""))
            box_->removeFolder(boxLocation(entry.name), vfs::RemoveWithContents);
        for (const std::string& entry : row().tree)
            make(entry);
        const FailingCall& failing = row().failing;
        const Fault fault{.code = code, .systemText = "Words", .moment = failing.moment};
        if (failing.number == 0) {
            watched().failAt(failing.operation, location(failing.at), fault);
        } else {
            watched().failCall(failing.operation, failing.number, fault);
        }
    }

    /// Checks the command against every letter of the row.
    template <class Command>
    void check(const Command& command) const {
        ASSERT_EQ(letters().size(), std::size_t{codes});
        for (int number = 0; number < codes; ++number) {
            const auto code = static_cast<vfs::ErrorCode>(number);
            SCOPED_TRACE("error code " + std::to_string(number));
            prepare(code);
            const std::size_t faultsBefore = watched().faultsRaised();
            const char letter = letters()[static_cast<std::size_t>(number)];
            if (letter == raised) {
                EXPECT_THROW(command(), vfs::Exception);
            } else {
                EXPECT_EQ(command(), meaningOf(letter, code, typed(), shown(row().failing.at)));
            }
            EXPECT_GT(watched().faultsRaised(), faultsBefore) << "the operation was never asked for";
            const bool isLastResort = code == vfs::folderNotEmpty || code == vfs::ioError;
            EXPECT_EQ(namesLeft(), isLastResort ? row().leftByLastResort.value_or(row().left) : row().left);
        }
    }

    /// An absolute path is looked up without a question about the current folder.
    std::u16string typed() const { return shown(row().typed); }
};

class RemovalFailureTest : public StorageFailureTest {};

TEST_P(RemovalFailureTest, EndsAsItsCodeSays) {
    if (letters().empty()) return;
    check([this] {
        const bool isRecursive = (row().options & recursive) != 0;
        if ((row().options & resolving) != 0) return rmdirResolving(typed(), isRecursive);
        return isRecursive ? rmdir({typed(), u"s"}) : rmdir({typed()});
    });
}

class CreationFailureTest : public StorageFailureTest {};

TEST_P(CreationFailureTest, EndsAsItsCodeSays) {
    check([this] { return mkdir({typed()}); });
}

std::string nameOf(const testing::TestParamInfo<std::tuple<Row, Storage>>& info) {
    const auto& [row, storage] = info.param;
    return row.name + (storage == Storage::path ? "OnPath" : "OnLocation");
}

constexpr Storage storages[] = {Storage::path, Storage::location};

INSTANTIATE_TEST_SUITE_P(Every, RemovalFailureTest,
                         testing::Combine(testing::ValuesIn(removals), testing::ValuesIn(storages)), nameOf);
INSTANTIATE_TEST_SUITE_P(Every, CreationFailureTest,
                         testing::Combine(testing::ValuesIn(creations), testing::ValuesIn(storages)), nameOf);

}  // namespace
}  // namespace korvex::filemanip::tests
