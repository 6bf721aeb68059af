#include "service/http/ClientStream.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <cstdint>
#include <type_traits>

namespace dorix::service {

namespace {

using std::chrono::seconds;

// A head comes in one piece from anybody who means well.
constexpr seconds headTime{10};
constexpr seconds lingerTime{5};
constexpr seconds farewellTime{2};
// Of most requests all of it; the buffer grows with those that are longer.
constexpr std::size_t firstPiece = 1024;
constexpr std::size_t lingerPiece = std::size_t{64} * 1024;
constexpr std::uint64_t mostLingered = std::uint64_t{32} * 1024 * 1024;

}  // namespace

template <typename Stream>
Awaitable<bool> ClientStream<Stream>::shakeHands() {
    if constexpr (std::is_same_v<Stream, SecureStream>) {
        error_code error;
        lowest().expires_after(headTime);
        co_await stream_.async_handshake(asio::ssl::stream_base::server,
                                         redirect_error(use_awaitable, error));
        co_return !error;
    }
    co_return true;
}

template <typename Stream>
Awaitable<bool> ClientStream<Stream>::waitForBytes(beast::flat_buffer& buffer, Time time) {
    error_code error;
    lowest().expires_after(time);
    const auto count =
        co_await stream_.async_read_some(buffer.prepare(firstPiece), redirect_error(use_awaitable, error));
    buffer.commit(count);
    co_return !error;
}

template <typename Stream>
Awaitable<error_code> ClientStream<Stream>::readHead(beast::flat_buffer& buffer, Parser& parser) {
    error_code error;
    lowest().expires_after(headTime);
    co_await http::async_read_header(stream_, buffer, parser, redirect_error(use_awaitable, error));
    co_return error;
}

template <typename Stream>
Awaitable<error_code> ClientStream<Stream>::readBody(beast::flat_buffer& buffer, Parser& parser, Time time) {
    error_code error;
    lowest().expires_after(time);
    co_await http::async_read(stream_, buffer, parser, redirect_error(use_awaitable, error));
    co_return error;
}

template <typename Stream>
Awaitable<void> ClientStream<Stream>::waitForEnd(beast::flat_buffer& buffer) {
    error_code error;
    lowest().expires_never();
    const auto count =
        co_await stream_.async_read_some(buffer.prepare(1), redirect_error(use_awaitable, error));
    buffer.commit(count);
    if (error) co_return;
    asio::steady_timer never(co_await asio::this_coro::executor, asio::steady_timer::time_point::max());
    co_await never.async_wait(redirect_error(use_awaitable, error));
}

template <typename Stream>
Awaitable<void> ClientStream<Stream>::write(const http::response<http::string_body>& message) {
    error_code error;
    lowest().expires_after(writeTime);
    co_await http::async_write(stream_, message, redirect_error(use_awaitable, error));
    if (error) throw ClientGone();
}

template <typename Stream>
Awaitable<void> ClientStream<Stream>::writeHead(const http::response<http::empty_body>& message) {
    http::serializer<false, http::empty_body> serializer(message);
    error_code error;
    lowest().expires_after(writeTime);
    co_await http::async_write_header(stream_, serializer, redirect_error(use_awaitable, error));
    if (error) throw ClientGone();
}

template <typename Stream>
Awaitable<void> ClientStream<Stream>::linger(beast::flat_buffer& buffer) {
    error_code error;
    lowest().socket().shutdown(asio::ip::tcp::socket::shutdown_send, error);
    lowest().expires_after(lingerTime);
    buffer.consume(buffer.size());
    for (std::uint64_t taken = 0; !error && taken < mostLingered;) {
        taken += co_await lowest().async_read_some(buffer.prepare(lingerPiece),
                                                   redirect_error(use_awaitable, error));
    }
}

template <typename Stream>
Awaitable<void> ClientStream<Stream>::sayFarewell() {
    error_code error;
    lowest().expires_after(farewellTime);
    if constexpr (std::is_same_v<Stream, SecureStream>) {
        co_await stream_.async_shutdown(redirect_error(use_awaitable, error));
    }
    lowest().socket().shutdown(asio::ip::tcp::socket::shutdown_send, error);
    co_return;
}

template class ClientStream<PlainStream>;
template class ClientStream<SecureStream>;

}  // namespace dorix::service
