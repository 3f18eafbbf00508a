// `fileattrib` as the interpreter calls it: in a scratch folder, over storage that fails on demand, with all
// that is printed and warned kept.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation_filesystem.h"
#include "platform/path_management.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/interpreter/output.h"
#include "runtime/interpreter/warnings.h"
#include "runtime/storage/fault_injection/fault_injecting_provider.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/storage_system.h"
#include "runtime/text/encoding.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/entry_call.h"

namespace korvex::filemanip::tests {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
using fl::filesystem::file_status;
using runtime::storage::Fault;
using runtime::storage::FaultInjectingProvider;
using runtime::storage::Operation;

using Words = std::vector<std::u16string>;

class FileAttributesTest : public testing::Test {
protected:
    FileAttributesTest() {
        scratch_.writeFile("file");
        runtime::dispatcher::setCurrentFolderPath(scratch_.text());
        runtime::interpreter::setWarningReceiver([this](const runtime::interpreter::Warning& warning) {
            warnings_.push_back(warning.identifier);
        });
        runtime::interpreter::setOutputReceiver([this](std::u16string_view text) { printed_ += text; });
    }
    ~FileAttributesTest() override {
        local_->forgetFaults();
        runtime::interpreter::setOutputReceiver({});
        runtime::interpreter::setWarningReceiver({});
        runtime::dispatcher::setCurrentFolderPath(u"/");
    }

    static Outcome attrib(int nlhs, const Words& words) {
        std::vector<Array> arrays;
        std::vector<const kxArray*> borrowed;
        for (const std::u16string& word : words) {
            arrays.push_back(text(word));
            borrowed.push_back(arrays.back().get());
        }
        return call(fileAttrib, nlhs, borrowed);
    }

    /// What the three outputs of a change or a failure say: "1", or "0" and the identifier.
    static std::string resultOf(const Words& words) {
        const Outcome outcome = attrib(3, words);
        if (!outcome.errorIdentifier.empty()) return "raised " + outcome.errorIdentifier;
        const bool succeeded = logicals(outcome.outputs[0]).at(0);
        const std::string identifier = runtime::text::toDisplayBytes(charsOf(outcome.outputs[2].get()));
        EXPECT_EQ(charsOf(outcome.outputs[1].get()).empty(), succeeded);
        return succeeded ? "1" + identifier : "0 " + identifier;
    }

    static std::u16string charsOf(const kxArray* array) {
        const std::span<const char16_t> units = kxGetChars(array);
        return {units.begin(), units.end()};
    }

    std::u16string pathOf(const std::string& name) const { return (scratch_.path() / name).u16string(); }
    vfs::AbsoluteIRI locationOf(const std::string& name) const {
        return Velquist::PathManagement::GetIRIFromString(pathOf(name));
    }
    void protect(const std::string& name) const {
        fs::permissions(scratch_.path() / name, fs::perms::owner_write, fs::perm_options::remove);
    }
    /// The attributes that a file has now, as letters: "a", "h", "s", "w".
    std::string attributesOf(const std::string& name) const {
        constexpr std::pair<char, file_status::perms> letters[] = {{'a', file_status::archive_file},
                                                                   {'h', file_status::hidden_file},
                                                                   {'s', file_status::system_file},
                                                                   {'w', file_status::owner_write}};
        const file_status::perms attributes = fl::filesystem::status(pathOf(name)).permissions();
        std::string found;
        for (const auto& [letter, attribute] : letters)
            if ((attributes & attribute) != 0) found += letter;
        return found;
    }

    korvex::tests::ScratchFolder scratch_;
    std::shared_ptr<FaultInjectingProvider> local_ =
        std::make_shared<FaultInjectingProvider>(std::make_shared<runtime::storage::LocalProvider>());
    runtime::storage::ScopedStorageSystem system_{[this] {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", local_);
        return system;
    }()};
    std::u16string printed_;
    /// Identifiers, in order.
    std::vector<std::string> warnings_;
};

inline constexpr const char* cannotFind = "0 KORVEX:FILEATTRIB:CannotFindFile";
inline constexpr const char* couldNotSet = "0 KORVEX:FILEATTRIB:CouldNotSetAttributes";
inline constexpr const char* modeError = "0 KORVEX:FILEATTRIB:ModeSyntaxError";
inline constexpr const char* modifierError = "0 KORVEX:FILEATTRIB:ModifierSyntaxError";
inline constexpr const char* systemError = "0 KORVEX:FILEATTRIB:OSError";

}  // namespace korvex::filemanip::tests
