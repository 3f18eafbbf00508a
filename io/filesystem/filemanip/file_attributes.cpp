// What `fileattrib` asks and changes, and the grammar of its options.
#include "io/filesystem/filemanip/file_attributes.h"

#include <algorithm>
#include <boost/tokenizer.hpp>
#include <iterator>
#include <string_view>

#include "io/filesystem/filemanip/file_attributes_structure.h"
#include "platform/filesystem_shared.h"
#include "platform/foundation_filesystem.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"

namespace korvex::filemanip {

namespace core = korvex::io::filesystem::core;
using fl::filesystem::file_status;

namespace {

struct Attribute {
    char16_t letter;
    AttributeChange AttributeChanges::*change;
    file_status::perms bit;
};

constexpr Attribute attributesOfMode[] = {
    {u'a', &AttributeChanges::archive, file_status::archive_file},
    {u'h', &AttributeChanges::hidden, file_status::hidden_file},
    {u's', &AttributeChanges::system, file_status::system_file},
    {u'w', &AttributeChanges::write, file_status::owner_write},
};

/// The bits of the attributes that are to be changed so, together with the operation; `no_perms` for none.
file_status::perms maskOf(const AttributeChanges& changes, AttributeChange change,
                          file_status::perms operation) {
    file_status::perms mask = file_status::no_perms;
    for (const Attribute& attribute : attributesOfMode)
        if (changes.*attribute.change == change) mask = mask | operation | attribute.bit;
    return mask;
}

/// The folder that holds the path, which may end in a separator, with the separator behind it.
std::u16string_view holderOf(std::u16string_view path) {
    constexpr std::size_t none = std::u16string_view::npos;
    const char16_t separator = fl::filesystem::upath_constant::PATHNAME_SEPARATOR;
    const std::size_t end = path.find_last_not_of(separator);
    const std::size_t slash = end == none ? none : path.rfind(separator, end);
    return path.substr(0, slash == none ? 0 : slash + 1);
}

/// Without the modifier nothing below a folder is changed, not even below one that came into being after the
/// look for it.
void keepMatchesOnly(std::vector<std::u16string>& list) {
    if (list.empty()) return;
    const std::u16string holder(holderOf(list.front()));
    std::erase_if(list, [&](const std::u16string& path) { return holderOf(path) != holder; });
}

}  // namespace

// ------------------------------------------------------------------------------------------ options

// The signature is the interface's.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void FileAttributes::ParseOptArgs(std::vector<std::u16string> options) {
    if (options.empty() || options.size() > 3) return;
    // The mode is read last, on purpose: its error replaces the modifier's.
    if (options.size() == 3) parseModifier(options[2]);
    if (options.size() >= 2) warnOnUsers(options[1]);
    parseMode(options[0]);
}

/// Only the first character counts: "s", "S" and "sub" are the same.
void FileAttributes::parseModifier(const std::u16string& modifier) {
    if (modifier.find_first_of(u"sS") == 0) {
        recursive_ = true;
    } else {
        setStatusException("ModifierSyntaxError", KORVEX::FILEATTRIB::ModifierSyntaxError());
    }
}

/// There are no users to set on this platform.
void FileAttributes::warnOnUsers(const std::u16string& users) {
    if (!users.empty()) kxWarningMsgId(KORVEX::FILEATTRIB::SyntaxWarning());
}

void FileAttributes::parseMode(const std::u16string& mode) {
    using Separator = boost::char_separator<char16_t>;
    using Tokenizer = boost::tokenizer<Separator, std::u16string::const_iterator, std::u16string>;
    for (const std::u16string& token : Tokenizer(mode, Separator(u" "))) {
        if (takeModeToken(token)) continue;
        // What the tokens before have set stays set.
        setStatusException("ModeSyntaxError", KORVEX::FILEATTRIB::ModeSyntaxError());
        return;
    }
}

