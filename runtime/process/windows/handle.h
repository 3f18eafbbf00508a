// One handle of the system and its owner.
#pragma once

#include <windows.h>

#include <utility>

namespace korvex::runtime::process {

class Handle {
public:
    Handle() = default;
    explicit Handle(HANDLE value) noexcept : value_(value == INVALID_HANDLE_VALUE ? nullptr : value) {}
    ~Handle() { close(); }
    Handle(Handle&& other) noexcept : value_(std::exchange(other.value_, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }

    HANDLE get() const noexcept { return value_; }
    bool isOpen() const noexcept { return value_ != nullptr; }
    void close() noexcept {
        if (isOpen()) ::CloseHandle(std::exchange(value_, nullptr));
    }

private:
    HANDLE value_ = nullptr;
};

}  // namespace korvex::runtime::process
