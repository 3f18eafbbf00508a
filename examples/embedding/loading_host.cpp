// loading_host MODULE PATH: loads the library of the commands, and asks it whether there is a file.
#include <dlfcn.h>

#include <iostream>
#include <stdexcept>

#include "command_call.h"
#include "platform/user_exceptions.h"
#include "runtime/text/encoding.h"

namespace {

class Module {
public:
    explicit Module(const char* path) : library_(::dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
        if (library_ == nullptr) throw std::runtime_error(::dlerror());
        find<void (*)()>("KLInitialize_filemanip")();
    }
    ~Module() {
        find<void (*)()>("KLTerminate_filemanip")();
        ::dlclose(library_);
    }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    template <class Function>
    Function find(const char* name) const {
        return reinterpret_cast<Function>(::dlsym(library_, name));
    }

private:
    void* library_;
};

/// Any error of the commands or their services, as one line.
int tell(const foundation::core::except::IException& error) {
    if (const auto* named = dynamic_cast<const foundation::core::except::IMsgIDException*>(&error)) {
        std::cerr << named->get_error_id() << ": ";
    }
    std::cerr << error.what() << '\n';
    return 1;
}

}  // namespace

int main(int count, char* arguments[]) {
    if (count != 3) {
        std::cerr << "usage: loading_host MODULE PATH\n";
        return 2;
    }
    try {
        const Module module(arguments[1]);
        example::Outputs answer(1);
        example::call(module.find<example::Entry>("bnIsFileFcn"), answer,
                      {korvex::runtime::text::fromBytes(arguments[2])});
        std::cout << (kxGetScalar(answer[0]) != 0 ? "a file" : "no file") << '\n';
        return 0;
    } catch (const foundation::core::except::IException& error) {
        return tell(error);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
