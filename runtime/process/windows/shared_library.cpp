// Windows: shared libraries by LoadLibrary.
#include <windows.h>

#include <utility>

#include "runtime/process/process.h"
#include "runtime/process/windows/wide_text.h"

namespace korvex::runtime::process {

SharedLibrary::SharedLibrary(const std::u16string& path) {
    handle_ = ::LoadLibraryW(toWide(path).c_str());
    if (handle_ == nullptr) raiseSystemError(::GetLastError());
}

SharedLibrary::~SharedLibrary() {
    if (handle_ != nullptr) ::FreeLibrary(static_cast<HMODULE>(handle_));
}

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)) {}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

void* SharedLibrary::symbol(const char* name) const noexcept {
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(handle_), name));
}

std::u16string SharedLibrary::fileName(const std::u16string& name) { return u"lib" + name + u".dll"; }

}  // namespace korvex::runtime::process
