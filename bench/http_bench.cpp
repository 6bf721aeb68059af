// What calling the service costs, beside libcurl's own call with a reused handle, all over loopback to one
// small server in this process: a POST; the first event of a stream, from its leaving the server to the
// callback; many small events; the memory after many calls.

#include "adapters/harness/EventLoop.h"
#include "cloud/DorixAPI.h"
#include "linux/curl/CurlHttpClient.h"
#include "linux/loop/FileDescriptor.h"
#include "platform/Keychain.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace dorix {
namespace {

constexpr int posts = 3000;
constexpr int streams = 500;
constexpr int memoryCalls = 10'000;

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// In milliseconds.
double part(std::vector<double> seconds, double at) {
    std::ranges::sort(seconds);
    return 1000 * seconds[static_cast<std::size_t>(at * static_cast<double>(seconds.size() - 1))];
}

void print(const char* what, const std::vector<double>& seconds) {
    std::printf("%-44s p50 %.3f ms, p95 %.3f ms, p99 %.3f ms\n", what, part(seconds, 0.5),
                part(seconds, 0.95), part(seconds, 0.99));
}

/// Answers a POST with an object, and one to a path that ends in a number with as many events.
class Server {
 public:
    Server() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{.sin_family = AF_INET, .sin_addr = {htonl(INADDR_LOOPBACK)}};
        socklen_t size = sizeof address;
        ::bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), size);
        ::listen(listener_.get(), 16);
        ::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &size);
        url_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
        std::thread([this] { serve(); }).detach();  // until the process ends
    }

    const std::string& url() const { return url_; }
    /// When the newest stream's first event was sent.
    double firstEventAt() const { return firstEventAt_; }

 private:
    void serve() {
        while (true) {
            const int connection = ::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC);
            const int on = 1;
            ::setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
            std::thread([this, connection] { answerAll(FileDescriptor(connection)); }).detach();
        }
    }

    void answerAll(const FileDescriptor& connection) {
        std::string held;
        std::array<char, 65536> piece{};
        while (true) {
            const auto count = ::read(connection.get(), piece.data(), piece.size());
            if (count <= 0) return;
            held.append(piece.data(), static_cast<std::size_t>(count));
            const auto head = held.find("\r\n\r\n");
            if (head == std::string::npos) continue;
            const auto length = held.find("Content-Length: ");
            const auto whole = head + 4 + std::stoul(held.substr(length + 16));
            if (held.size() < whole) continue;
            const auto events = held.substr(6, held.find(' ', 6) - 6);
            held.erase(0, whole);
            events.find_first_not_of("0123456789") == std::string::npos
                ? stream(connection, std::stol(events))
                : answer(connection);
        }
    }

    static void send(const FileDescriptor& connection, std::string_view bytes) {
        while (!bytes.empty()) {
            const auto count = ::send(connection.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (count <= 0) return;
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }
    static void answer(const FileDescriptor& connection) {
        send(connection, "HTTP/1.1 200 OK\r\nContent-Length: 11\r\n\r\n{\"ok\":true}");
    }
    /// Each event is a chunk; they go out some at a time.
    void stream(const FileDescriptor& connection, long count) {
        send(connection, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
        const std::string event = "data: {\"type\":\"text\",\"text\":\"twenty bytes of text\"}\n\n";
        std::array<char, 16> size{};
        std::snprintf(size.data(), size.size(), "%zx\r\n", event.size());
        const std::string chunk = size.data() + event + "\r\n";
        // As a model would: some time after the head.
        if (count == 1) std::this_thread::sleep_for(std::chrono::milliseconds(3));
        firstEventAt_ = now();
        std::string several;
        for (long i = 0; i < count; ++i) {
            several += chunk;
            if (several.size() > 8192 || i + 1 == count) send(connection, std::exchange(several, {}));
        }
        send(connection, "0\r\n\r\n");
    }

    const FileDescriptor listener_;
    std::string url_;
    std::atomic<double> firstEventAt_ = 0;
};

struct Ok {
    static Ok decode(const Json& json, const Decoder&) {
        json.at("ok").get<bool>();
        return {};
    }
};

/// libcurl's own call.
class Plain {
 public:
    Plain() {
        curl_easy_setopt(curl_, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(curl_, CURLOPT_POSTFIELDS, "{}");
        curl_easy_setopt(curl_, CURLOPT_HTTPHEADER, headers_);
        curl_easy_setopt(curl_, CURLOPT_WRITEDATA, &body_);
        curl_easy_setopt(curl_, CURLOPT_WRITEFUNCTION, &Plain::take);
    }
    ~Plain() {
        curl_easy_cleanup(curl_);
        curl_slist_free_all(headers_);
    }
    Plain(const Plain&) = delete;
    Plain& operator=(const Plain&) = delete;

    std::size_t post(const std::string& url) {
        body_.clear();
        curl_easy_setopt(curl_, CURLOPT_URL, url.c_str());
        curl_easy_perform(curl_);
        return body_.size();
    }

 private:
    static std::size_t take(const char* data, std::size_t size, std::size_t count, void* body) {
        static_cast<std::string*>(body)->append(data, size * count);
        return size * count;
    }

    CURL* curl_ = curl_easy_init();
    curl_slist* headers_ = curl_slist_append(nullptr, "content-type: application/json");
    std::string body_;
};

/// Proportional to what the process holds: the anonymous part of its resident memory, in kB.
long heldMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("RssAnon:")) return std::stol(line.substr(8));
    }
    return 0;
}

