// `isfile` and `isfolder`: from the one argument to a logical array of its shape.
#include "io/filesystem/filemanip/existence_queries.h"

#include <array>
#include <functional>
#include <span>

#include "io/filesystem/filemanip/command_frame_limits.h"
#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/existence_queries_web_location.h"
#include "platform/dispatcher.h"
#include "platform/filesystem_core.h"
#include "platform/foundation_filesystem.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"
#include "platform/storage_utility.h"
#include "platform/string_matrix.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;
namespace core = korvex::io::filesystem::core;
namespace TextDispatch = Velquist::String::TextDispatch;
namespace Wrappers = TextDispatch::Wrappers;
using vfs::File;
using vfs::Folder;
using vfs::StorageSystemReference;

namespace {

using CurrentFolderSource = std::function<Folder()>;

Folder environmentsCurrentFolder() { return Kdispatcher::getDispatcher().GetCurrentWorkingFolder().get(); }

[[noreturn]] void raiseNotTexts() {
    raise(KORVEX::string::MustBeCharCellArrayOrString(labelText(KORVEX::FileUtils::inputPath())));
}

bool isRelativePath(const std::u16string& path) {
    const std::u16string native =
        path.empty() ? std::u16string() : fl::filesystem::detail::make_native_form(path, true);
    return !fl::filesystem::detail::is_absolute(native);
}

/// A storage that fails has nothing to show: only what `exists` itself raises is swallowed.
template <class T>
bool existsSwallowingStorageErrors(const T& handle) {
    const vfs::Item item(handle);
    try {
        return vfs::exists(item);
    } catch (const vfs::Exception&) {
        return false;
    }
}

/// Answers for each kind of argument with a logical array of its shape.
template <class T>
class FileOrFolderVisitor {
public:
    explicit FileOrFolderVisitor(const StorageSystemReference& storage) : storage_(storage) {}

    matrix::ArrayOwner operator()(const Wrappers::StringWrapper<TextDispatch::Writable>& strings,
                                  const CurrentFolderSource& currentFolder) const {
        const Folder folder = currentFolder();
        matrix::ArrayOwner result(kxCreateLogicalArray(strings.dimensions()));
        const std::span<kxLogical> answers = kxGetLogicals(result.get());
        for (std::size_t i = 0; i < answers.size(); ++i) {
            const std::optional<std::u16string>& text = strings[i];
            answers[i] = text && locationExists<T>(*text, storage_, folder);
        }
        return result;
    }

    matrix::ArrayOwner operator()(const Wrappers::CharVectorWrapper<TextDispatch::ReadOnly>& vector,
                                  const CurrentFolderSource& currentFolder) const {
        constexpr std::array<std::size_t, 2> scalar{1, 1};
        const Folder folder = currentFolder();
        matrix::ArrayOwner result(kxCreateLogicalArray(scalar));
        kxGetLogicals(result.get())[0] = locationExists<T>(vector.text(), storage_, folder);
        return result;
    }

    matrix::ArrayOwner operator()(const Wrappers::StrictCellWrapper<TextDispatch::ReadOnly>& cell,
                                  const CurrentFolderSource& currentFolder) const {
        const Folder folder = currentFolder();
        matrix::ArrayOwner result(kxCreateLogicalArray(cell.dimensions()));
        const std::span<kxLogical> answers = kxGetLogicals(result.get());
        for (std::size_t i = 0; i < answers.size(); ++i) {
            // The elements before a bad one have been asked by now; that is on purpose, and nobody sees it.
            const std::optional<std::u16string_view> text = cell[i];
            if (!text) raiseNotTexts();
            answers[i] = locationExists<T>(*text, storage_, folder);
        }
        return result;
    }

private:
    const StorageSystemReference& storage_;
};

template <class T>
void answerExistence(const ArgumentLimits& limits, int nlhs, kxArray* plhs[], int nrhs,
                     const kxArray* prhs[]) {
    checkArgumentCounts(limits, nlhs, nrhs);
    const StorageSystemReference storage = Velquist::KorvexStorageSystem::GetStorageSystemReference();
    const FileOrFolderVisitor<T> visitor(storage);
    const CurrentFolderSource currentFolder = environmentsCurrentFolder;
    try {
        matrix::ArrayOwner answers =
            TextDispatch::dispatch(prhs[0], [&](const auto& texts) { return visitor(texts, currentFolder); });
        plhs[0] = matrix::to_korvex(std::move(answers));
    } catch (const TextDispatch::NotText&) {
        raiseNotTexts();
    }
}

}  // namespace

template <class T>
bool locationExists(std::u16string_view text, const StorageSystemReference& storage,
                    const Folder& currentFolder) {
    if (text.empty()) return false;
    std::u16string path(text);
    const bool hasIri = vfs::hasIRIPrefix(path);
    bool isHttp = false;
    if (hasIri) {
        if (!foundation::storage::utility::hasValidNumberOfSlashes(path)) return false;
        isHttp = isHttpLocation(path);
    } else if (!core::isUNCPath(path) && !core::isLongPath(path)) {
        // A network path and one of the long form keep their text as it was given.
        path = fl::filesystem::absolute(std::move(path), u"");
    }

    if (!hasIri && isRelativePath(path)) return existsSwallowingStorageErrors(T(currentFolder, path));
    if (isHttp) path = normalizeHttpLocation(path);
    const vfs::AbsoluteIRI iri = Velquist::PathManagement::GetIRIFromString(path);
    return existsSwallowingStorageErrors(T(iri, storage));
}

template bool locationExists<File>(std::u16string_view, const StorageSystemReference&, const Folder&);
template bool locationExists<Folder>(std::u16string_view, const StorageSystemReference&, const Folder&);

KX_MODULE_ENTRY void bnIsFileFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
    answerExistence<File>(limits::isFile, nlhs, plhs, nrhs, prhs);
}

KX_MODULE_ENTRY void bnIsFolderFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
    answerExistence<Folder>(limits::isFolder, nlhs, plhs, nrhs, prhs);
}

}  // namespace korvex::filemanip
