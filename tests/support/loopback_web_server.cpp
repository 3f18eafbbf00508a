// The test server: one handler that looks at the path, over the HTTP library's server. The library's header
// is slow to compile, so it is seen here only.
#include "tests/support/loopback_web_server.h"

#include <httplib.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <thread>

#include "tests/support/self_signed_certificate.h"

namespace korvex::tests {

namespace {

constexpr const char* contentType = "application/octet-stream";
constexpr std::size_t workers = 8;
constexpr std::size_t requestsOfAConnection = 1000;

/// The library hands over each accepted connection as one task, which makes this the place to count them.
class CountingThreadPool : public httplib::TaskQueue {
public:
    explicit CountingThreadPool(std::atomic<std::size_t>& connections)
        : connections_(connections), pool_(workers) {}

    void enqueue(std::function<void()> connection) override {
        ++connections_;
        pool_.enqueue(std::move(connection));
    }
    void shutdown() override { pool_.shutdown(); }

private:
    std::atomic<std::size_t>& connections_;
    httplib::ThreadPool pool_;
};

std::optional<std::string> behind(std::string_view path, std::string_view prefix) {
    if (!path.starts_with(prefix)) return std::nullopt;
    return std::string(path.substr(prefix.size()));
}

bool isForGetOnly(std::string_view path) {
    return path == "/endless" || path == "/stalling" || path == "/broken" || path == "/broken-chunks";
}

}  // namespace

struct LoopbackWebServer::State {
    void configure();
    void start();
    void stop();
    void answer(const httplib::Request& request, httplib::Response& response);
    void remember(const httplib::Request& request);
    void answerFile(const std::string& path, const httplib::Request& request, httplib::Response& response);
    void answerEndless(httplib::Response& response);
    void answerStalling(httplib::Response& response);
    static void answerBroken(httplib::Response& response, bool announcesLength);
    void waitForEndOfSilence();

    std::optional<SelfSignedCertificate> certificate;
    std::unique_ptr<httplib::Server> server;
    int port = 0;
    std::thread listener;
    std::atomic<bool> listenerIsOver = false;
    std::atomic<std::size_t> connections = 0;

    std::mutex guard;
    std::condition_variable changed;
    bool stopping = false;
    bool silenceIsOver = false;
    std::map<std::string, std::string> files;
    std::map<std::string, std::string> redirects;
    std::vector<Request> requests;
    std::multimap<std::string, std::size_t> requestsOfPath;
    std::uint64_t endlessWritten = 0;
    bool endlessIsOver = false;
};

LoopbackWebServer::LoopbackWebServer(Protocol protocol, const std::vector<std::string>& certificateNames)
    : state_(std::make_unique<State>()) {
    if (protocol == Protocol::https) {
        const SelfSignedCertificate& made = state_->certificate.emplace(certificateNames);
        state_->server = std::make_unique<httplib::SSLServer>(made.certificate.get(), made.key.get());
    } else {
        state_->server = std::make_unique<httplib::Server>();
    }
    state_->configure();
    state_->start();
}

LoopbackWebServer::~LoopbackWebServer() { state_->stop(); }

int LoopbackWebServer::port() const noexcept { return state_->port; }

std::string LoopbackWebServer::address(const std::string& host) const {
    return (state_->certificate ? "https://" : "http://") + host + ":" + std::to_string(state_->port);
}

void LoopbackWebServer::writeCertificate(const std::string& file) const {
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << state_->certificate.value().pem();
    if (!stream.flush()) throw std::runtime_error("cannot write " + file);
}

void LoopbackWebServer::addFile(const std::string& path, const std::string& content) {
    const std::lock_guard lock(state_->guard);
    state_->files[path] = content;
}

void LoopbackWebServer::addRedirect(const std::string& path, const std::string& target) {
    const std::lock_guard lock(state_->guard);
    state_->redirects[path] = target;
}

std::vector<LoopbackWebServer::Request> LoopbackWebServer::requests() const {
    const std::lock_guard lock(state_->guard);
    return state_->requests;
}

std::size_t LoopbackWebServer::connections() const noexcept { return state_->connections; }

void LoopbackWebServer::waitForRequest(const std::string& path) const {
    std::unique_lock lock(state_->guard);
    state_->changed.wait(lock, [&] { return state_->requestsOfPath.contains(path); });
}

void LoopbackWebServer::endSilence() {
    const std::lock_guard lock(state_->guard);
    state_->silenceIsOver = true;
    state_->changed.notify_all();
}

std::uint64_t LoopbackWebServer::waitForEndlessToEnd() const {
    std::unique_lock lock(state_->guard);
    state_->changed.wait(lock, [&] { return state_->endlessIsOver; });
    return state_->endlessWritten;
}

void LoopbackWebServer::State::configure() {
    if (!server->is_valid()) throw std::runtime_error("the test server cannot be made");
    server->new_task_queue = [this] { return new CountingThreadPool(connections); };
    server->set_keep_alive_max_count(requestsOfAConnection);
    server->set_keep_alive_timeout(10);
    server->set_tcp_nodelay(true);
    server->set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
        answer(request, response);
        return httplib::Server::HandlerResponse::Handled;
    });
}

