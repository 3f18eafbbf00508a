// The vocabulary: one class for each message of the file commands.
//
// The name of a class is the key of its catalog entry, its namespaces spell the component. The constructor
// takes the arguments of the entry, in order: paths, options, labels that are translated already.
// `Vocabulary` lists all of them; a test holds it against the catalog in every language.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "platform/message_record.h"

namespace resource_core {

/// An identifier as a template argument.
template <std::size_t size>
struct Identifier {
    char text[size];
    constexpr Identifier(const char (&literal)[size]) { std::copy_n(literal, size, text); }
    constexpr std::string_view view() const { return {text, size - 1}; }
};

/// What a message class takes besides 16-bit texts.
enum class ArgumentText { wide, narrow };

/// The common base of the message classes: an entry with a fixed number of arguments.
template <Identifier id, std::size_t count, ArgumentText kind = ArgumentText::wide>
struct Message : BaseMsgID {
    static constexpr std::string_view fullIdentifier = id.view();
    static constexpr std::size_t argumentCount = count;
    using Text = std::conditional_t<kind == ArgumentText::narrow, std::string, std::u16string>;

    /// Whether these are the arguments of the entry, in number and kind of text.
    template <class... Texts>
    static constexpr bool takes = sizeof...(Texts) == count && (std::is_constructible_v<Text, Texts> && ...);

    template <class... Texts>
    requires(takes<Texts...>) explicit Message(Texts&&... texts) {
        const std::size_t lastColon = fullIdentifier.rfind(':');
        component = fullIdentifier.substr(0, lastColon);
        key = fullIdentifier.substr(lastColon + 1);
        args.reserve(count);
        (args.emplace_back(Text(std::forward<Texts>(texts))), ...);
    }
};

}  // namespace resource_core

namespace KORVEX::COPYFILE {
struct CopiedFileIntoPackage : resource_core::Message<"KORVEX:COPYFILE:CopiedFileIntoPackage", 2> {
    using Message::Message;
};
struct CopiedFolderIntoEditablePackage
    : resource_core::Message<"KORVEX:COPYFILE:CopiedFolderIntoEditablePackage", 2> {
    using Message::Message;
};
struct CopiedFolderIntoPackage : resource_core::Message<"KORVEX:COPYFILE:CopiedFolderIntoPackage", 2> {
    using Message::Message;
};
struct InvalidOption : resource_core::Message<"KORVEX:COPYFILE:InvalidOption", 1> {
    using Message::Message;
};
}  // namespace KORVEX::COPYFILE

namespace KORVEX::MOVEFILE {
struct InvalidOption : resource_core::Message<"KORVEX:MOVEFILE:InvalidOption", 1> {
    using Message::Message;
};
struct MovedFileFromPackage : resource_core::Message<"KORVEX:MOVEFILE:MovedFileFromPackage", 2> {
    using Message::Message;
};
struct MovedFileIntoPackage : resource_core::Message<"KORVEX:MOVEFILE:MovedFileIntoPackage", 2> {
    using Message::Message;
};
struct MovedFolderFromEditablePackage
    : resource_core::Message<"KORVEX:MOVEFILE:MovedFolderFromEditablePackage", 2> {
    using Message::Message;
};
struct MovedFolderFromPackage : resource_core::Message<"KORVEX:MOVEFILE:MovedFolderFromPackage", 2> {
    using Message::Message;
};
struct MovedFolderIntoEditablePackage
    : resource_core::Message<"KORVEX:MOVEFILE:MovedFolderIntoEditablePackage", 2> {
    using Message::Message;
};
struct MovedFolderIntoPackage : resource_core::Message<"KORVEX:MOVEFILE:MovedFolderIntoPackage", 2> {
    using Message::Message;
};
struct RemovedFromPath : resource_core::Message<"KORVEX:MOVEFILE:RemovedFromPath", 1> {
    using Message::Message;
};
}  // namespace KORVEX::MOVEFILE

