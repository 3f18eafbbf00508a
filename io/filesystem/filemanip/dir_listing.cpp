// `dir`: from one text to printed columns or a structure array. The order of the steps is the command's
// contract.
#include <cstddef>
#include <exception>
#include <ostream>
#include <string>
#include <vector>

#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/command_frame_limits.h"
#include "io/filesystem/filemanip/dir_listing_display.h"
#include "io/filesystem/filemanip/dir_listing_patterns.h"
#include "io/filesystem/filemanip/dir_listing_result.h"
#include "io/filesystem/filemanip/existence_queries_web_location.h"
#include "platform/filesystem_shared.h"
#include "platform/foundation_filesystem.h"
#include "platform/listing.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"
#include "platform/services_io.h"
#include "platform/storage_utility.h"
#include "platform/storage_vfs.h"
#include "platform/string_matrix.h"

namespace korvex::filemanip {

namespace utility = foundation::storage::utility;
namespace vfs = foundation::storage::vfs;
using foundation::core::except::Exception;
using services::io::operator<<;
using Velquist::PathManagement::GetIRIFromString;

namespace {

/// Paths of this length in 16-bit units, and longer ones, are refused.
constexpr std::size_t pathLimit = 1024;
constexpr const char* currentFolderIsInvalid = "KORVEX:dir:cwdIsInvalid";

std::u16string requireCurrentFolder() {
    try {
        return currentFolderText();
    } catch (const std::exception&) {
        raise(KORVEX::services::cwdIsInvalid(), currentFolderIsInvalid);
    }
}

/// A "file" location without an absolute path takes its canonical form; every other text stays.
std::u16string canonicalizeLocation(const std::u16string& text) {
    const vfs::AbsoluteIRI iri = GetIRIFromString(text);
    if (iri.getScheme() != u"file" || fl::filesystem::detail::is_absolute(vfs::fromAbsoluteIRI(iri)))
        return text;
    const vfs::Folder folder(iri, Velquist::KorvexStorageSystem::GetStorageSystemReference());
    return folder.getCanonicalLocation().toString();
}

void printMessageLine(const resource_core::BaseMsgID& message) {
    services::io::uout() << labelText(message) << "\n";
}

/// No warning and no error: a line on the output stream.
void reportNoMatch(const std::u16string& text, bool wasPattern) {
    wasPattern ? printMessageLine(KORVEX::dir::noPatternMatches(text))
               : printMessageLine(KORVEX::dir::fileOrDirNotFound(text));
}

/// One call of the command.
class DirListing {
public:
    DirListing(int nlhs, kxArray* plhs[]) : nlhs_(nlhs), isPrinted_(nlhs < 1), plhs_(plhs) {}

    /// With one argument or with none.
    void run(int nrhs, const kxArray* prhs[]);

private:
    enum class Step { done, next };

    void takeNoArgument();
    void takeArgument(const kxArray* argument);
    void takeLocation();
    void answerBadLocation();
    void refuseNulUnits() const;
    Step preparePattern();
    void prepareLocalPath();
    Step prepareLocation();
    void closeFolderWithStar();
    Step list();
    void prepareSecondPass();
    ListingDisplay chooseDisplay() const;
    void returnStructure() { plhs_[0] = matrix::to_korvex(makeListingStructure(entries_)); }

    const int nlhs_;
    const bool isPrinted_;
    kxArray** const plhs_;

