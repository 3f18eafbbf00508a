// libkwfilesystemcore: what the file commands share with the rest of the environment.
#pragma once

#include <boost/exception_ptr.hpp>
#include <boost/optional.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kx.h"
#include "platform/message_record.h"
#include "platform/packages.h"
#include "platform/storage_vfs.h"
#include "platform/user_exceptions.h"

namespace korvex::io::filesystem::core {

/// The outcome of an engine's work. A message may stand under a success code, as a note.
struct Status {
    static constexpr std::int32_t success = 1;
    static constexpr std::int32_t failure = 2;

    std::int32_t code = success;
    /// Holds a `foundation::core::except::Exception`; null while nothing was reported.
    boost::exception_ptr exception;

    /// Appends the message's text to a list, on a line of its own. True when the list has reached its limit
    /// (4096 units): the caller appends no more.
    static bool AppendWithLimit(std::u16string& list, const resource_core::BaseMsgID& message);
};

namespace detail {

/// The identifier and the text of a stored exception; empty for null.
std::string GetID(const boost::exception_ptr& exception);
std::u16string GetUnicodeMessageTxt(const boost::exception_ptr& exception);

}  // namespace detail

/// Turns the outcome of a command into its outputs.
class ResultHandler {
public:
    /// Sets as many outputs as `nlhs` asks for, of three: a logical (success or not), the message's text, its
    /// identifier; both texts are empty where there is no message. With no output asked for, a failure raises
    /// its exception and a success does nothing. A failure without a message reads as "OSError".
    static void HandleStatus(Status status, int nlhs, kxArray* plhs[]);
};

/// The base of the engines of the commands that change the file system. An engine lives for one call of a
/// command, on one thread: it takes the paths and options, does the work, and collects the outcome in its
/// status. A later failure replaces an earlier one, and a code that is a failure never becomes a success
/// again.
///
/// The order of the virtual operations is the order of the environment's binary interface.
class FileManipulator {
protected:
    /// The outcome so far; what `Process` returns a copy of. It stands first in the object.
    Status status_;

public:
    /// Without a message, the code `Status::success`.
    FileManipulator();
    FileManipulator(const FileManipulator&) = delete;
    FileManipulator& operator=(const FileManipulator&) = delete;
    virtual ~FileManipulator();

protected:
    virtual Status GetStatus();
    /// Takes the options of the call. This one leaves them alone.
    virtual void ParseOptArgs(std::vector<std::u16string> options);
    /// Records a failure by key; a subclass calls `SetErrorStatus` with its command's word.
    virtual void reportByKey(const char* key) = 0;
    /// What stands between "KORVEX:" and the key in the identifiers of `setStatusException`: "FILE".
    virtual std::string GetErrorMsgIdPrefix();
    /// Tells the environment that what it knows of a folder is out of date.
    virtual void MarkDirOutOfDate(std::u16string& folder);
    /// Tells the environment to read the search path again with the next look-up.
    virtual void RequestPathRefresh() const;
    virtual Status Process(std::vector<std::u16string> paths, std::vector<std::u16string> options) = 0;
    virtual Status Process(std::vector<std::u16string> paths) = 0;

    /// Records a failure under the identifier "KORVEX:<word>:<key>", code 2. The text is that of the entry
    /// which belongs to word and key, or says that the system refused. Within a handler of the failure
    /// (anywhere below a `catch`) that text has the operating system's own words, where the exception has
    /// them.
    void SetErrorStatus(const char* word, const char* key);

    /// Stores the message of the storage failure with `path` as its argument, under the message's own
    /// identifier. Leaves the code as it is: the caller sets it.
    void SetVFSErrorStatus(const foundation::storage::vfs::Exception& failure, const std::u16string& path);

    /// When `contexts` is the identifier of a message with one argument: stores that message with `path`,
    /// under that identifier, code 2, and gives true. Otherwise does nothing and gives false.
    bool SetErrorExceptionContext(const std::u16string& contexts, const std::u16string& path);

    /// Whether the path has at most `limit` units. If not, "KORVEX:FILE:PATHMAX" is stored, code 2.
    bool CheckStringForPathMax(const std::u16string& path, std::size_t limit);

    /// Whether the text holds a NUL. If so, "KORVEX:FileManip:NullCharacterInName" is stored, code 2.
    bool FilenameContainsNull(const std::u16string& path);

    /// Stores a message under the identifier "KORVEX:<GetErrorMsgIdPrefix()>:<key>". The text stays that of
    /// the message's own entry, on purpose: identifier and text need not agree. Code 1 becomes 2, another
    /// stays.
    template <class Tag>
    void setStatusException(std::string_view key, const Tag& message) {
        using Failure = foundation::core::except::Exception<Tag>;
        const std::string identifier = "KORVEX:" + GetErrorMsgIdPrefix() + ':' + std::string(key);
        status_.exception = boost::copy_exception(Failure(message, identifier));
        if (status_.code == Status::success) status_.code = Status::failure;
    }
};

/// Expands names into lists of files: absolute native paths, and location texts below a base that is not
/// local.
class FileListCreator {
public:
    FileListCreator();