namespace KORVEX::FILE {
struct DestNotAFolder : resource_core::Message<"KORVEX:FILE:DestNotAFolder", 1> {
    using Message::Message;
};
struct FileNotFound : resource_core::Message<"KORVEX:FILE:FileNotFound", 1> {
    using Message::Message;
};
struct FolderPermissionError : resource_core::Message<"KORVEX:FILE:FolderPermissionError", 1> {
    using Message::Message;
};
struct FolderPermissionErrorWithFlag
    : resource_core::Message<"KORVEX:FILE:FolderPermissionErrorWithFlag", 1> {
    using Message::Message;
};
struct NeitherFileNorFolder : resource_core::Message<"KORVEX:FILE:NeitherFileNorFolder", 0> {
    using Message::Message;
};
struct PATHMAX : resource_core::Message<"KORVEX:FILE:PATHMAX", 0> {
    using Message::Message;
};
struct ReadOnly : resource_core::Message<"KORVEX:FILE:ReadOnly", 1> {
    using Message::Message;
};
struct ReadPermissionError : resource_core::Message<"KORVEX:FILE:ReadPermissionError", 1> {
    using Message::Message;
};
struct ReadPermissionErrorWithFlag : resource_core::Message<"KORVEX:FILE:ReadPermissionErrorWithFlag", 1> {
    using Message::Message;
};
struct SourceAndDestinationSame : resource_core::Message<"KORVEX:FILE:SourceAndDestinationSame", 0> {
    using Message::Message;
};
struct SourceArgumentIsEmpty : resource_core::Message<"KORVEX:FILE:SourceArgumentIsEmpty", 0> {
    using Message::Message;
};
struct SourceIsAncestorOfDestination
    : resource_core::Message<"KORVEX:FILE:SourceIsAncestorOfDestination", 0> {
    using Message::Message;
};
struct WritePermissionError : resource_core::Message<"KORVEX:FILE:WritePermissionError", 1> {
    using Message::Message;
};
struct WritePermissionErrorWithFlag : resource_core::Message<"KORVEX:FILE:WritePermissionErrorWithFlag", 1> {
    using Message::Message;
};
}  // namespace KORVEX::FILE

namespace KORVEX::FileManip {
struct CouldNotRemove : resource_core::Message<"KORVEX:FileManip:CouldNotRemove", 1> {
    using Message::Message;
};
struct IllegalName : resource_core::Message<"KORVEX:FileManip:IllegalName", 0> {
    using Message::Message;
};
struct NotADirectory : resource_core::Message<"KORVEX:FileManip:NotADirectory", 1> {
    using Message::Message;
};
struct NullCharacterInName : resource_core::Message<"KORVEX:FileManip:NullCharacterInName", 0> {
    using Message::Message;
};
struct ReadOnly : resource_core::Message<"KORVEX:FileManip:ReadOnly", 1> {
    using Message::Message;
};
}  // namespace KORVEX::FileManip

namespace KORVEX::FileUtils {
struct inputPath : resource_core::Message<"KORVEX:FileUtils:inputPath", 0> {
    using Message::Message;
};
}  // namespace KORVEX::FileUtils

namespace KORVEX::MKDIR {
struct CreatedFolderInEditablePackage
    : resource_core::Message<"KORVEX:MKDIR:CreatedFolderInEditablePackage", 2> {
    using Message::Message;
};
struct CreatedFolderInPackage : resource_core::Message<"KORVEX:MKDIR:CreatedFolderInPackage", 2> {
    using Message::Message;
};
struct DirectoryExists : resource_core::Message<"KORVEX:MKDIR:DirectoryExists", 0> {
    using Message::Message;
};
struct EmptyDirectoryName : resource_core::Message<"KORVEX:MKDIR:EmptyDirectoryName", 0> {
    using Message::Message;
};
struct ExistsAsFile : resource_core::Message<"KORVEX:MKDIR:ExistsAsFile", 1> {
    using Message::Message;
};
struct FailureToMkdir : resource_core::Message<"KORVEX:MKDIR:FailureToMkdir", 1> {
    using Message::Message;
};
struct PermissionDenied : resource_core::Message<"KORVEX:MKDIR:PermissionDenied", 1> {
    using Message::Message;
};
}  // namespace KORVEX::MKDIR

namespace KORVEX::RMDIR {
struct DirectoryNotRemoved : resource_core::Message<"KORVEX:RMDIR:DirectoryNotRemoved", 1> {
    using Message::Message;
};
struct InvalidOption : resource_core::Message<"KORVEX:RMDIR:InvalidOption", 1> {
    using Message::Message;
};
struct NoDirectoriesRemoved : resource_core::Message<"KORVEX:RMDIR:NoDirectoriesRemoved", 0> {
    using Message::Message;
};
struct NotADirectory : resource_core::Message<"KORVEX:RMDIR:NotADirectory", 1> {
    using Message::Message;
};
struct PathNotFound : resource_core::Message<"KORVEX:RMDIR:PathNotFound", 0> {
    using Message::Message;
};
struct RemovedFileFromPackage : resource_core::Message<"KORVEX:RMDIR:RemovedFileFromPackage", 2> {
    using Message::Message;
};
struct RemovedFolderFromEditablePackage
    : resource_core::Message<"KORVEX:RMDIR:RemovedFolderFromEditablePackage", 2> {
    using Message::Message;
};
struct RemovedFolderFromPackage : resource_core::Message<"KORVEX:RMDIR:RemovedFolderFromPackage", 2> {
    using Message::Message;
};
struct RemovedFromPath : resource_core::Message<"KORVEX:RMDIR:RemovedFromPath", 1> {
    using Message::Message;
};
struct SomeDirectoriesNotRemoved : resource_core::Message<"KORVEX:RMDIR:SomeDirectoriesNotRemoved", 1> {
    using Message::Message;
};
}  // namespace KORVEX::RMDIR