struct Bench {
    Server server;
    EventLoop loop;
    CurlHttpClient http;
    MemoryKeychain keychain;
    DorixAPI api{loop.main, http, keychain, server.url()};
    Plain plain;

    void run(Task<void> task) {
        TaskScope scope(loop.main);
        const auto handle = scope.spawn(std::move(task));
        while (!handle.isDone()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    Task<void> call() {
        co_await api.post<Ok>("v1/ai/write", Json::object(), DorixAPI::Session::required, 20);
    }

    Task<void> measurePosts() {
        co_await keychain.save(SessionToken::account, "token");
        const HttpRequest request{.method = HttpRequest::Method::post,
                                  .url = server.url() + "/post",
                                  .headers = {{"content-type", "application/json"}},
                                  .body = "{}"};
        std::vector<double> bare;
        std::vector<double> client;
        std::vector<double> whole;
        for (int i = 0; i < posts; ++i) {
            double before = now();
            plain.post(server.url() + "/post");
            bare.push_back(now() - before);
            before = now();
            co_await http.send(request);
            client.push_back(now() - before);
            before = now();
            co_await call();
            whole.push_back(now() - before);
        }
        print("POST by libcurl's own call", bare);
        print("POST by the client", client);
        print("POST by the API, with token and JSON", whole);
        std::printf("%-44s p50 %.3f ms, p95 %.3f ms\n", "the API's more than libcurl's",
                    part(whole, 0.5) - part(bare, 0.5), part(whole, 0.95) - part(bare, 0.95));
    }

    Task<void> measureFirstEvents() {
        std::vector<double> delays;
        for (int i = 0; i < streams; ++i) {
            co_await api.stream("1", Json::object(),
                                [&](std::string_view) { delays.push_back(now() - server.firstEventAt()); });
        }
        print("first event to callback", delays);
    }

    Task<void> measureEvents(long count) {
        constexpr int rounds = 5;
        std::vector<double> bare;
        std::vector<double> read;
        for (int i = 0; i < rounds; ++i) {
            double before = now();
            plain.post(server.url() + "/" + std::to_string(count));
            bare.push_back(now() - before);
            std::size_t told = 0;
            before = now();
            const auto text =
                co_await api.stream(std::to_string(count), Json::object(), [&](std::string_view) { ++told; });
            read.push_back(now() - before);
            if (told != static_cast<std::size_t>(count) || text.size() != told * 20)
                std::printf("lost events\n");
        }
        std::printf(
            "%6ld events: read in %.1f ms, %.2f us each; their bytes by libcurl's own call in %.1f ms\n",
            count, part(read, 0.5), 1000 * part(read, 0.5) / static_cast<double>(count), part(bare, 0.5));
    }

    Task<void> measureMemory() {
        for (int i = 0; i < memoryCalls; ++i) {
            if (i % 2500 == 0) std::printf("after %5d calls: %ld kB held\n", i, heldMemory());
            co_await call();
        }
        std::printf("after %5d calls: %ld kB held\n", memoryCalls, heldMemory());
    }
};

}  // namespace
}  // namespace dorix

int main() {
    dorix::Bench bench;
    bench.run(bench.measurePosts());
    bench.run(bench.measureFirstEvents());
    for (const long count : {1000L, 10'000L, 100'000L}) bench.run(bench.measureEvents(count));
    bench.run(bench.measureMemory());
    std::fflush(stdout);
    _exit(0);  // the server's threads have no end
}
