// Clean-ups of path text: a path is its root and the components behind it, each with the separators in front.
#include "runtime/paths/path_text.h"

#include <algorithm>
#include <vector>

namespace korvex::runtime::paths {

namespace {

constexpr std::u16string_view longUncPrefix = u"\\\\?\\UNC\\";
constexpr std::size_t longPrefixLength = 4;

/// A component with the separators in front of it. Separators at the end of a path stand in front of an empty
/// name.
struct Component {
    std::u16string_view separators;
    std::u16string_view name;
};

bool isDot(std::u16string_view name) noexcept { return name == u"."; }
bool isDotDot(std::u16string_view name) noexcept { return name == u".."; }

/// Where the component that begins at `begin` ends.
std::size_t endOfName(std::u16string_view path, std::size_t begin, PathStyle style) noexcept {
    while (begin < path.size() && !isSeparator(path[begin], style))
        ++begin;
    return begin;
}

std::size_t endOfSeparators(std::u16string_view path, std::size_t begin, PathStyle style) noexcept {
    while (begin < path.size() && isSeparator(path[begin], style))
        ++begin;
    return begin;
}

/// The end of the component at `begin` and of the one separator behind it.
std::size_t endWithSeparator(std::u16string_view path, std::size_t begin, PathStyle style) noexcept {
    return std::min(endOfName(path, begin, style) + 1, path.size());
}

std::size_t driveRootLength(std::u16string_view path, std::size_t begin, PathStyle style) noexcept {
    const std::size_t behindDrive = begin + 2;
    const bool isRooted = behindDrive < path.size() && isSeparator(path[behindDrive], style);
    return isRooted ? behindDrive + 1 : behindDrive;
}

std::vector<Component> componentsOf(std::u16string_view path, PathStyle style) {
    std::vector<Component> components;
    std::size_t begin = rootLength(path, style);
    while (begin < path.size()) {
        const std::size_t nameBegin = endOfSeparators(path, begin, style);
        const std::size_t nameEnd = endOfName(path, nameBegin, style);
        components.push_back(
            {path.substr(begin, nameBegin - begin), path.substr(nameBegin, nameEnd - nameBegin)});
        begin = nameEnd;
    }
    return components;
}

/// A path from the root of `path` and what was kept of the components behind it.
std::u16string rebuilt(std::u16string_view path, const std::vector<Component>& components, PathStyle style) {
    std::u16string result(path.substr(0, rootLength(path, style)));
    for (const Component& component : components)
        result.append(component.separators).append(component.name);
    return result;
}

/// The components that a clean-up keeps, in order.
class KeptComponents {
public:
    KeptComponents(std::u16string_view path, PathStyle style) : path_(path), style_(style) {
        // Of the long form also a drive without a separator has nothing above it.
        const std::size_t root = rootLength(path, style);
        isRooted_ = isAbsolute(path, style) || (root > 0 && isSeparator(path[root - 1], style));
    }

    void keep(Component component) {
        // What became the first component needs no separator: the root has one, and a relative path none.
        if (kept_.empty() && hasRemoved_) component.separators = {};
        kept_.push_back(component);
    }

    void remove() noexcept { hasRemoved_ = true; }

    /// Removes the component in front of a "..". False when the ".." has to stay.
    bool removeLast() {
        hasRemoved_ = true;
        while (!kept_.empty() && isDot(kept_.back().name))
            kept_.pop_back();
        if (kept_.empty()) return isRooted_;
        if (isDotDot(kept_.back().name)) return false;
        const bool wasLikeDrive = startsWithDrive(kept_.back().name, style_);
        kept_.pop_back();
        // The dot that has kept it from being a drive has nothing more to do.
        if (wasLikeDrive && kept_.size() == 1 && isDot(kept_.front().name)) kept_.pop_back();
        return true;
    }

