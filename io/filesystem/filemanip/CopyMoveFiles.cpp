// What `copyfile` and `movefile` do differently, and the options that they share.
#include "io/filesystem/filemanip/CopyMoveFiles.h"

#include <array>

#include "io/filesystem/filemanip/CopyMoveFiles_options.h"
#include "io/filesystem/filemanip/CopyMoveFiles_steps.h"
#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/message_identifiers.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;

// --- options ---

bool isForceOption(const std::vector<std::u16string>& options, std::size_t index, bool isForRemoval) {
    const std::u16string& text = options[index];
    if (isForRemoval) return text == u"S" || text == u"s";
    return text == u"F" || text == u"f" || text == u"writable";
}

boost::optional<LinkBehavior> parseLinkBehavior(const std::vector<std::u16string>& options,
                                                std::size_t index) {
    struct Word {
        std::u16string_view text;
        LinkBehavior behavior;
    };
    constexpr std::array<Word, 3> words{{{u"preserve", LinkBehavior::preserve},
                                         {u"resolve", LinkBehavior::resolve},
                                         {u"osdefault", LinkBehavior::osdefault}}};
    for (const Word& word : words) {
        if (options[index] == word.text) return word.behavior;
    }
    return boost::none;
}

void CopyMoveFiles::ParseOptArgs(std::vector<std::u16string> options) {
    force_ = false;
    if (options.empty()) return;
    if (isForceOption(options, 0, false)) {
        force_ = true;
        if (options.size() == 1) return;
        const boost::optional<LinkBehavior> behavior = parseLinkBehavior(options, 1);
        if (!behavior) throwInvalidOption(options[1]);
        setLinkBehavior(*behavior);
        return;
    }
    const boost::optional<LinkBehavior> behavior = parseLinkBehavior(options, 0);
    if (!behavior) throwInvalidOption(options[0]);
    setLinkBehavior(*behavior);
    if (options.size() == 1) return;
    if (!isForceOption(options, 1, false)) throwInvalidOption(options[1]);
    force_ = true;
}

void CopyMoveFiles::throwInvalidOption(const std::u16string& text) const {
    if (isCopy()) raise(KORVEX::COPYFILE::InvalidOption(text));
    raise(KORVEX::MOVEFILE::InvalidOption(text));
}

CopyMoveFiles::Status CopyMoveFiles::Process(std::vector<std::u16string> paths,
                                             std::vector<std::u16string> options) {
    ParseOptArgs(std::move(options));
    return Process(std::move(paths));
}

// --- copy ---

void CopyFiles::reportByKey(const char* key) { SetErrorStatus("COPYFILE", key); }

std::string CopyFiles::GetErrorMsgIdPrefix() { return isIRI_ ? "virtualfilesystem" : "COPYFILE"; }

void CopyFiles::doVfsOperation(const Item& source, const Item& destination, bool overwrite) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    trace(severity::argument,
          [&](auto& record) { record << " srcItem=" << source << " destItem=" << destination; });
    const TransferRequest request{destination, false, true, overwrite};
    boost::apply_visitor([&](const auto& handle) { performOperation(handle, request); }, source);
}

bool CopyFiles::processFolder(const Folder& source, const Folder& destination, bool) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    trace(severity::argument,
          [&](auto& record) { record << " srcFolder=" << source << " destFolder=" << destination; });
    return callVfsAPI(source, destination);
}

void CopyFiles::RefreshAffectedDirectories(std::u16string, std::u16string destinationPath) {
    MarkDirOutOfDate(destinationPath);
    RequestPathRefresh();
}

// --- move ---

void MoveFiles::reportByKey(const char* key) { SetErrorStatus("MOVEFILE", key); }

std::string MoveFiles::GetErrorMsgIdPrefix() { return isIRI_ ? "virtualfilesystem" : "MOVEFILE"; }

void MoveFiles::doVfsOperation(const Item& source, const Item& destination, bool overwrite) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    trace(severity::argument,
          [&](auto& record) { record << " srcItem=" << source << " destItem=" << destination; });
    // A protected source is moved all the same when force is asked for, and stays protected at its new place.
    bool wasReadOnly = false;
    if (force_) {
        try {
            wasReadOnly = !vfs::isWritable(source);
        } catch (const std::exception&) {
            traceCurrentException();
        }
        // A link goes itself: what it leads to stays where it is, and protected.
        if (isLink(source)) {
            wasReadOnly = false;
        } else {
            makeWritable(source);
        }
    }
    const TransferRequest request{destination, wasReadOnly, false, overwrite};
    boost::apply_visitor([&](const auto& handle) { performOperation(handle, request); }, source);
}

bool MoveFiles::processFolder(const Folder& source, const Folder& destination, bool destinationExists) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    trace(severity::argument,
          [&](auto& record) { record << " srcFolder=" << source << " destFolder=" << destination; });
    return callVfsAPI(source, destinationExists ? Folder(destination, source.getName()) : destination);
}

void MoveFiles::RefreshAffectedDirectories(std::u16string sourcePath, std::u16string destinationPath) {
    MarkDirOutOfDate(sourcePath);
    MarkDirOutOfDate(destinationPath);
    RequestPathRefresh();
}

}  // namespace korvex::filemanip
