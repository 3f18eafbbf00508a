// Stand-ins for the platform's path functions, and for an interpreter that returns from user errors.
#include "tests/unit/filemanip/fake_platform_paths.h"

#include <stdexcept>
#include <utility>

#include "platform/filesystem_core.h"
#include "platform/foundation_filesystem.h"
#include "platform/kx.h"
#include "platform/path_management.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"
#include "runtime/storage/location.h"
#include "runtime/storage/storage_system.h"

namespace korvex::filemanip::tests {

namespace paths = korvex::runtime::paths;

constexpr paths::PathStyle windows = paths::PathStyle::windows;
constexpr const char16_t* currentFolder = u"C:\\here";

FakePlatform::FakePlatform()
    : isUncPath([](const std::u16string& text) { return paths::isUncPath(text, windows); }),
      isLongPath([](const std::u16string& text) { return paths::isLongPath(text, windows); }),
      isAbsolute([](const std::u16string& path) { return paths::isAbsolute(path, windows); }),
      absolute([](const std::u16string& path, const std::u16string& base) {
          return paths::joined(paths::joined(currentFolder, base, windows), path, windows);
      }),
      beforeLocation([](const std::u16string&) {}) {}

FakePlatform& fakePlatform() {
    static FakePlatform platform;
    return platform;
}

namespace {

void logCall(const std::u16string& name, const std::u16string& arguments) {
    fakePlatform().calls.push_back(name + u'(' + arguments + u')');
}

}  // namespace
}  // namespace korvex::filemanip::tests

using korvex::filemanip::tests::currentFolder;
using korvex::filemanip::tests::fakePlatform;
using korvex::filemanip::tests::logCall;
using korvex::filemanip::tests::windows;

namespace fl::filesystem {

std::u16string get_current_path() { return currentFolder; }

std::u16string absolute(std::u16string path, const std::u16string& base) {
    logCall(u"absolute", path + u", " + base);
    return fakePlatform().absolute(path, base);
}

std::filesystem::path system_path(const std::u16string& path) { return path; }

namespace upath_constant {
const char16_t PATHNAME_SEPARATOR = u'\\';
}  // namespace upath_constant

namespace detail {

bool is_absolute(const std::u16string& path) {
    logCall(u"is_absolute", path);
    return fakePlatform().isAbsolute(path);
}

std::u16string make_native_form(const std::u16string& path, bool keepTrailing) {
    logCall(u"make_native_form", path + (keepTrailing ? u", true" : u", false"));
    return korvex::runtime::paths::nativeForm(path, keepTrailing, windows);
}

std::u16string extract_filename(const std::u16string& path) {
    return std::u16string(korvex::runtime::paths::fileNameOf(path, windows));
}

std::u16string extract_stem(const std::u16string& path) {
    return std::u16string(korvex::runtime::paths::stemOf(path, windows));
}

std::u16string extract_extension(const std::u16string& path) {
    return std::u16string(korvex::runtime::paths::extensionOf(path, windows));
}

}  // namespace detail
}  // namespace fl::filesystem

namespace Velquist {
namespace PathManagement {

namespace vfs = foundation::storage::vfs;

vfs::AbsoluteIRI GetIRIFromString(const std::u16string& text) {
    logCall(u"GetIRIFromString", text);
    fakePlatform().beforeLocation(text);
    if (vfs::hasIRIPrefix(text)) return vfs::AbsoluteIRI(text);
    auto [host, path] = korvex::runtime::paths::toLocationPath(text, windows);
    return korvex::runtime::storage::makeLocation(u"file", std::move(host), std::move(path));
}

std::u16string GetStringFromIRI(const vfs::AbsoluteIRI& location) { return location.toString(); }

}  // namespace PathManagement

foundation::storage::vfs::StorageSystemReference KorvexStorageSystem::GetStorageSystemReference() {
    return foundation::storage::vfs::StorageSystemReference(korvex::runtime::storage::currentStorageSystem());
}

}  // namespace Velquist

namespace korvex::io::filesystem::core {

void makeLowerCase(std::u16string& text) {
    for (char16_t& unit : text) {
        if (unit >= u'A' && unit <= u'Z') unit = static_cast<char16_t>(unit + (u'a' - u'A'));
    }
}

bool isUNCPath(const std::u16string& text) { return fakePlatform().isUncPath(text); }

bool isLongPath(const std::u16string& text) { return fakePlatform().isLongPath(text); }

}  // namespace korvex::io::filesystem::core

namespace korvex::runtime::dispatcher {

std::u16string currentFolderPath() { return currentFolder; }

bool currentFolderExists() {
    logCall(u"currentFolderExists", u"");
    return fakePlatform().currentFolderExists;
}

void setCurrentFolderPath(const std::u16string&) {
    throw std::logic_error("the current folder of these tests stays where it is");
}

}  // namespace korvex::runtime::dispatcher

namespace matrix::detail {

void error_maxlhs() { throw std::logic_error("too many outputs"); }
void error_maxrhs() { throw std::logic_error("too many arguments"); }
void error_minrhs() { throw std::logic_error("too few arguments"); }

void do_legacy_kx_error(const foundation::core::except::IUserException& error) {
    const auto* const known = dynamic_cast<const foundation::core::except::IMsgIDException*>(&error);
    fakePlatform().handedErrors.push_back(known != nullptr ? known->get_error_id() : std::string());
}

}  // namespace matrix::detail