void LoopbackWebServer::State::start() {
    // The library's own options would share the port with other processes that ask for it.
    server->set_socket_options([](socket_t) {});
    port = server->bind_to_any_port("127.0.0.1");
    if (port <= 0) throw std::runtime_error("the test server cannot listen");
    listener = std::thread([this] {
        server->listen_after_bind();
        listenerIsOver = true;
    });
    // Connections queue up at the socket already, but only a running server can be stopped.
    while (!server->is_running() && !listenerIsOver)
        std::this_thread::yield();
}

void LoopbackWebServer::State::stop() {
    {
        const std::lock_guard lock(guard);
        stopping = true;
    }
    changed.notify_all();
    server->stop();
    listener.join();
}

void LoopbackWebServer::State::remember(const httplib::Request& request) {
    const std::lock_guard lock(guard);
    requestsOfPath.emplace(request.path, requests.size());
    requests.push_back({request.method, request.target, request.get_header_value("Range"),
                        request.get_header_value("User-Agent")});
    changed.notify_all();
}

void LoopbackWebServer::State::answer(const httplib::Request& request, httplib::Response& response) {
    remember(request);
    const bool isHead = request.method == "HEAD";
    const bool isReading = isHead || request.method == "GET";
    if (!isReading || (isHead && isForGetOnly(request.path))) {
        response.status = 405;
    } else if (const auto status = behind(request.path, "/status/")) {
        response.status = std::stoi(*status);
    } else if (const auto statusAndName = behind(request.path, "/head/")) {
        if (isHead) {
            response.status = std::stoi(*statusAndName);
        } else {
            answerFile(statusAndName->substr(statusAndName->find('/')), request, response);
        }
    } else if (const auto remaining = behind(request.path, "/redirect/"); remaining && *remaining != "0") {
        response.set_redirect("/redirect/" + std::to_string(std::stoi(*remaining) - 1));
    } else if (remaining) {
        response.set_content("the end", contentType);
    } else if (request.path == "/loop") {
        response.set_redirect("/loop");
    } else if (request.path == "/endless") {
        answerEndless(response);
    } else if (request.path == "/silent") {
        waitForEndOfSilence();
        response.status = 500;
    } else if (request.path == "/stalling") {
        answerStalling(response);
    } else if (request.path == "/broken" || request.path == "/broken-chunks") {
        answerBroken(response, request.path == "/broken");
    } else if (request.path == "/dated") {
        response.set_header("Last-Modified", "Mon, 02 Mar 2015 12:30:00 GMT");
        response.set_content("dated", contentType);
    } else {
        answerFile(request.path, request, response);
    }
}

void LoopbackWebServer::State::answerFile(const std::string& path, const httplib::Request& request,
                                          httplib::Response& response) {
    const std::lock_guard lock(guard);
    if (const auto redirect = redirects.find(path); redirect != redirects.end()) {
        response.set_redirect(redirect->second);
    } else if (const auto file = files.find(path); file == files.end()) {
        response.status = 404;
    } else if (file->second.empty() && !request.ranges.empty()) {
        response.status = 416;
    } else {
        response.set_content(file->second, contentType);
    }
}

void LoopbackWebServer::State::answerEndless(httplib::Response& response) {
    response.status = 200;
    // Without a length the library does not cut the body to the range that was asked for.
    response.set_chunked_content_provider(
        contentType,
        [this](std::size_t, httplib::DataSink& sink) {
            static constexpr std::array<char, 64 * 1024> block{};
            {
                const std::lock_guard lock(guard);
                if (stopping) return false;
                if (endlessWritten >= endlessBytes) {
                    sink.done();
                    return true;
                }
            }
            if (!sink.write(block.data(), block.size())) return false;
            const std::lock_guard lock(guard);
            endlessWritten += block.size();
            return true;
        },
        [this](bool) {
            const std::lock_guard lock(guard);
            endlessIsOver = true;
            changed.notify_all();
        });
}

void LoopbackWebServer::State::answerStalling(httplib::Response& response) {
    response.status = 200;
    response.set_chunked_content_provider(contentType, [this](std::size_t, httplib::DataSink&) {
        waitForEndOfSilence();
        return false;
    });
}

void LoopbackWebServer::State::answerBroken(httplib::Response& response, bool announcesLength) {
    static constexpr std::array<char, 5000> half{};
    response.status = 200;
    const auto writeHalf = [](httplib::DataSink& sink) {
        sink.write(half.data(), half.size());
        return false;
    };
    if (announcesLength) {
        response.set_content_provider(
            2 * half.size(), contentType,
            [=](std::size_t, std::size_t, httplib::DataSink& sink) { return writeHalf(sink); });
    } else {
        response.set_chunked_content_provider(
            contentType, [=](std::size_t, httplib::DataSink& sink) { return writeHalf(sink); });
    }
}

void LoopbackWebServer::State::waitForEndOfSilence() {
    std::unique_lock lock(guard);
    changed.wait(lock, [this] { return stopping || silenceIsOver; });
}

}  // namespace korvex::tests