    std::u16string path() const {
        std::u16string result = rebuilt(path_, kept_, style_);
        if (result.empty() && !path_.empty()) return u".";
        // A name that reads as a drive must not become one: the path would lead elsewhere.
        const bool hasGainedRoot = rootLength(path_, style_) == 0 && rootLength(result, style_) > 0;
        if (hasGainedRoot) result.insert(0, {u'.', preferredSeparator(style_)});
        return result;
    }

private:
    std::u16string_view path_;
    PathStyle style_;
    std::vector<Component> kept_;
    bool isRooted_;
    bool hasRemoved_ = false;
};

/// A component without what the system does not store: any dots and blanks at its end, or a single dot only.
std::u16string_view asStored(std::u16string_view name, bool isLast) noexcept {
    if (isDot(name) || isDotDot(name)) return name;
    if (isLast) return name.substr(0, name.find_last_not_of(u". ") + 1);
    const bool endsInSingleDot = name.ends_with(u'.') && !name.ends_with(u"..");
    return endsInSingleDot ? name.substr(0, name.size() - 1) : name;
}

/// Index of the dot before the extension, or npos.
std::size_t extensionDot(std::u16string_view fileName) noexcept {
    return isDot(fileName) || isDotDot(fileName) ? std::u16string_view::npos : fileName.rfind(u'.');
}

}  // namespace

bool startsWithTwoSeparators(std::u16string_view path, PathStyle style) noexcept {
    return style == PathStyle::windows && path.size() >= 2 && isSeparator(path[0], style) &&
           isSeparator(path[1], style);
}

std::size_t rootLength(std::u16string_view path, PathStyle style) noexcept {
    if (style == PathStyle::posix) return path.starts_with(u'/') ? 1 : 0;
    if (path.starts_with(longUncPrefix)) {
        return endWithSeparator(path, endWithSeparator(path, longUncPrefix.size(), style), style);
    }
    if (isLongPath(path, style)) {
        const bool isDrive = startsWithDrive(path.substr(longPrefixLength), style);
        return isDrive ? driveRootLength(path, longPrefixLength, style)
                       : endWithSeparator(path, longPrefixLength, style);
    }
    if (startsWithTwoSeparators(path, style)) {
        return endWithSeparator(path, endWithSeparator(path, 2, style), style);
    }
    if (startsWithDrive(path, style)) return driveRootLength(path, 0, style);
    return !path.empty() && isSeparator(path[0], style) ? 1 : 0;
}

bool hasDotComponent(std::u16string_view text, PathStyle style) noexcept {
    std::size_t begin = startsWithDrive(text, style) ? 2 : 0;
    while (begin < text.size()) {
        const std::size_t end = endOfName(text, begin, style);
        const std::u16string_view name = text.substr(begin, end - begin);
        if (isDot(name) || isDotDot(name)) return true;
        begin = end + 1;
    }
    return false;
}

void removeSingleDots(std::u16string& path, PathStyle style) {
    KeptComponents kept(path, style);
    for (const Component& component : componentsOf(path, style)) {
        if (isDot(component.name)) {
            kept.remove();
        } else {
            kept.keep(component);
        }
    }
    path = kept.path();
}

void resolveDoubleDots(std::u16string& path, PathStyle style) {
    KeptComponents kept(path, style);
    for (const Component& component : componentsOf(path, style)) {
        if (!isDotDot(component.name) || !kept.removeLast()) kept.keep(component);
    }
    path = kept.path();
}

void foldDoubledSeparators(std::u16string& path, PathStyle style) {
    std::vector<Component> components = componentsOf(path, style);
    for (Component& component : components)
        component.separators = component.separators.substr(0, 1);
    const std::size_t root = rootLength(path, style);
    if (root > 0 && !components.empty()) components.front().separators = {};
    path = rebuilt(path, components, style);
}

void dropTrailingSeparators(std::u16string& path, PathStyle style) {
    const std::size_t root = rootLength(path, style);
    while (path.size() > root && isSeparator(path.back(), style))
        path.pop_back();
}

void replaceSlashes(std::u16string& path, PathStyle style) {
    if (style == PathStyle::windows) std::replace(path.begin(), path.end(), u'/', u'\\');
}

void replaceBackslashes(std::u16string& text, PathStyle style) {
    if (style == PathStyle::windows) std::replace(text.begin(), text.end(), u'\\', u'/');
}

void dropTrailingDotsAndSpaces(std::u16string& path, PathStyle style) {
    if (style == PathStyle::posix || isLongPath(path, style)) return;
    std::vector<Component> components = componentsOf(path, style);
    for (Component& component : components)
        component.name = asStored(component.name, &component == &components.back());
    path = rebuilt(path, components, style);
}

std::u16string_view fileNameOf(std::u16string_view path, PathStyle style) noexcept {
    std::size_t begin = path.size();
    while (begin > 0 && !isSeparator(path[begin - 1], style))
        --begin;
    if (begin == 0 && startsWithDrive(path, style)) begin = 2;
    return path.substr(begin);
}

std::u16string_view extensionOf(std::u16string_view path, PathStyle style) noexcept {
    const std::u16string_view name = fileNameOf(path, style);
    const std::size_t dot = extensionDot(name);
    return dot == std::u16string_view::npos ? std::u16string_view() : name.substr(dot + 1);
}

std::u16string_view stemOf(std::u16string_view path, PathStyle style) noexcept {
    const std::u16string_view name = fileNameOf(path, style);
    return name.substr(0, extensionDot(name));
}

}  // namespace korvex::runtime::paths
