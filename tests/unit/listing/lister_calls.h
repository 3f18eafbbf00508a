// Calls of the lister, and what came back in a form that reads well in a failure.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "platform/listing.h"
#include "platform/path_management.h"
#include "runtime/text/encoding.h"

namespace korvex::tests {

using Texts = std::vector<std::string>;

inline std::string shown(std::u16string_view text) { return runtime::text::toDisplayBytes(text); }

/// The folder's text without what stands before `root`, and the name behind it.
inline std::string pathOf(const FileNameWithStatLight& entry, const std::u16string& root) {
    std::u16string folder = *entry.folder;
    if (folder.starts_with(root)) folder.erase(0, root.size());
    while (folder.starts_with(u'/'))
        folder.erase(0, 1);
    return shown(folder.empty() ? entry.name : folder + u'/' + entry.name);
}

/// The lister without a display, below one location.
class ListerCalls {
public:
    /// A path or a text with a scheme.
    explicit ListerCalls(std::u16string root) : root_(std::move(root)) {}

    /// What is found, in the order in which it is delivered.
    std::vector<FileNameWithStatLight> entries(std::u16string_view pattern) const {
        std::vector<FileNameWithStatLight> found;
        const auto folder = Velquist::PathManagement::GetIRIFromString(root_ + u'/');
        isFound = ioGetDirListRecursive(folder, pattern, found, u"prefix", isIri(), nullptr, u"/elsewhere");
        return found;
    }

    Texts paths(std::u16string_view pattern) const {
        Texts found;
        for (const FileNameWithStatLight& entry : entries(pattern))
            found.push_back(pathOf(entry, root_));
        return found;
    }

    bool isIri() const { return root_.find(u"://") != std::u16string::npos; }
    const std::u16string& root() const noexcept { return root_; }

    /// What the last call gave back.
    mutable bool isFound = false;

private:
    std::u16string root_;
};

/// One call of the display.
struct Displayed {
    Texts names;
    std::string folder;  ///< of the entries
    std::string text;
    bool isEmpty;

    bool operator==(const Displayed&) const = default;
};

inline void PrintTo(const Displayed& call, std::ostream* stream) {
    *stream << "in \"" << call.folder << "\" text \"" << call.text << (call.isEmpty ? "\" empty:" : "\":");
    for (const std::string& name : call.names)
        *stream << ' ' << name;
}

/// The display that remembers its calls; there is one, since displays are plain functions.
inline std::vector<Displayed>& displayCalls() {
    static std::vector<Displayed> calls;
    return calls;
}

inline void rememberDisplay(std::vector<FileNameWithStatLight>& entries, const std::u16string& text,
                            bool isEmpty) {
    Displayed call{{}, {}, shown(text), isEmpty};
    for (const FileNameWithStatLight& entry : entries) {
        call.names.push_back(shown(entry.name));
        call.folder = shown(*entry.folder);
    }
    displayCalls().push_back(std::move(call));
}

}  // namespace korvex::tests
