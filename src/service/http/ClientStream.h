#pragma once

#include "service/net/Beast.h"

#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <chrono>
#include <cstddef>

namespace dorix::service {

/// Ends whoever reads from or writes to a client that is not there any more.
struct ClientGone {};

/// The wire to one client, plain or secure. No wait on it is without a limit but the one for the client's
/// end: a client that is too slow frees its place. Network thread.
template <typename Stream>
class ClientStream {
 public:
    using Time = std::chrono::steady_clock::duration;
    using Parser = http::request_parser<http::string_body>;

    explicit ClientStream(Stream stream) : stream_(std::move(stream)) {}

    Awaitable<bool> shakeHands();

    /// Waits for the first bytes of a request; false when none came in time.
    Awaitable<bool> waitForBytes(beast::flat_buffer& buffer, Time time);
    Awaitable<error_code> readHead(beast::flat_buffer& buffer, Parser& parser);
    Awaitable<error_code> readBody(beast::flat_buffer& buffer, Parser& parser, Time time);
    /// Comes back when the client is gone. What it sends meanwhile is the next request.
    Awaitable<void> waitForEnd(beast::flat_buffer& buffer);

    /// Throw ClientGone.
    template <typename Buffers>
    Awaitable<void> write(Buffers buffers) {
        error_code error;
        lowest().expires_after(writeTime);
        co_await asio::async_write(stream_, buffers, redirect_error(use_awaitable, error));
        if (error) throw ClientGone();
    }
    Awaitable<void> write(const http::response<http::string_body>& message);
    Awaitable<void> writeHead(const http::response<http::empty_body>& message);

    /// Takes what is still sent, for a while, so that the answer is read before the connection ends.
    Awaitable<void> linger(beast::flat_buffer& buffer);
    Awaitable<void> sayFarewell();
    void close() { lowest().close(); }

 private:
    static constexpr std::chrono::seconds writeTime{30};

    PlainStream& lowest() { return beast::get_lowest_layer(stream_); }

    Stream stream_;
};

}  // namespace dorix::service
