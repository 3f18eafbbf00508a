// The texts of the command host: what its statements, operators, functions and commands complain of.
//
// An entry is a whole sentence, or a part that another entry takes as its argument: a noun of the grammar, a
// reason, an end of a sentence. Which identifier an error carries is said where it is raised: one identifier
// may have many texts. `HostVocabulary` lists all of them.
#pragma once

#include "platform/message_identifiers.h"

namespace KORVEX::host {
using allocationFailed = resource_core::Message<"KORVEX:host:allocationFailed", 0>;
using arrayTooLarge = resource_core::Message<"KORVEX:host:arrayTooLarge", 0>;
using assertionFailed = resource_core::Message<"KORVEX:host:assertionFailed", 1>;
using blockNotClosed = resource_core::Message<"KORVEX:host:blockNotClosed", 1>;
using blocksNestedTooDeeply = resource_core::Message<"KORVEX:host:blocksNestedTooDeeply", 0>;
using bracketNotClosed = resource_core::Message<"KORVEX:host:bracketNotClosed", 1>;
using bracketsNestedTooDeeply = resource_core::Message<"KORVEX:host:bracketsNestedTooDeeply", 0>;
using cannotAddPackage = resource_core::Message<"KORVEX:host:cannotAddPackage", 2>;
using cannotAddToPath = resource_core::Message<"KORVEX:host:cannotAddToPath", 2>;
using cannotChangeFolder = resource_core::Message<"KORVEX:host:cannotChangeFolder", 2>;
using cannotCompare = resource_core::Message<"KORVEX:host:cannotCompare", 3>;
using cannotLoad = resource_core::Message<"KORVEX:host:cannotLoad", 2>;
using cellContentsOnly = resource_core::Message<"KORVEX:host:cellContentsOnly", 1>;
using cellRowsDiffer = resource_core::Message<"KORVEX:host:cellRowsDiffer", 2>;
using characterWithoutMeaning = resource_core::Message<"KORVEX:host:characterWithoutMeaning", 1>;
using charMatrixOnly = resource_core::Message<"KORVEX:host:charMatrixOnly", 0>;
using closesNothing = resource_core::Message<"KORVEX:host:closesNothing", 1>;
using codeUnitOutOfRange = resource_core::Message<"KORVEX:host:codeUnitOutOfRange", 1>;
using codeUnitsNotNumbers = resource_core::Message<"KORVEX:host:codeUnitsNotNumbers", 1>;
using columnsDiffer = resource_core::Message<"KORVEX:host:columnsDiffer", 2>;
using commandNotExported = resource_core::Message<"KORVEX:host:commandNotExported", 2>;
using commandsNotLoaded = resource_core::Message<"KORVEX:host:commandsNotLoaded", 1>;
using conditionNotTruth = resource_core::Message<"KORVEX:host:conditionNotTruth", 1>;
using contentsNeedIndex = resource_core::Message<"KORVEX:host:contentsNeedIndex", 0>;
using continuationWithoutLine = resource_core::Message<"KORVEX:host:continuationWithoutLine", 0>;
using differentSizes = resource_core::Message<"KORVEX:host:differentSizes", 3>;
using emptyArrayTooLarge = resource_core::Message<"KORVEX:host:emptyArrayTooLarge", 0>;
using differentTextSizes = resource_core::Message<"KORVEX:host:differentTextSizes", 3>;
using endOutsideOfBlock = resource_core::Message<"KORVEX:host:endOutsideOfBlock", 0>;
using equalSignIsNoComparison = resource_core::Message<"KORVEX:host:equalSignIsNoComparison", 0>;
using fieldsDiffer = resource_core::Message<"KORVEX:host:fieldsDiffer", 0>;
using folderNotNamed = resource_core::Message<"KORVEX:host:folderNotNamed", 0>;
using givesNoValue = resource_core::Message<"KORVEX:host:givesNoValue", 1>;
using hiddenByVariable = resource_core::Message<"KORVEX:host:hiddenByVariable", 1>;
using identifierNotValid = resource_core::Message<"KORVEX:host:identifierNotValid", 1>;
using indexNotOneNumber = resource_core::Message<"KORVEX:host:indexNotOneNumber", 1>;
using indexNotWhole = resource_core::Message<"KORVEX:host:indexNotWhole", 1>;
using indexTooLarge = resource_core::Message<"KORVEX:host:indexTooLarge", 2>;
using joinedMatricesOnly = resource_core::Message<"KORVEX:host:joinedMatricesOnly", 0>;
using lastColumn = resource_core::Message<"KORVEX:host:lastColumn", 1>;
using lastElement = resource_core::Message<"KORVEX:host:lastElement", 1>;
using lastPage = resource_core::Message<"KORVEX:host:lastPage", 1>;
using lastRow = resource_core::Message<"KORVEX:host:lastRow", 1>;
using logicalOfNumbersOnly = resource_core::Message<"KORVEX:host:logicalOfNumbersOnly", 1>;
using mixedClasses = resource_core::Message<"KORVEX:host:mixedClasses", 0>;
using mustBeEqualOperator = resource_core::Message<"KORVEX:host:mustBeEqualOperator", 1>;
using nanIsNoTruth = resource_core::Message<"KORVEX:host:nanIsNoTruth", 0>;
using needed = resource_core::Message<"KORVEX:host:needed", 1>;
using neededAtEnd = resource_core::Message<"KORVEX:host:neededAtEnd", 1>;
using noArithmetic = resource_core::Message<"KORVEX:host:noArithmetic", 1>;
using noColumn = resource_core::Message<"KORVEX:host:noColumn", 0>;
using noElement = resource_core::Message<"KORVEX:host:noElement", 0>;
using noHelp = resource_core::Message<"KORVEX:host:noHelp", 1>;
using noHelpPart = resource_core::Message<"KORVEX:host:noHelpPart", 3>;
using noHelpParts = resource_core::Message<"KORVEX:host:noHelpParts", 1>;
using noPage = resource_core::Message<"KORVEX:host:noPage", 0>;
using noRanges = resource_core::Message<"KORVEX:host:noRanges", 0>;
using noRow = resource_core::Message<"KORVEX:host:noRow", 0>;
using noSuchField = resource_core::Message<"KORVEX:host:noSuchField", 1>;
using noSuchPackage = resource_core::Message<"KORVEX:host:noSuchPackage", 1>;
using nounArgumentSeparator = resource_core::Message<"KORVEX:host:nounArgumentSeparator", 1>;
using nounConditionEnd = resource_core::Message<"KORVEX:host:nounConditionEnd", 0>;
using nounElementSeparator = resource_core::Message<"KORVEX:host:nounElementSeparator", 1>;
using nounField = resource_core::Message<"KORVEX:host:nounField", 0>;
using nounLoopHead = resource_core::Message<"KORVEX:host:nounLoopHead", 0>;
using nounStatementEnd = resource_core::Message<"KORVEX:host:nounStatementEnd", 0>;
using nounTarget = resource_core::Message<"KORVEX:host:nounTarget", 0>;
using nounValue = resource_core::Message<"KORVEX:host:nounValue", 0>;
using nounVariable = resource_core::Message<"KORVEX:host:nounVariable", 0>;
using numberNotReadable = resource_core::Message<"KORVEX:host:numberNotReadable", 0>;
using oneElementNeeded = resource_core::Message<"KORVEX:host:oneElementNeeded", 2>;
using onlyWholeVariables = resource_core::Message<"KORVEX:host:onlyWholeVariables", 0>;
using operandNotTruth = resource_core::Message<"KORVEX:host:operandNotTruth", 2>;
using outputNotGiven = resource_core::Message<"KORVEX:host:outputNotGiven", 1>;
using packageForm = resource_core::Message<"KORVEX:host:packageForm", 0>;
using packageNeedsName = resource_core::Message<"KORVEX:host:packageNeedsName", 0>;
using partOutsideOfBlock = resource_core::Message<"KORVEX:host:partOutsideOfBlock", 2>;
using partTwice = resource_core::Message<"KORVEX:host:partTwice", 2>;
using reasonFolderNotEntered = resource_core::Message<"KORVEX:host:reasonFolderNotEntered", 0>;
using reasonFolderNotThere = resource_core::Message<"KORVEX:host:reasonFolderNotThere", 0>;
using reasonNoAnswer = resource_core::Message<"KORVEX:host:reasonNoAnswer", 0>;
using reasonNoFolder = resource_core::Message<"KORVEX:host:reasonNoFolder", 0>;
using reasonNoLocalFile = resource_core::Message<"KORVEX:host:reasonNoLocalFile", 0>;
using reasonNoSourceFile = resource_core::Message<"KORVEX:host:reasonNoSourceFile", 0>;
using reasonNotFoundByName = resource_core::Message<"KORVEX:host:reasonNotFoundByName", 0>;
using reasonNotLocal = resource_core::Message<"KORVEX:host:reasonNotLocal", 0>;
using reasonNotLookedAt = resource_core::Message<"KORVEX:host:reasonNotLookedAt", 0>;
using reasonNotThere = resource_core::Message<"KORVEX:host:reasonNotThere", 0>;
using repeatedMatrixOnly = resource_core::Message<"KORVEX:host:repeatedMatrixOnly", 0>;
using reshapedCountDiffers = resource_core::Message<"KORVEX:host:reshapedCountDiffers", 1>;
using rowsDiffer = resource_core::Message<"KORVEX:host:rowsDiffer", 2>;
using signNeedsNumber = resource_core::Message<"KORVEX:host:signNeedsNumber", 1>;
using singleOperator = resource_core::Message<"KORVEX:host:singleOperator", 2>;
using sizeNotOneNumber = resource_core::Message<"KORVEX:host:sizeNotOneNumber", 1>;
using sizeNotWhole = resource_core::Message<"KORVEX:host:sizeNotWhole", 1>;
using sizesNotNumbers = resource_core::Message<"KORVEX:host:sizesNotNumbers", 1>;
using sourceFileNotNamed = resource_core::Message<"KORVEX:host:sourceFileNotNamed", 0>;
using stringsJoinRows = resource_core::Message<"KORVEX:host:stringsJoinRows", 1>;
using structureFieldsOnly = resource_core::Message<"KORVEX:host:structureFieldsOnly", 1>;
using syntaxAt = resource_core::Message<"KORVEX:host:syntaxAt", 3>;
using textNeeded = resource_core::Message<"KORVEX:host:textNeeded", 1>;
using textNotClosed = resource_core::Message<"KORVEX:host:textNotClosed", 1>;
using tooManyOutputs = resource_core::Message<"KORVEX:host:tooManyOutputs", 1>;
using undefinedName = resource_core::Message<"KORVEX:host:undefinedName", 1>;
using unitsOfTextOnly = resource_core::Message<"KORVEX:host:unitsOfTextOnly", 1>;
using unknownClass = resource_core::Message<"KORVEX:host:unknownClass", 0>;
using warningForm = resource_core::Message<"KORVEX:host:warningForm", 0>;
using withoutTexts = resource_core::Message<"KORVEX:host:withoutTexts", 1>;
using wordIsNoValue = resource_core::Message<"KORVEX:host:wordIsNoValue", 1>;
using wordIsNoVariable = resource_core::Message<"KORVEX:host:wordIsNoVariable", 1>;
using wordsBehindNoCommand = resource_core::Message<"KORVEX:host:wordsBehindNoCommand", 1>;
}  // namespace KORVEX::host

