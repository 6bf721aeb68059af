#pragma once

#include "service/model/ModelUrl.h"
#include "service/net/Beast.h"

#include <boost/beast/core/flat_buffer.hpp>
#include <chrono>
#include <string>

namespace dorix::service {

/// A call failed before its answer began; another try may do better. The detail is for the log.
struct TryAgain {
    std::string detail;
};

/// One call on a connection of its own, up to the end of its answer. Over plain or secure streams. Network
/// thread; throws ModelError and TryAgain.
template <typename Stream>
class ModelCall {
 public:
    using Clock = std::chrono::steady_clock;
    using Request = http::request<http::string_body>;

    /// Nothing of the call takes longer than until `deadline`.
    ModelCall(Stream stream, Clock::time_point deadline) : stream_(std::move(stream)), deadline_(deadline) {}

    Awaitable<void> connect(const ModelUrl& url);
    /// Sends the request, and waits for the head of a good answer.
    Awaitable<void> begin(const Request& request, Clock::duration firstByte);
    /// The next bytes of the answer; none at its end.
    Awaitable<std::string> readSome();

 private:
    beast::tcp_stream& lowest() { return beast::get_lowest_layer(stream_); }
    Clock::time_point within(Clock::duration time) const;
    Awaitable<void> shakeHands(const ModelUrl& url);

    Stream stream_;
    const Clock::time_point deadline_;
    beast::flat_buffer buffer_;
    http::response_parser<http::buffer_body> parser_;
};

}  // namespace dorix::service