namespace KORVEX::DELETE {
struct DeletedFileFromPackage : resource_core::Message<"KORVEX:DELETE:DeletedFileFromPackage", 2> {
    using Message::Message;
};
struct DirectoryDeletion : resource_core::Message<"KORVEX:DELETE:DirectoryDeletion", 1> {
    using Message::Message;
};
struct FileNotFound : resource_core::Message<"KORVEX:DELETE:FileNotFound", 1> {
    using Message::Message;
};
struct FolderNotEmpty : resource_core::Message<"KORVEX:DELETE:FolderNotEmpty", 1> {
    using Message::Message;
};
struct Permission : resource_core::Message<"KORVEX:DELETE:Permission", 0> {
    using Message::Message;
};
struct pathnameTooLong : resource_core::Message<"KORVEX:DELETE:pathnameTooLong", 1> {
    using Message::Message;
};
}  // namespace KORVEX::DELETE

namespace KORVEX::RECYCLE {
struct InvalidRecycleState : resource_core::Message<"KORVEX:RECYCLE:InvalidRecycleState", 0> {
    using Message::Message;
};
struct State : resource_core::Message<"KORVEX:RECYCLE:State", 0> {
    using Message::Message;
};
}  // namespace KORVEX::RECYCLE

namespace KORVEX::FILEATTRIB {
struct CannotFindFile : resource_core::Message<"KORVEX:FILEATTRIB:CannotFindFile", 0> {
    using Message::Message;
};
struct ModeSyntaxError : resource_core::Message<"KORVEX:FILEATTRIB:ModeSyntaxError", 0> {
    using Message::Message;
};
struct ModifierSyntaxError : resource_core::Message<"KORVEX:FILEATTRIB:ModifierSyntaxError", 0> {
    using Message::Message;
};
struct SyntaxWarning : resource_core::Message<"KORVEX:FILEATTRIB:SyntaxWarning", 0> {
    using Message::Message;
};
}  // namespace KORVEX::FILEATTRIB

namespace KORVEX::dir {
struct SuccessiveGlobs : resource_core::Message<"KORVEX:dir:SuccessiveGlobs", 0> {
    using Message::Message;
};
struct fileOrDirNotFound : resource_core::Message<"KORVEX:dir:fileOrDirNotFound", 1> {
    using Message::Message;
};
struct filesFoundIn : resource_core::Message<"KORVEX:dir:filesFoundIn", 1> {
    using Message::Message;
};
struct filesFoundInCurrentFolder : resource_core::Message<"KORVEX:dir:filesFoundInCurrentFolder", 0> {
    using Message::Message;
};
struct invalidGlob : resource_core::Message<"KORVEX:dir:invalidGlob", 0> {
    using Message::Message;
};
struct locationEmpty : resource_core::Message<"KORVEX:dir:locationEmpty", 0> {
    using Message::Message;
};
struct noPatternMatches : resource_core::Message<"KORVEX:dir:noPatternMatches", 1> {
    using Message::Message;
};
struct pathnameTooLong : resource_core::Message<"KORVEX:dir:pathnameTooLong", 1> {
    using Message::Message;
};
}  // namespace KORVEX::dir

namespace KORVEX::what {
struct CurrDir : resource_core::Message<"KORVEX:what:CurrDir", 2> {
    using Message::Message;
};
struct Directory : resource_core::Message<"KORVEX:what:Directory", 0> {
    using Message::Message;
};
struct NotFound : resource_core::Message<"KORVEX:what:NotFound", 1> {
    using Message::Message;
};
struct NotcurrDir : resource_core::Message<"KORVEX:what:NotcurrDir", 2> {
    using Message::Message;
};
}  // namespace KORVEX::what