namespace KORVEX {

/// Every message class above.
using HostVocabulary = std::tuple<
    host::allocationFailed, host::arrayTooLarge, host::assertionFailed, host::blockNotClosed,
    host::blocksNestedTooDeeply, host::bracketNotClosed, host::bracketsNestedTooDeeply,
    host::cannotAddPackage, host::cannotAddToPath, host::cannotChangeFolder, host::cannotCompare,
    host::cannotLoad, host::cellContentsOnly, host::cellRowsDiffer, host::characterWithoutMeaning,
    host::charMatrixOnly, host::closesNothing, host::codeUnitOutOfRange, host::codeUnitsNotNumbers,
    host::columnsDiffer, host::commandNotExported, host::commandsNotLoaded, host::conditionNotTruth,
    host::contentsNeedIndex, host::continuationWithoutLine, host::differentSizes, host::emptyArrayTooLarge,
    host::differentTextSizes, host::endOutsideOfBlock, host::equalSignIsNoComparison, host::fieldsDiffer,
    host::folderNotNamed, host::givesNoValue, host::hiddenByVariable, host::identifierNotValid,
    host::indexNotOneNumber, host::indexNotWhole, host::indexTooLarge, host::joinedMatricesOnly,
    host::lastColumn, host::lastElement, host::lastPage, host::lastRow, host::logicalOfNumbersOnly,
    host::mixedClasses, host::mustBeEqualOperator, host::nanIsNoTruth, host::needed, host::neededAtEnd,
    host::noArithmetic, host::noColumn, host::noElement, host::noHelp, host::noHelpPart, host::noHelpParts,
    host::noPage, host::noRanges, host::noRow, host::noSuchField, host::noSuchPackage,
    host::nounArgumentSeparator, host::nounConditionEnd, host::nounElementSeparator, host::nounField,
    host::nounLoopHead, host::nounStatementEnd, host::nounTarget, host::nounValue, host::nounVariable,
    host::numberNotReadable, host::oneElementNeeded, host::onlyWholeVariables, host::operandNotTruth,
    host::outputNotGiven, host::packageForm, host::packageNeedsName, host::partOutsideOfBlock,
    host::partTwice, host::reasonFolderNotEntered, host::reasonFolderNotThere, host::reasonNoAnswer,
    host::reasonNoFolder, host::reasonNoLocalFile, host::reasonNoSourceFile, host::reasonNotFoundByName,
    host::reasonNotLocal, host::reasonNotLookedAt, host::reasonNotThere, host::repeatedMatrixOnly,
    host::reshapedCountDiffers, host::rowsDiffer, host::signNeedsNumber, host::singleOperator,
    host::sizeNotOneNumber, host::sizeNotWhole, host::sizesNotNumbers, host::sourceFileNotNamed,
    host::stringsJoinRows, host::structureFieldsOnly, host::syntaxAt, host::textNeeded, host::textNotClosed,
    host::tooManyOutputs, host::undefinedName, host::unitsOfTextOnly, host::unknownClass, host::warningForm,
    host::withoutTexts, host::wordIsNoValue, host::wordIsNoVariable, host::wordsBehindNoCommand>;

}  // namespace KORVEX
