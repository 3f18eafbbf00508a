// The vocabulary as scripts and callers know it: every identifier and how many arguments its message takes,
// written out, so that a class and its catalog entry cannot change together unnoticed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>
#include <utility>

#include "platform/message_identifiers.h"

namespace {

using resource_core::MessageArgument;

const std::map<std::string, std::size_t> argumentsOfIdentifiers{
    {"KORVEX:COPYFILE:CopiedFileIntoPackage", 2},
    {"KORVEX:COPYFILE:CopiedFolderIntoEditablePackage", 2},
    {"KORVEX:COPYFILE:CopiedFolderIntoPackage", 2},
    {"KORVEX:COPYFILE:InvalidOption", 1},
    {"KORVEX:MOVEFILE:InvalidOption", 1},
    {"KORVEX:MOVEFILE:MovedFileFromPackage", 2},
    {"KORVEX:MOVEFILE:MovedFileIntoPackage", 2},
    {"KORVEX:MOVEFILE:MovedFolderFromEditablePackage", 2},
    {"KORVEX:MOVEFILE:MovedFolderFromPackage", 2},
    {"KORVEX:MOVEFILE:MovedFolderIntoEditablePackage", 2},
    {"KORVEX:MOVEFILE:MovedFolderIntoPackage", 2},
    {"KORVEX:MOVEFILE:RemovedFromPath", 1},
    {"KORVEX:FILE:DestNotAFolder", 1},
    {"KORVEX:FILE:FileNotFound", 1},
    {"KORVEX:FILE:FolderPermissionError", 1},
    {"KORVEX:FILE:FolderPermissionErrorWithFlag", 1},
    {"KORVEX:FILE:NeitherFileNorFolder", 0},
    {"KORVEX:FILE:PATHMAX", 0},
    {"KORVEX:FILE:ReadOnly", 1},
    {"KORVEX:FILE:ReadPermissionError", 1},
    {"KORVEX:FILE:ReadPermissionErrorWithFlag", 1},
    {"KORVEX:FILE:SourceAndDestinationSame", 0},
    {"KORVEX:FILE:SourceArgumentIsEmpty", 0},
    {"KORVEX:FILE:SourceIsAncestorOfDestination", 0},
    {"KORVEX:FILE:WritePermissionError", 1},
    {"KORVEX:FILE:WritePermissionErrorWithFlag", 1},
    {"KORVEX:FileManip:CouldNotRemove", 1},
    {"KORVEX:FileManip:IllegalName", 0},
    {"KORVEX:FileManip:NotADirectory", 1},
    {"KORVEX:FileManip:NullCharacterInName", 0},
    {"KORVEX:FileManip:ReadOnly", 1},
    {"KORVEX:FileUtils:inputPath", 0},
    {"KORVEX:MKDIR:CreatedFolderInEditablePackage", 2},
    {"KORVEX:MKDIR:CreatedFolderInPackage", 2},
    {"KORVEX:MKDIR:DirectoryExists", 0},
    {"KORVEX:MKDIR:EmptyDirectoryName", 0},
    {"KORVEX:MKDIR:ExistsAsFile", 1},
    {"KORVEX:MKDIR:FailureToMkdir", 1},
    {"KORVEX:MKDIR:PermissionDenied", 1},
    {"KORVEX:RMDIR:DirectoryNotRemoved", 1},
    {"KORVEX:RMDIR:InvalidOption", 1},
    {"KORVEX:RMDIR:NoDirectoriesRemoved", 0},
    {"KORVEX:RMDIR:NotADirectory", 1},
    {"KORVEX:RMDIR:PathNotFound", 0},
    {"KORVEX:RMDIR:RemovedFileFromPackage", 2},
    {"KORVEX:RMDIR:RemovedFolderFromEditablePackage", 2},
    {"KORVEX:RMDIR:RemovedFolderFromPackage", 2},
    {"KORVEX:RMDIR:RemovedFromPath", 1},
    {"KORVEX:RMDIR:SomeDirectoriesNotRemoved", 1},
    {"KORVEX:DELETE:DeletedFileFromPackage", 2},
    {"KORVEX:DELETE:DirectoryDeletion", 1},
    {"KORVEX:DELETE:FileNotFound", 1},
    {"KORVEX:DELETE:FolderNotEmpty", 1},
    {"KORVEX:DELETE:Permission", 0},
    {"KORVEX:DELETE:pathnameTooLong", 1},
    {"KORVEX:RECYCLE:InvalidRecycleState", 0},
    {"KORVEX:RECYCLE:State", 0},
    {"KORVEX:FILEATTRIB:CannotFindFile", 0},
    {"KORVEX:FILEATTRIB:ModeSyntaxError", 0},
    {"KORVEX:FILEATTRIB:ModifierSyntaxError", 0},
    {"KORVEX:FILEATTRIB:SyntaxWarning", 0},
    {"KORVEX:dir:SuccessiveGlobs", 0},
    {"KORVEX:dir:fileOrDirNotFound", 1},
    {"KORVEX:dir:filesFoundIn", 1},
    {"KORVEX:dir:filesFoundInCurrentFolder", 0},
    {"KORVEX:dir:invalidGlob", 0},
    {"KORVEX:dir:locationEmpty", 0},
    {"KORVEX:dir:noPatternMatches", 1},
    {"KORVEX:dir:pathnameTooLong", 1},
    {"KORVEX:what:CurrDir", 2},
    {"KORVEX:what:Directory", 0},
    {"KORVEX:what:NotFound", 1},
    {"KORVEX:what:NotcurrDir", 2},
    {"KORVEX:string:Argument", 0},
    {"KORVEX:string:MissingNotSupported", 0},
    {"KORVEX:string:MustBeCharCellArrayOrString", 1},
    {"KORVEX:string:MustBeSingleString", 1},
    {"KORVEX:string:MustBeStringScalarOrCharacterVector", 0},
    {"KORVEX:string:Name", 0},
    {"KORVEX:services:cwdIsInvalid", 0},
    {"KORVEX:io:common:validation:InternalError", 1},
    {"KORVEX:io:filesystem:symlink:CannotCreateSymlinkInDestFolder", 2},
    {"KORVEX:io:filesystem:symlink:CannotCreateSymlinkWithName", 2},
    {"KORVEX:io:filesystem:symlink:NoTargetForBrokenSymlink", 1},
    {"KORVEX:virtualfileio:stream:pathComponentMissing", 1},
    {"KORVEX:virtualfileio:stream:writeNotAllowed", 0},
    {"KORVEX:virtualfileio:stream:zeroFolderConcept", 0},
    {"KORVEX:virtualfilesystem:changeEventsNotSupported", 1},
    {"KORVEX:virtualfilesystem:fileTooLarge", 1},
    {"KORVEX:virtualfilesystem:folderNotEmpty", 1},
    {"KORVEX:virtualfilesystem:internalError", 1},
    {"KORVEX:virtualfilesystem:invalidIRI", 1},
    {"KORVEX:virtualfilesystem:invalidLocation", 1},
    {"KORVEX:virtualfilesystem:ioError", 1},
    {"KORVEX:virtualfilesystem:noSpaceLeft", 1},
    {"KORVEX:virtualfilesystem:permissionDenied", 1},
    {"KORVEX:virtualfilesystem:readOnlyProvider", 1},
    {"KORVEX:virtualfilesystem:resourceAlreadyExists", 1},
    {"KORVEX:virtualfilesystem:resourceInUse", 1},
    {"KORVEX:virtualfilesystem:resourceNotFound", 1},
    {"KORVEX:virtualfilesystem:subscriptionError", 1},
    {"KORVEX:virtualfilesystem:unknownError", 1},
    {"KORVEX:virtualfilesystem:unsupportedOperation", 1},
    {"KORVEX:virtualfilesystem:unsupportedProvider", 1},
};

constexpr const char* narrowIdentifier = "KORVEX:io:common:validation:InternalError";

template <class Message, std::size_t... indices>
Message sampleWithArguments(std::index_sequence<indices...>) {
    return Message((static_cast<void>(indices), typename Message::Text())...);
}

/// Calls the visitor with a message of every class of the vocabulary.
template <class Visitor>
void forEachMessage(const Visitor& visitor) {
    [&visitor]<std::size_t... indices>(std::index_sequence<indices...>) {
        (visitor(sampleWithArguments<std::tuple_element_t<indices, KORVEX::Vocabulary>>(
             std::make_index_sequence<std::tuple_element_t<indices, KORVEX::Vocabulary>::argumentCount>())),
         ...);
    }
    (std::make_index_sequence<std::tuple_size_v<KORVEX::Vocabulary>>());
}

TEST(VocabularyTest, HasTheseIdentifiersWithSoManyArguments) {
    std::map<std::string, std::size_t> found;
    forEachMessage([&](const auto& message) { found[message.identifier()] = message.args.size(); });
    EXPECT_THAT(found, testing::ContainerEq(argumentsOfIdentifiers));
}

TEST(VocabularyTest, ArgumentsAreWideTextsButForOneMessage) {
    forEachMessage([](const auto& message) {
        const bool isNarrow = message.identifier() == narrowIdentifier;
        for (const MessageArgument& argument : message.args) {
            EXPECT_EQ(argument.tag(),
                      isNarrow ? MessageArgument::Tag::narrowText : MessageArgument::Tag::wideText)
                << message.identifier();
        }
    });
}

TEST(VocabularyTest, RoomIsMadeForTheArgumentsAndNoMore) {
    forEachMessage([](const auto& message) {
        EXPECT_EQ(message.args.capacity(), message.args.size()) << message.identifier();
    });
}

}  // namespace
