// One open file descriptor and its owner.
#pragma once

#include <unistd.h>

#include <utility>

namespace korvex::runtime::process {

class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) noexcept : number_(number) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    int number() const noexcept { return number_; }
    bool isOpen() const noexcept { return number_ >= 0; }
    void close() noexcept {
        if (isOpen()) ::close(std::exchange(number_, -1));
    }

private:
    int number_ = -1;
};

}  // namespace korvex::runtime::process