    bool hasArgument_ = false;
    std::u16string typedText_;  ///< what messages quote
    std::u16string workPath_;   ///< the pattern, transformed step by step
    std::u16string currentText_;
    std::u16string folderPrefix_;  ///< handed to the lister
    std::size_t searchStart_ = 0;  ///< where the search for the first wildcard begins
    bool isIri_ = false;
    bool isHttp_ = false;
    bool appendedStar_ = false;  ///< the last `*` was not typed
    bool hasStar_ = false;
    bool isFound_ = false;
    std::vector<FileNameWithStatLight> entries_;
};

void DirListing::run(int nrhs, const kxArray* prhs[]) {
    hasArgument_ = nrhs > 0;
    currentText_ = requireCurrentFolder();
    hasArgument_ ? takeArgument(prhs[0]) : takeNoArgument();
    takeLocation();
    if (workPath_.empty()) return answerBadLocation();
    refuseNulUnits();
    if (hasArgument_ && preparePattern() == Step::done) return;

    utInterruptState::ThrowIfInterruptPending();
    {
        const utInterruptMode undisturbed(utInterruptMode::off);
        if (list() == Step::done) return;
    }
    utInterruptState::ThrowIfInterruptPending();

    if (!isPrinted_) return returnStructure();
    if (!isFound_) reportNoMatch(typedText_, hasStar_ && !appendedStar_);
}

void DirListing::takeNoArgument() {
    typedText_ = u"*";
    folderPrefix_ = currentText_;
    workPath_ = fl::filesystem::absolute(u"*", currentText_);
    // A wildcard in the name of the current folder is none.
    searchStart_ = workPath_.rfind(fl::filesystem::upath_constant::PATHNAME_SEPARATOR);
}

void DirListing::takeArgument(const kxArray* argument) {
    if (!Velquist::String::isScalarText(argument, true, false)) {
        raise(KORVEX::string::MustBeSingleString(labelText(KORVEX::string::Name())),
              "KORVEX:dir:invalidInputType");
    }
    typedText_ = textOfArgument(argument, true);
    workPath_ = typedText_;
    folderPrefix_ = typedText_;
}

/// A location with wrong slashes or dot segments is never listed: its text is taken away.
void DirListing::takeLocation() {
    if (!vfs::hasIRIPrefix(workPath_)) return;
    isIri_ = utility::hasValidNumberOfSlashes(workPath_) &&
             !filesystemSharedFcns::containsDotOrDotDotExpression(workPath_);
    if (isIri_) return;
    typedText_ = workPath_;
    workPath_.clear();
}

void DirListing::answerBadLocation() {
    // On purpose a bad location has its line printed also when an output is asked for, and twice otherwise.
    if (vfs::hasIRIPrefix(typedText_)) reportNoMatch(typedText_, false);
    isPrinted_ ? reportNoMatch(typedText_, false) : returnStructure();
}

void DirListing::refuseNulUnits() const {
    const bool hasEscapedNul = vfs::hasIRIPrefix(workPath_) && workPath_.find(u"%00") != std::u16string::npos;
    if (hasEscapedNul || workPath_.find(u'\0') != std::u16string::npos) {
        raise(KORVEX::FileManip::NullCharacterInName());
    }
}

DirListing::Step DirListing::preparePattern() {
    validateRecursiveGlobs(workPath_);
    if (isIri_) {
        if (prepareLocation() == Step::done) return Step::done;
    } else {
        prepareLocalPath();
    }
    if (!isHttp_) closeFolderWithStar();
    expandRecursiveTail(workPath_);
    return Step::next;
}

void DirListing::prepareLocalPath() {
    filesystemSharedFcns::replaceSlashesOnWindows(workPath_);
    utility::handleWindowsTrailingDotsAndSpaces(workPath_);
    if (workPath_.size() >= pathLimit) raise(KORVEX::dir::pathnameTooLong(workPath_));
    folderPrefix_ = displayFolderPrefix(workPath_);
    workPath_ = makeAbsoluteAroundWildcard(workPath_, currentText_);
    filesystemSharedFcns::handleSingleDots(workPath_);
    filesystemSharedFcns::handleDotDots(workPath_);
    utility::convertWindowsBackslashes(workPath_);
}

/// A location that does not parse gets a second try with a slash at its end, and one that parses in neither
/// form is still listed when an output is asked for.
DirListing::Step DirListing::prepareLocation() {
    for (const bool isSecondPass : {false, true}) {
        if (isSecondPass) workPath_ += u'/';
        try {
            workPath_ = canonicalizeLocation(workPath_);
            break;
        } catch (...) {
            if (!isSecondPass || !isPrinted_) continue;
            printMessageLine(KORVEX::virtualfilesystem::invalidIRI(typedText_));
            return Step::done;
        }
    }
    isHttp_ = isHttpLocation(workPath_);
    return Step::next;
}

void DirListing::closeFolderWithStar() {
    appendedStar_ = filesystemSharedFcns::isPathSeparator(workPath_.back());
    if (appendedStar_) workPath_ += u'*';
}

DirListing::Step DirListing::list() {
    for (const bool isSecondPass : {false, true}) {
        if (isSecondPass) prepareSecondPass();
        const PatternCut cut = cutPattern(workPath_, searchStart_, isIri_, isHttp_, currentText_);
        hasStar_ = cut.firstStar != PatternCut::none;
        try {
            isFound_ = ioGetDirListRecursive(GetIRIFromString(cut.folderPart), cut.patternPart, entries_,
                                             folderPrefix_, isIri_, chooseDisplay(), currentText_);
            break;
        } catch (const vfs::InvalidIRIException&) {
            if (!isPrinted_ || !isIri_ || !isSecondPass) continue;
            printMessageLine(KORVEX::virtualfilesystem::invalidIRI(typedText_));
            return Step::done;
        } catch (const vfs::UnsupportedIRISchemeException&) {
            if (!isPrinted_) break;
            printMessageLine(KORVEX::virtualfilesystem::unsupportedProvider(typedText_));
            return Step::done;
        } catch (const Exception<KORVEX::services::cwdIsInvalid>&) {
            raise(KORVEX::services::cwdIsInvalid(), currentFolderIsInvalid);
        } catch (const Exception<KORVEX::dir::SuccessiveGlobs>&) {
            raise(KORVEX::dir::SuccessiveGlobs());
        }
    }
    return Step::next;
}

void DirListing::prepareSecondPass() {
    workPath_ += u'/';
    folderPrefix_ = workPath_;
    if (!isHttp_) closeFolderWithStar();
    expandRecursiveTail(workPath_);
}

ListingDisplay DirListing::chooseDisplay() const {
    // On purpose a negative number shows no names, although it is no request for a structure either.
    if (nlhs_ != 0) return nullptr;
    const bool needsHeaders = hasArgument_ && hasWildcardInFolderPart(workPath_, isIri_);
    return needsHeaders ? displayWithHeaders : displayPlain;
}

}  // namespace

KX_MODULE_ENTRY void bnFullDirFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
    checkArgumentCounts(limits::fullDir, nlhs, nrhs);
    DirListing(nlhs, plhs).run(nrhs, prhs);
}

}  // namespace korvex::filemanip
