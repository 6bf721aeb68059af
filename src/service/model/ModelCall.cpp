#include "service/model/ModelCall.h"

#include "service/model/ModelClient.h"

#include <algorithm>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <memory>
#include <optional>
#include <type_traits>

namespace dorix::service {

using std::chrono::seconds;
using tcp = asio::ip::tcp;

namespace {

constexpr seconds connectTime{5};
constexpr seconds gapTime{60};
constexpr std::uint64_t longestAnswer = std::uint64_t{8} * 1024 * 1024;
// Events are short; what waits for them is multiplied by the streams that do.
constexpr std::size_t pieceSize = 512;

bool mayPass(unsigned status) { return status == 408 || status == 429 || status >= 500; }

/// Nobody can interrupt the system while it looks for a name; who has waited for long enough leaves it alone
/// with that.
struct Lookup {
    explicit Lookup(const asio::any_io_executor& network) : resolver(network), done(network) {}

    tcp::resolver resolver;
    asio::steady_timer done;
    std::optional<error_code> result;
    tcp::resolver::results_type endpoints;
};

Awaitable<tcp::resolver::results_type> resolve(ModelUrl url, std::chrono::steady_clock::time_point until) {
    const auto lookup = std::make_shared<Lookup>(co_await asio::this_coro::executor);
    lookup->done.expires_at(until);
    lookup->resolver.async_resolve(url.host, url.port, [lookup](error_code error, auto endpoints) {
        lookup->result = error;
        lookup->endpoints = std::move(endpoints);
        lookup->done.cancel();
    });
    error_code ignored;
    co_await lookup->done.async_wait(redirect_error(use_awaitable, ignored));
    if (!lookup->result) throw TryAgain{"name: no answer in time"};
    if (*lookup->result) throw TryAgain{"name: " + lookup->result->message()};
    co_return std::move(lookup->endpoints);
}

}  // namespace

template <typename Stream>
typename ModelCall<Stream>::Clock::time_point ModelCall<Stream>::within(Clock::duration time) const {
    return std::min(Clock::now() + time, deadline_);
}

template <typename Stream>
Awaitable<void> ModelCall<Stream>::connect(const ModelUrl& url) {
    const auto until = within(connectTime);
    const auto endpoints = co_await resolve(url, until);
    error_code error;
    lowest().expires_at(until);
    co_await lowest().async_connect(endpoints, redirect_error(use_awaitable, error));
    if (error) throw TryAgain{"connect: " + error.message()};
    lowest().socket().set_option(tcp::no_delay(true), error);
    co_await shakeHands(url);
}

template <typename Stream>
Awaitable<void> ModelCall<Stream>::shakeHands(const ModelUrl& url) {
    if constexpr (std::is_same_v<Stream, SecureStream>) {
        SSL_set_tlsext_host_name(stream_.native_handle(), url.host.c_str());
        stream_.set_verify_mode(asio::ssl::verify_peer);
        stream_.set_verify_callback(asio::ssl::host_name_verification(url.host));
        error_code error;
        co_await stream_.async_handshake(asio::ssl::stream_base::client,
                                         redirect_error(use_awaitable, error));
        if (error) throw ModelError(ModelError::Kind::down, "tls: " + error.message());
    }
    co_return;
}

template <typename Stream>
Awaitable<void> ModelCall<Stream>::begin(const Request& request, Clock::duration firstByte) {
    error_code error;
    lowest().expires_at(within(firstByte));
    co_await http::async_write(stream_, request, redirect_error(use_awaitable, error));
    parser_.body_limit(longestAnswer);
    if (!error)
        co_await http::async_read_header(stream_, buffer_, parser_, redirect_error(use_awaitable, error));
    // Time that is used up is not spent twice.
    if (error == beast::error::timeout) throw ModelError(ModelError::Kind::down, "no answer in time");
    if (error) throw TryAgain{"head: " + error.message()};
    const auto status = parser_.get().result_int();
    if (status == 200) co_return;
    const auto detail = "status " + std::to_string(status);
    if (mayPass(status)) throw TryAgain{detail};
    throw ModelError(ModelError::Kind::down, detail);
}

template <typename Stream>
Awaitable<std::string> ModelCall<Stream>::readSome() {
    std::string bytes(pieceSize, '\0');
    while (!parser_.is_done()) {
        parser_.get().body().data = bytes.data();
        parser_.get().body().size = bytes.size();
        error_code error;
        lowest().expires_at(within(gapTime));
        co_await http::async_read_some(stream_, buffer_, parser_, redirect_error(use_awaitable, error));
        if (error && error != http::error::need_buffer)
            throw ModelError(ModelError::Kind::cutOff, error.message());
        const auto count = bytes.size() - parser_.get().body().size;
        if (count == 0) continue;
        bytes.resize(count);
        co_return bytes;
    }
    co_return std::string();
}

template class ModelCall<PlainStream>;
template class ModelCall<SecureStream>;

}  // namespace dorix::service
