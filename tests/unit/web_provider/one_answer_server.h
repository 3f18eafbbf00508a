// A web server of a single answer, sent byte by byte as the test words it: for headers that no server library
// would send.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <string>
#include <thread>
#include <utility>

#include "runtime/process/posix/file_descriptor.h"

namespace korvex::tests {

class OneAnswerServer {
public:
    /// Listens on 127.0.0.1 when the constructor is through. Answers the first request and closes.
    explicit OneAnswerServer(std::string answer) : answer_(std::move(answer)) {
        ::sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
        ::socklen_t size = sizeof place;
        auto* const address = reinterpret_cast<::sockaddr*>(&place);
        EXPECT_EQ(::bind(listening_.get(), address, size), 0);
        EXPECT_EQ(::listen(listening_.get(), 1), 0);
        EXPECT_EQ(::getsockname(listening_.get(), address, &size), 0);
        port_ = ::ntohs(place.sin_port);
        thread_ = std::thread([this] { answerOnce(); });
    }
    ~OneAnswerServer() {
        // Wakes it up when nobody has asked.
        ::shutdown(listening_.get(), SHUT_RDWR);
        thread_.join();
    }
    OneAnswerServer(const OneAnswerServer&) = delete;
    OneAnswerServer& operator=(const OneAnswerServer&) = delete;

    std::string address() const { return "http://127.0.0.1:" + std::to_string(port_) + "/file"; }

private:
    void answerOnce() const {
        const runtime::process::FileDescriptor client(
            ::accept4(listening_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        std::string request;
        std::array<char, 4096> buffer{};
        while (request.find("\r\n\r\n") == std::string::npos) {
            const ::ssize_t count = ::recv(client.get(), buffer.data(), buffer.size(), 0);
            if (count <= 0) return;
            request.append(buffer.data(), static_cast<std::size_t>(count));
        }
        ::send(client.get(), answer_.data(), answer_.size(), MSG_NOSIGNAL);
    }

    const std::string answer_;
    const runtime::process::FileDescriptor listening_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    int port_ = 0;
    std::thread thread_;
};

}  // namespace korvex::tests
