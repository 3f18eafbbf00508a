// The text by which a folder of the search path is asked for, and which locations it names.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/path_management.h"
#include "runtime/paths/path_style.h"

namespace korvex::runtime::dispatcher {

enum class CaseRule { exact, ignored };

/// What a policy means on disks of a style.
CaseRule caseRuleOf(Velquist::PathManagement::FilenameMatchingPolicy policy, paths::PathStyle style);

bool areSameTexts(std::u16string_view a, std::u16string_view b, CaseRule rule);

/// An absolute path stands for itself, any other text for all locations that end in its components. Dots are
/// components like others, which no location has.
class PathTail {
public:
    PathTail(std::u16string_view text, paths::PathStyle style);

    bool names(const foundation::storage::vfs::AbsoluteIRI& location, CaseRule rule) const;
    /// The last component; empty when there is none.
    std::u16string_view lastName() const noexcept;

private:
    bool isAbsolute_;
    std::u16string host_;
    /// Each component behind a "/".
    std::u16string path_;
    std::size_t components_;
};

}  // namespace korvex::runtime::dispatcher