    /// Adds what a name stands for. A relative name is taken against `base`, or the current folder when there
    /// is none; an absolute one stays as it is; the empty name stands for nothing.
    ///
    /// - Something stands there under just this name: it is added, and behind a folder all that it holds at
    ///   any depth, each folder before its contents, entries by 16-bit unit.
    /// - Otherwise the last component is a pattern (`Folder::listAll`): each entry that matches is added, and
    ///   nothing below it.
    ///
    /// `followsLinks` walks into links to folders, each folder once; without it a link is only added itself.
    /// `includesFolders` keeps the folders, and links to them, in the list. `failsWithoutMatch` makes it a
    /// failure ("KORVEX:FILEATTRIB:CannotFindFile") when the name stands for nothing.
    ///
    /// A folder that cannot be listed makes the status a failure, the first of them being the one that is
    /// kept, and the rest is expanded all the same. Raises `fl::filesystem::PathNotFound` when the current
    /// folder is needed and gone, `UnsupportedIRISchemeException` for a base of a scheme without a provider,
    /// `vfs::Exception` when an interrupt is pending.
    void AddFiles(std::u16string name, boost::optional<foundation::storage::vfs::CanonicalAbsoluteIRI> base,
                  bool followsLinks, bool includesFolders, bool failsWithoutMatch);

    /// In the order in which they were added.
    std::vector<std::u16string> GetFiles();
    Status GetStatus();

private:
    std::vector<std::u16string> files_;
    Status status_;
};

/// What stands at a location. `tellsLinksApart` false looks through links and gives `ExtendedFile`,
/// `ExtendedFolder` or `ExtendedNothing`. Raises as `existsExtended`.
foundation::storage::provider::ExistenceTypeExtended getExtendedExistenceType(
    const foundation::storage::vfs::AbsoluteIRI& location, bool tellsLinksApart);

/// Whether this is one of the three link values.
bool isSymlink(foundation::storage::provider::ExistenceTypeExtended type) noexcept;

enum SymbolicLinkType { SymbolicLink = 0, NoSymbolicLink = 1 };

/// Whether a path, or a text with a scheme, names a link, be its target there or not. Where nobody can tell
/// it is none; raises nothing. Separators at its end do not count.
SymbolicLinkType isSymlink(const std::u16string& text);

/// Whether `text` is the name of the rule: the whole word, case ignored. If so, it is rewritten as
/// `ruleName`.
bool validateRuleName(std::u16string& text, const std::u16string& ruleName);

/// The one of the allowed words that `value` is, case ignored; `value` is rewritten as that. The empty text,
/// and `value` as it was, when it is none of them.
std::u16string validateRuleValues(std::u16string& value, const std::vector<std::u16string>& allowed);

/// What becomes of the links and dots of a path that is made absolute.
enum ResolveSymbolicLinks {
    KeepLinks = 0,         ///< `.` and `..` are resolved as text
    FollowLinks = 1,       ///< so are they; then the links in the part of the path that exists are followed
    KeepLinksAndDots = 2,  ///< the path is only made absolute
};

/// Makes a local path ready to become a location: absolute against the current folder, dots and links as
/// `mode` says, with the platform's own separators, none of them doubled (but for a leading pair on Windows)
/// and none at the end (but for a root's). False, with the path made empty, when the current folder is needed
/// and gone.
bool setupPathForURLConstruction(std::u16string& path, ResolveSymbolicLinks mode);

/// Makes a path absolute, in place; dots and links as `mode` says. Raises `fl::filesystem::PathNotFound`, and
/// leaves the path as it was, when the current folder is needed and gone.
void relativeToAbsolute(std::u16string& path, ResolveSymbolicLinks mode);

/// Makes the letters A to Z small, in place; all other units stay.
void makeLowerCase(std::u16string& text);

/// A network path, as `\\host\share`, by the rules of the platform's path style. None with the POSIX style.
bool isUNCPath(const std::u16string& text);

/// A path of the long form that begins with `\\?\`, by the rules of the platform's path style.
bool isLongPath(const std::u16string& text);

/// The package that claims a folder: the one whose root folder it is, or lies above it; the innermost of
/// several. The folder need not be there. Raises `vfs::Exception` when the package registry cannot be read.
boost::optional<Velquist::KorvexComponents::ComponentIdentifier> GetClaimingPackage(
    const foundation::storage::vfs::Folder& folder);

/// The packages as they are registered now. Raises as `GetClaimingPackage`; never null.
std::shared_ptr<Velquist::KorvexComponents::IPackageRegistry> GetCurrentPackageRegistry();

}  // namespace korvex::io::filesystem::core
