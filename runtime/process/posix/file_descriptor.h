// Owner of an open file, folder or pipe.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace korvex::runtime::process {

class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes over an open descriptor; a negative one stands for none.
    explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            close();
            descriptor_ = std::exchange(other.descriptor_, -1);
        }
        return *this;
    }
    ~FileDescriptor() { close(); }

    int get() const noexcept { return descriptor_; }
    explicit operator bool() const noexcept { return descriptor_ >= 0; }
    /// 0 or the errno: some storage says only now that what was written did not arrive.
    int close() noexcept {
        if (descriptor_ < 0) return 0;
        return ::close(std::exchange(descriptor_, -1)) == 0 || errno == EINTR ? 0 : errno;
    }

private:
    int descriptor_ = -1;
};

}  // namespace korvex::runtime::process
