// Many streams at once through whatever stands between a model and its callers, and how long it holds each
// event up.
//
//   service_load model PORT EVENTS MILLISECONDS     a model that says an event so often, on every call
//   service_load callers PORT PATH TOKEN STREAMS    callers that listen all at once; prints a JSON object

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/connect.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace asio = boost::asio;
using asio::use_awaitable;
using boost::system::error_code;
using tcp = asio::ip::tcp;

/// All processes of the machine share this clock.
std::int64_t nanoseconds() { return std::chrono::steady_clock::now().time_since_epoch().count(); }

std::string chunk(const std::string& data) {
    std::array<char, 16> size{};
    std::snprintf(size.data(), size.size(), "%zx\r\n", data.size());
    return size.data() + data + "\r\n";
}

asio::awaitable<void> takeRequest(tcp::socket& socket) {
    std::string request;
    const auto head =
        co_await asio::async_read_until(socket, asio::dynamic_buffer(request), "\r\n\r\n", use_awaitable);
    const auto field = request.find("ontent-");
    auto length = request.find("ength: ", field);
    const auto size =
        length == std::string::npos ? 0 : std::strtoul(request.c_str() + length + 7, nullptr, 10);
    std::vector<char> rest(head + size > request.size() ? head + size - request.size() : 0);
    co_await asio::async_read(socket, asio::buffer(rest), use_awaitable);
}

asio::awaitable<void> speak(tcp::socket socket, int events, std::chrono::milliseconds interval) {
    error_code error;
    socket.set_option(tcp::no_delay(true), error);
    try {
        co_await takeRequest(socket);
        const std::string head =
            "HTTP/1.1 200 OK\r\ncontent-type: text/event-stream\r\ntransfer-encoding: chunked\r\n"
            "connection: close\r\n\r\n";
        co_await asio::async_write(socket, asio::buffer(head), use_awaitable);
        asio::steady_timer timer(socket.get_executor(), std::chrono::steady_clock::now());
        for (int i = 0; i < events; ++i) {
            timer.expires_at(timer.expiry() + interval);
            co_await timer.async_wait(use_awaitable);
            const auto mark = "@" + std::to_string(nanoseconds()) + ";" + std::to_string(i) + "@";
            const auto data = chunk(R"(data: {"choices":[{"delta":{"content":")" + mark + "\"}}]}\n\n");
            co_await asio::async_write(socket, asio::buffer(data), use_awaitable);
        }
        const auto end = chunk("data: [DONE]\n\n") + "0\r\n\r\n";
        co_await asio::async_write(socket, asio::buffer(end), use_awaitable);
    } catch (const std::exception&) {
        // The caller counts what it lacks.
    }
}

asio::awaitable<void> beModel(asio::io_context& network, std::uint16_t port, int events,
                              std::chrono::milliseconds interval) {
    tcp::acceptor acceptor(network, {asio::ip::address_v4::loopback(), port});
    acceptor.listen(4096);
    std::puts("ready");
    std::fflush(stdout);
    for (;;) {
        asio::co_spawn(network, speak(co_await acceptor.async_accept(use_awaitable), events, interval),
                       asio::detached);
    }
}

struct Findings {
    std::vector<std::int64_t> delays;  // nanoseconds
    int whole = 0;
    int outOfOrder = 0;
};

/// Reads the marks that are whole, and leaves the rest.
void readMarks(std::string& bytes, std::int64_t& next, Findings& findings) {
    const auto now = nanoseconds();
    std::size_t at = 0;
    for (;;) {
        const auto begin = bytes.find('@', at);
        const auto end = begin == std::string::npos ? begin : bytes.find('@', begin + 1);
        if (end == std::string::npos) break;
        char* after = nullptr;
        findings.delays.push_back(now - std::strtoll(bytes.c_str() + begin + 1, &after, 10));
        if (std::strtoll(after + 1, nullptr, 10) != next++) ++findings.outOfOrder;
        at = end + 1;
    }
    const auto open = bytes.find('@', at);
    bytes.erase(0, std::min(open, bytes.size()));
}

asio::awaitable<void> listen(asio::io_context& network, std::uint16_t port, std::string request,
                             Findings& findings) {
    tcp::socket socket(network);
    error_code error;
    co_await socket.async_connect({asio::ip::address_v4::loopback(), port},
                                  asio::redirect_error(use_awaitable, error));
    co_await asio::async_write(socket, asio::buffer(request), asio::redirect_error(use_awaitable, error));
    std::array<char, 4096> buffer{};
    std::string bytes;
    std::string tail;
    std::int64_t next = 0;
    while (!error && !tail.ends_with("0\r\n\r\n")) {
        const auto count =
            co_await socket.async_read_some(asio::buffer(buffer), asio::redirect_error(use_awaitable, error));
        bytes.append(buffer.data(), count);
        tail.append(buffer.data(), count);
        tail.erase(0, tail.size() - std::min<std::size_t>(tail.size(), 5));
        readMarks(bytes, next, findings);
    }
    if (tail.ends_with("0\r\n\r\n") && next > 0) ++findings.whole;
}

double millisecondsAt(const std::vector<std::int64_t>& sorted, double share) {
    if (sorted.empty()) return 0;
    const auto index = static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1));
    return static_cast<double>(sorted[index]) / 1e6;
}

int beCallers(asio::io_context& network, std::uint16_t port, const std::string& path,
              const std::string& token, int streams) {
    const std::string body = R"({"question":"x","appName":"y"})";
    const auto request =
        "POST " + path + " HTTP/1.1\r\nhost: 127.0.0.1\r\nauthorization: Bearer " + token +
        "\r\ncontent-type: application/json\r\ncontent-length: " + std::to_string(body.size()) + "\r\n\r\n" +
        body;
    Findings findings;
    for (int i = 0; i < streams; ++i)
        asio::co_spawn(network, listen(network, port, request, findings), asio::detached);
    network.run();
    auto& delays = findings.delays;
    std::ranges::sort(delays);
    std::printf(R"({"whole":%d,"events":%zu,"outOfOrder":%d,"p50":%.3f,"p99":%.3f,"worst":%.3f})"
                "\n",
                findings.whole, delays.size(), findings.outOfOrder, millisecondsAt(delays, 0.5),
                millisecondsAt(delays, 0.99), millisecondsAt(delays, 1));
    return findings.whole == streams && findings.outOfOrder == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    asio::io_context network(1);
    if (arguments.size() == 4 && arguments[0] == "model") {
        asio::co_spawn(network,
                       beModel(network, static_cast<std::uint16_t>(std::stoi(arguments[1])),
                               std::stoi(arguments[2]), std::chrono::milliseconds(std::stoi(arguments[3]))),
                       asio::detached);
        network.run();
        return 0;
    }
    if (arguments.size() == 5 && arguments[0] == "callers") {
        return beCallers(network, static_cast<std::uint16_t>(std::stoi(arguments[1])), arguments[2],
                         arguments[3], std::stoi(arguments[4]));
    }
    std::fputs("service_load model PORT EVENTS MILLISECONDS | callers PORT PATH TOKEN STREAMS\n", stderr);
    return 2;
}
