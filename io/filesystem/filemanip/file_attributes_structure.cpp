// The result of a query of `fileattrib`.
#include "io/filesystem/filemanip/file_attributes_structure.h"

#include <array>
#include <bit>
#include <cstdint>

#include "platform/foundation_filesystem.h"

namespace korvex::filemanip {

using fl::filesystem::file_status;

namespace {

enum Field {
    Name,
    Archive,
    System,
    Hidden,
    Directory,
    UserRead,
    UserWrite,
    UserExecute,
    GroupRead,
    OtherExecute = 13,
};

constexpr std::array<const char*, 14> fieldNames{
    "Name",        "archive",   "system",     "hidden",       "directory", "UserRead",   "UserWrite",
    "UserExecute", "GroupRead", "GroupWrite", "GroupExecute", "OtherRead", "OtherWrite", "OtherExecute"};

/// What the platform does not have: the bit pattern is part of the result.
constexpr double notKnown = std::bit_cast<double>(std::uint64_t{0xFFF8000000000000});

/// Fills the elements. Values that are the same in many fields are made once and shared.
class StructureFiller {
public:
    explicit StructureFiller(kxArray* structure) : structure_(structure) {}

    /// What the platform does not have, and what is the same for every file.
    void fillWhatIsFixed(std::size_t index) {
        for (int field = GroupRead; field <= OtherExecute; ++field)
            share(index, field, notKnown_);
        setLogical(index, UserRead, true);
        setLogical(index, UserExecute, true);
    }

    void fillFrom(const std::u16string& path, std::size_t index) {
        const file_status status = fl::filesystem::status(path);
        const auto has = [&](file_status::perms bit) { return (status.permissions() & bit) != 0; };
        kxSetFieldByNumber(structure_, index, Name, matrix::to_korvex(matrix::create(path)));
        setLogical(index, Archive, has(file_status::archive_file));
        setLogical(index, System, has(file_status::system_file));
        setLogical(index, Hidden, has(file_status::hidden_file));
        setLogical(index, Directory, status.is_directory());
        setLogical(index, UserWrite, has(file_status::owner_write));
    }

private:
    void setLogical(std::size_t index, Field field, bool value) {
        share(index, field, value ? isTrue_ : isFalse_);
    }
    void share(std::size_t index, int field, const matrix::ArrayOwner& value) {
        kxSetFieldByNumber(structure_, index, field, kxCreateReference(value.get()));
    }

    kxArray* const structure_;
    const matrix::ArrayOwner notKnown_{kxCreateDoubleScalar(notKnown)};
    const matrix::ArrayOwner isFalse_{kxCreateLogicalScalar(false)};
    const matrix::ArrayOwner isTrue_{kxCreateLogicalScalar(true)};
};

}  // namespace

matrix::ArrayOwner attributeStructure(const std::vector<std::u16string>& paths) {
    matrix::ArrayOwner structure(
        kxCreateStructMatrix(1, paths.size(), static_cast<int>(fieldNames.size()), fieldNames.data()));
    StructureFiller filler(structure.get());
    for (std::size_t i = 0; i < paths.size(); ++i)
        filler.fillWhatIsFixed(i);
    for (std::size_t i = 0; i < paths.size(); ++i)
        filler.fillFrom(paths[i], i);
    return structure;
}

}  // namespace korvex::filemanip