namespace KORVEX::string {
struct Argument : resource_core::Message<"KORVEX:string:Argument", 0> {
    using Message::Message;
};
struct MissingNotSupported : resource_core::Message<"KORVEX:string:MissingNotSupported", 0> {
    using Message::Message;
};
struct MustBeCharCellArrayOrString : resource_core::Message<"KORVEX:string:MustBeCharCellArrayOrString", 1> {
    using Message::Message;
};
struct MustBeSingleString : resource_core::Message<"KORVEX:string:MustBeSingleString", 1> {
    using Message::Message;
};
struct MustBeStringScalarOrCharacterVector
    : resource_core::Message<"KORVEX:string:MustBeStringScalarOrCharacterVector", 0> {
    using Message::Message;
};
struct Name : resource_core::Message<"KORVEX:string:Name", 0> {
    using Message::Message;
};
}  // namespace KORVEX::string

namespace KORVEX::services {
struct cwdIsInvalid : resource_core::Message<"KORVEX:services:cwdIsInvalid", 0> {
    using Message::Message;
};
}  // namespace KORVEX::services

namespace KORVEX::io::common::validation {
struct InternalError : resource_core::Message<"KORVEX:io:common:validation:InternalError", 1,
                                              resource_core::ArgumentText::narrow> {
    using Message::Message;
};
}  // namespace KORVEX::io::common::validation

namespace KORVEX::io::filesystem::symlink {
struct CannotCreateSymlinkInDestFolder
    : resource_core::Message<"KORVEX:io:filesystem:symlink:CannotCreateSymlinkInDestFolder", 2> {
    using Message::Message;
};
struct CannotCreateSymlinkWithName
    : resource_core::Message<"KORVEX:io:filesystem:symlink:CannotCreateSymlinkWithName", 2> {
    using Message::Message;
};
struct NoTargetForBrokenSymlink
    : resource_core::Message<"KORVEX:io:filesystem:symlink:NoTargetForBrokenSymlink", 1> {
    using Message::Message;
};
}  // namespace KORVEX::io::filesystem::symlink

namespace KORVEX::virtualfileio::stream {
struct pathComponentMissing : resource_core::Message<"KORVEX:virtualfileio:stream:pathComponentMissing", 1> {
    using Message::Message;
};
struct writeNotAllowed : resource_core::Message<"KORVEX:virtualfileio:stream:writeNotAllowed", 0> {
    using Message::Message;
};
struct zeroFolderConcept : resource_core::Message<"KORVEX:virtualfileio:stream:zeroFolderConcept", 0> {
    using Message::Message;
};
}  // namespace KORVEX::virtualfileio::stream

namespace KORVEX::virtualfilesystem {
struct changeEventsNotSupported
    : resource_core::Message<"KORVEX:virtualfilesystem:changeEventsNotSupported", 1> {
    using Message::Message;
};
struct fileTooLarge : resource_core::Message<"KORVEX:virtualfilesystem:fileTooLarge", 1> {
    using Message::Message;
};
struct folderNotEmpty : resource_core::Message<"KORVEX:virtualfilesystem:folderNotEmpty", 1> {
    using Message::Message;
};
struct internalError : resource_core::Message<"KORVEX:virtualfilesystem:internalError", 1> {
    using Message::Message;
};
struct invalidIRI : resource_core::Message<"KORVEX:virtualfilesystem:invalidIRI", 1> {
    using Message::Message;
};
struct invalidLocation : resource_core::Message<"KORVEX:virtualfilesystem:invalidLocation", 1> {
    using Message::Message;
};
struct ioError : resource_core::Message<"KORVEX:virtualfilesystem:ioError", 1> {
    using Message::Message;
};
struct noSpaceLeft : resource_core::Message<"KORVEX:virtualfilesystem:noSpaceLeft", 1> {
    using Message::Message;
};
struct permissionDenied : resource_core::Message<"KORVEX:virtualfilesystem:permissionDenied", 1> {
    using Message::Message;
};
struct readOnlyProvider : resource_core::Message<"KORVEX:virtualfilesystem:readOnlyProvider", 1> {
    using Message::Message;
};
struct resourceAlreadyExists : resource_core::Message<"KORVEX:virtualfilesystem:resourceAlreadyExists", 1> {
    using Message::Message;
};
struct resourceInUse : resource_core::Message<"KORVEX:virtualfilesystem:resourceInUse", 1> {
    using Message::Message;
};
struct resourceNotFound : resource_core::Message<"KORVEX:virtualfilesystem:resourceNotFound", 1> {
    using Message::Message;
};
struct subscriptionError : resource_core::Message<"KORVEX:virtualfilesystem:subscriptionError", 1> {
    using Message::Message;
};
struct unknownError : resource_core::Message<"KORVEX:virtualfilesystem:unknownError", 1> {
    using Message::Message;
};
struct unsupportedOperation : resource_core::Message<"KORVEX:virtualfilesystem:unsupportedOperation", 1> {
    using Message::Message;
};
struct unsupportedProvider : resource_core::Message<"KORVEX:virtualfilesystem:unsupportedProvider", 1> {
    using Message::Message;
};
}  // namespace KORVEX::virtualfilesystem