bool FileAttributes::takeModeToken(const std::u16string& token) {
    if (token.front() != u'+' && token.front() != u'-') return false;
    if (token.size() != 2) return false;
    const auto* const attribute = std::ranges::find(attributesOfMode, token[1], &Attribute::letter);
    if (attribute == std::end(attributesOfMode)) return false;
    changes_.*attribute->change = token.front() == u'+' ? AttributeChange::set : AttributeChange::clear;
    return true;
}

// ---------------------------------------------------------------------------------------------- run

// The signatures are the interface's.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
FileAttributes::Status FileAttributes::Process(Paths paths, Paths options) {
    ParseOptArgs(options);
    if (paths.size() == 1 && FilenameContainsNull(paths[0])) return status_;
    if (status_.code != Status::success) return status_;
    try {
        if (options.empty()) {
            queryAttributes(paths);
        } else {
            changeAttributes(paths);
        }
    } catch (...) {
        reportByKey("OSError");
    }
    return status_;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
FileAttributes::Status FileAttributes::Process(Paths) { return status_; }

void FileAttributes::expandWildcards(const std::u16string& text, Paths& list) {
    core::FileListCreator creator;
    creator.AddFiles(text, boost::none, false, true, false);
    status_ = creator.GetStatus();
    if (status_.code == Status::success) list = creator.GetFiles();
}

void FileAttributes::queryAttributes(const Paths& paths) {
    std::u16string text = paths.empty() || paths[0].empty() ? fl::filesystem::get_current_path() : paths[0];
    filesystemSharedFcns::relativeToAbsolute(text);
    filesystemSharedFcns::handleSingleDots(text);
    filesystemSharedFcns::handleDotDots(text);
    Paths list;
    if (filesystemSharedFcns::exists(text)) {
        list.push_back(text);
    } else {
        expandWildcards(text, list);
        if (list.empty()) {
            return setStatusException("CannotFindFile", KORVEX::FILEATTRIB::CannotFindFile());
        }
        // What the maker of the list complained of is forgotten, on purpose.
        status_.code = Status::success;
    }
    attributes_ = attributeStructure(list);
}

void FileAttributes::changeAttributes(const Paths& paths) {
    status_.code = Status::success;
    if (paths.empty()) return;
    std::u16string text = paths[0];
    // Unlike in a query dots are not resolved, on purpose.
    filesystemSharedFcns::relativeToAbsolute(text);
    bool exists = false;
    try {
        exists = fl::filesystem::exists(text);
    } catch (const fl::filesystem::AccessDenied&) {
        return reportByKey("CouldNotSetAttributes");
    }
    Paths list;
    if (!exists) {
        expandWildcards(text, list);
        if (!recursive_) keepMatchesOnly(list);
    } else if (recursive_) {
        core::FileListCreator creator;
        creator.AddFiles(text, boost::none, false, true, false);
        list = creator.GetFiles();  // as far as it got: its status is not looked at, on purpose
    } else {
        list.push_back(text);
    }
    namespace management = Velquist::PathManagement;
    const std::u16string named = management::GetStringFromIRI(management::GetIRIFromString(text));
    // What was there may have gone since, and what its name matches as a pattern was not meant.
    const bool isAnother = exists && recursive_ && !list.empty() && list.front() != named;
    if (list.empty() || isAnother) return reportByKey("CannotFindFile");
    applyChanges(list, exists ? list.front() : text);
}

/// Additions go before removals, file by file.
void FileAttributes::applyChanges(const Paths& list, const std::u16string& named) {
    const file_status::perms addMask = maskOf(changes_, AttributeChange::set, file_status::perms_add);
    const file_status::perms removeMask = maskOf(changes_, AttributeChange::clear, file_status::perms_remove);
    fl::filesystem::ListedFiles files(named, &list);
    try {
        for (const std::u16string& path : list) {
            if (addMask != file_status::no_perms) files.permissions(path, addMask);
            if (removeMask != file_status::no_perms) files.permissions(path, removeMask);
        }
    } catch (...) {
        // Files that are changed already stay changed; those behind are not touched.
        reportByKey("CouldNotSetAttributes");
    }
}

}  // namespace korvex::filemanip
