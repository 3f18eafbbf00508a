// The engine of `fileattrib`: reads or changes the attributes of files and folders.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/filesystem_core.h"
#include "platform/kx.h"

namespace korvex::filemanip {

enum class AttributeChange : std::int32_t { clear = 0, leave = 1, set = 2 };

/// What a mode asks for.
struct AttributeChanges {
    AttributeChange archive = AttributeChange::leave;
    AttributeChange hidden = AttributeChange::leave;
    AttributeChange system = AttributeChange::leave;
    AttributeChange write = AttributeChange::leave;
};

/// Works on native paths. The mere presence of a mode, even of an empty one, makes the call a change.
class FileAttributes final : public io::filesystem::core::FileManipulator {
public:
    using Status = io::filesystem::core::Status;

    /// Mode, users and modifier, as many as were given. Syntax errors go to the status.
    void ParseOptArgs(std::vector<std::u16string> options) override;
    /// Asks for or changes the attributes of what `paths` names: one name, or none for the current folder.
    Status Process(std::vector<std::u16string> paths, std::vector<std::u16string> options) override;
    /// The outcome so far.
    Status Process(std::vector<std::u16string> paths) override;

    /// The structure of a query; null when there is none. The caller takes it over.
    matrix::ArrayOwner takeAttributes() { return std::move(attributes_); }

protected:
    void reportByKey(const char* key) override { SetErrorStatus("FILEATTRIB", key); }
    std::string GetErrorMsgIdPrefix() override { return "FILEATTRIB"; }

private:
    using Paths = std::vector<std::u16string>;

    void parseModifier(const std::u16string& modifier);
    void warnOnUsers(const std::u16string& users);
    void parseMode(const std::u16string& mode);
    /// False for a syntax error.
    bool takeModeToken(const std::u16string& token);

    void queryAttributes(const Paths& paths);
    void changeAttributes(const Paths& paths);
    void applyChanges(const Paths& list, const std::u16string& named);
    void expandWildcards(const std::u16string& text, Paths& list);

    bool recursive_ = false;
    AttributeChanges changes_;
    matrix::ArrayOwner attributes_;
};

}  // namespace korvex::filemanip