namespace KORVEX {

/// Every message class above.
using Vocabulary = std::tuple<
    COPYFILE::CopiedFileIntoPackage, COPYFILE::CopiedFolderIntoEditablePackage,
    COPYFILE::CopiedFolderIntoPackage, COPYFILE::InvalidOption, MOVEFILE::InvalidOption,
    MOVEFILE::MovedFileFromPackage, MOVEFILE::MovedFileIntoPackage, MOVEFILE::MovedFolderFromEditablePackage,
    MOVEFILE::MovedFolderFromPackage, MOVEFILE::MovedFolderIntoEditablePackage,
    MOVEFILE::MovedFolderIntoPackage, MOVEFILE::RemovedFromPath, FILE::DestNotAFolder, FILE::FileNotFound,
    FILE::FolderPermissionError, FILE::FolderPermissionErrorWithFlag, FILE::NeitherFileNorFolder,
    FILE::PATHMAX, FILE::ReadOnly, FILE::ReadPermissionError, FILE::ReadPermissionErrorWithFlag,
    FILE::SourceAndDestinationSame, FILE::SourceArgumentIsEmpty, FILE::SourceIsAncestorOfDestination,
    FILE::WritePermissionError, FILE::WritePermissionErrorWithFlag, FileManip::CouldNotRemove,
    FileManip::IllegalName, FileManip::NotADirectory, FileManip::NullCharacterInName, FileManip::ReadOnly,
    FileUtils::inputPath, MKDIR::CreatedFolderInEditablePackage, MKDIR::CreatedFolderInPackage,
    MKDIR::DirectoryExists, MKDIR::EmptyDirectoryName, MKDIR::ExistsAsFile, MKDIR::FailureToMkdir,
    MKDIR::PermissionDenied, RMDIR::DirectoryNotRemoved, RMDIR::InvalidOption, RMDIR::NoDirectoriesRemoved,
    RMDIR::NotADirectory, RMDIR::PathNotFound, RMDIR::RemovedFileFromPackage,
    RMDIR::RemovedFolderFromEditablePackage, RMDIR::RemovedFolderFromPackage, RMDIR::RemovedFromPath,
    RMDIR::SomeDirectoriesNotRemoved, DELETE::DeletedFileFromPackage, DELETE::DirectoryDeletion,
    DELETE::FileNotFound, DELETE::FolderNotEmpty, DELETE::Permission, DELETE::pathnameTooLong,
    RECYCLE::InvalidRecycleState, RECYCLE::State, FILEATTRIB::CannotFindFile, FILEATTRIB::ModeSyntaxError,
    FILEATTRIB::ModifierSyntaxError, FILEATTRIB::SyntaxWarning, dir::SuccessiveGlobs, dir::fileOrDirNotFound,
    dir::filesFoundIn, dir::filesFoundInCurrentFolder, dir::invalidGlob, dir::locationEmpty,
    dir::noPatternMatches, dir::pathnameTooLong, what::CurrDir, what::Directory, what::NotFound,
    what::NotcurrDir, string::Argument, string::MissingNotSupported, string::MustBeCharCellArrayOrString,
    string::MustBeSingleString, string::MustBeStringScalarOrCharacterVector, string::Name,
    services::cwdIsInvalid, io::common::validation::InternalError,
    io::filesystem::symlink::CannotCreateSymlinkInDestFolder,
    io::filesystem::symlink::CannotCreateSymlinkWithName, io::filesystem::symlink::NoTargetForBrokenSymlink,
    virtualfileio::stream::pathComponentMissing, virtualfileio::stream::writeNotAllowed,
    virtualfileio::stream::zeroFolderConcept, virtualfilesystem::changeEventsNotSupported,
    virtualfilesystem::fileTooLarge, virtualfilesystem::folderNotEmpty, virtualfilesystem::internalError,
    virtualfilesystem::invalidIRI, virtualfilesystem::invalidLocation, virtualfilesystem::ioError,
    virtualfilesystem::noSpaceLeft, virtualfilesystem::permissionDenied, virtualfilesystem::readOnlyProvider,
    virtualfilesystem::resourceAlreadyExists, virtualfilesystem::resourceInUse,
    virtualfilesystem::resourceNotFound, virtualfilesystem::subscriptionError,
    virtualfilesystem::unknownError, virtualfilesystem::unsupportedOperation,
    virtualfilesystem::unsupportedProvider>;

}  // namespace KORVEX
