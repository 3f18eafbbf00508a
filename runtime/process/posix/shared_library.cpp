// POSIX: shared libraries by dlopen.
#include <dlfcn.h>

#include <stdexcept>
#include <utility>

#include "runtime/process/process.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::process {

SharedLibrary::SharedLibrary(const std::u16string& path) {
    const std::optional<std::string> name = text::toBytes(path);
    if (!name) throw std::runtime_error(text::toDisplayBytes(path) + ": no file can have this name");
    handle_ = ::dlopen(name->c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) throw std::runtime_error(::dlerror());
}

SharedLibrary::~SharedLibrary() {
    if (handle_ != nullptr) ::dlclose(handle_);
}

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)) {}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

void* SharedLibrary::symbol(const char* name) const noexcept { return ::dlsym(handle_, name); }

std::u16string SharedLibrary::fileName(const std::u16string& name) { return u"lib" + name + u".so"; }

}  // namespace korvex::runtime::process
