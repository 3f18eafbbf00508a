// What the interpreter is told when folders and source files have gone.
#include "io/filesystem/filemanip/DirManip_search_path.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/dispatcher.h"
#include "platform/foundation_filesystem.h"
#include "platform/kx.h"
#include "platform/message_catalog.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"

namespace korvex::filemanip {

namespace PathManagement = Velquist::PathManagement;
namespace vfs = foundation::storage::vfs;
using foundation::core::except::Notification;
using vfs::AbsoluteIRI;
using vfs::CanonicalAbsoluteIRI;

namespace {

constexpr std::string_view sourceFile = "io/filesystem/filemanip/DirManip_search_path";

/// Functions are read from source files and from live code.
constexpr std::u16string_view sourceExtensions[] = {u"k", u"klx"};

std::u16string nativePath(const AbsoluteIRI& location) { return vfs::fromAbsoluteIRI(location); }

bool isSourceExtension(std::u16string_view extension) {
    return std::any_of(std::begin(sourceExtensions), std::end(sourceExtensions), [&](const auto& known) {
        return fl::i18n::detail::compare(extension.data(), extension.size(), known.data(), known.size(),
                                         fl::i18n::detail::case_insensitive) == 0;
    });
}

void tellEntriesAbove(const AbsoluteIRI& location) {
    PathManagement::NotifyUpstreamPathEntriesOfPossibleSpecialSubfolderChanges(location,
                                                                               GetPerKVMEventManager());
}

void warnOfRemoval(const AbsoluteIRI& location) {
    kxWarningMsgId(KORVEX::RMDIR::RemovedFromPath(nativePath(location)));
}

/// A plain comparison of characters on purpose, without regard for separators: "/a/b" takes "/a/bc", too.
bool belongsToTree(const AbsoluteIRI& entry, const AbsoluteIRI& root) {
    return entry == root || entry.toString().starts_with(root.toString());
}

}  // namespace

void clearKFunction(const AbsoluteIRI& location) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, sourceFile, __LINE__);
    if (location.getScheme() != u"file") return;
    const std::u16string path = nativePath(location);
    if (isSourceExtension(fl::filesystem::detail::extract_extension(path))) {
        kdClearFunctionsByName(path.c_str());
    }
}

void updateWindowsPath(const AbsoluteIRI& location) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, sourceFile, __LINE__);
    auto& manager = Kdispatcher::getDispatcher().GetMainSearchPathManager();
    const AbsoluteIRI removed[] = {location};
    const Notification note = PathManagement::RemoveIRIsFromKorvexPath(removed, manager);
    if (note.empty()) warnOfRemoval(location);
    tellEntriesAbove(location);
    const bool isOnNetworkShare = nativePath(location).starts_with(uR"(\\)");
    if (isOnNetworkShare) manager.refresh(false);
}

void updateUnixPath(const std::vector<AbsoluteIRI>&) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, sourceFile, __LINE__);
}

std::vector<CanonicalAbsoluteIRI> removeFolderTreeFromPath(const AbsoluteIRI& root, bool warn) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, sourceFile, __LINE__);
    auto& manager = Kdispatcher::getDispatcher().GetMainSearchPathManager();
    std::vector<CanonicalAbsoluteIRI> removed;
    for (const CanonicalAbsoluteIRI& entry : manager.getPathEntries()) {
        if (!belongsToTree(entry, root)) continue;
        removed.push_back(entry);
        tellEntriesAbove(entry);
        if (warn) warnOfRemoval(entry);
    }
    if (!removed.empty()) {
        Notification ignored;
        manager.removeEntries(removed, ignored);
    }
    return removed;
}

}  // namespace korvex::filemanip
