#include "service/http/Connection.h"

#include "base/Json.h"
#include "base/Log.h"
#include "base/text/Text.h"
#include "service/http/Address.h"
#include "service/metrics/Metrics.h"

#include <boost/asio/experimental/awaitable_operators.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <chrono>
#include <exception>
#include <memory>
#include <type_traits>

namespace dorix::service {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::redirect_error;
using asio::use_awaitable;
using boost::system::error_code;
using std::chrono::seconds;

using PlainStream = beast::tcp_stream;
using SecureStream = beast::ssl_stream<beast::tcp_stream>;

constexpr std::uint32_t headLimit = 16 * 1024;
constexpr std::size_t bufferLimit = headLimit + 64 * std::size_t{1024};
constexpr std::uint64_t largestBody = 32 * std::uint64_t{1024} * 1024;
constexpr std::size_t smallBody = 64 * std::size_t{1024};
// A client that is too slow frees its place. A head comes in one piece from anybody who means well.
constexpr seconds headTime{10};
constexpr seconds idleTime{60};
constexpr seconds smallBodyTime{10};
constexpr seconds bodyTime{120};
constexpr seconds writeTime{30};
constexpr seconds lingerTime{5};
constexpr seconds farewellTime{2};
constexpr unsigned clientGoneStatus = 499;  // as others log it; never sent

/// Ends whoever reads from or writes to a client that is not there any more.
struct ClientGone {};

/// What became of work, which is not to throw beside the watch over the client.
struct Worked {
    std::optional<Response> response;
    std::exception_ptr failure;
};

Awaitable<Worked> carryOut(const Work& work, EventSink& sink) {
    Worked worked;
    try {
        worked.response = co_await work(sink);
    } catch (...) {
        worked.failure = std::current_exception();
    }
    co_return worked;
}

Method methodOf(http::verb verb) {
    switch (verb) {
        case http::verb::get:
            return Method::get;
        case http::verb::post:
            return Method::post;
        case http::verb::delete_:
            return Method::remove;
        default:
            return Method::other;
    }
}

std::string bearerToken(std::string_view field) {
    constexpr std::string_view scheme = "bearer ";
    if (field.size() <= scheme.size() || text::lowercase(field.substr(0, scheme.size())) != scheme) return {};
    return std::string(text::trim(field.substr(scheme.size())));
}

/// Nothing for what is no fault of the request, as when the client goes away.
std::optional<HttpError> faultOf(error_code error) {
    if (error == http::error::body_limit) return HttpError{.status = 413, .message = Message::bodyTooLong};
    if (error == http::error::header_limit || error == http::error::buffer_overflow) {
        return HttpError{.status = 431, .message = Message::bodyTooLong};
    }
    const bool isProtocol = error.category() == http::make_error_code(http::error::bad_method).category();
    if (!isProtocol || error == http::error::end_of_stream || error == http::error::partial_message)
        return std::nullopt;
    return HttpError{.status = 400, .message = Message::badBody};
}

void logRequest(std::string_view route, unsigned status, std::chrono::steady_clock::duration taken) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(taken).count();
    logLine("event=request route=" + std::string(route) + " status=" + std::to_string(status) +
            " ms=" + std::to_string(milliseconds));
}

template <typename Stream>
class HttpConnection final : public Connection, public Exchange, public EventSink {
 public:
    HttpConnection(Stream stream, ConnectionContext& context, std::string peer)
        : stream_(std::move(stream)), context_(context), peer_(std::move(peer)) {
        context_.open.insert(this);
        ++context_.metrics.connections;
    }
    ~HttpConnection() override {
        context_.open.erase(this);
        --context_.metrics.connections;
    }

    Awaitable<void> serve() {
        if (!co_await shakeHands()) co_return;
        bool goesOn = true;
        while (goesOn && !context_.isStopping && co_await hasRequest()) goesOn = co_await serveRequest();
        co_await sayFarewell();
    }

    void closeIfIdle() override {
        if (isIdle_) lowest().close();
    }

    const RequestHead& head() const override { return head_; }
    Awaitable<std::string> readBody(std::size_t limit) override;
    Awaitable<void> send(std::string events) override;

 private:
    PlainStream& lowest() { return beast::get_lowest_layer(stream_); }

    Awaitable<bool> shakeHands();
    Awaitable<bool> hasRequest();
    Awaitable<bool> serveRequest();
    Awaitable<bool> answer();
    Awaitable<bool> answerWith(const Work& work);
    Awaitable<bool> respond(Response response);
    Awaitable<void> watchClient();
    Awaitable<void> linger();
    Awaitable<void> sayFarewell();
    template <typename Buffers>
    Awaitable<void> write(Buffers buffers);
    void takeHead();
    Response refusal(const HttpError& error) const;
    /// HTTP/1.0 knows no chunks: there the end of the connection ends the answer.
    bool isChunked() const { return parser_->get().version() >= 11; }
    bool staysOpen() const { return parser_->get().keep_alive() && !context_.isStopping; }
    void conclude(unsigned status);

    Stream stream_;
    ConnectionContext& context_;
    std::string peer_;
    beast::flat_buffer buffer_{bufferLimit};
    std::optional<http::request_parser<http::string_body>> parser_;
    RequestHead head_;
    std::chrono::steady_clock::time_point started_;
    bool isFirst_ = true;
    bool isIdle_ = false;
    bool hasSentEvents_ = false;
};

template <typename Stream>
Awaitable<bool> HttpConnection<Stream>::shakeHands() {
    if constexpr (std::is_same_v<Stream, SecureStream>) {
        error_code error;
        lowest().expires_after(headTime);
        co_await stream_.async_handshake(asio::ssl::stream_base::server,
                                         redirect_error(use_awaitable, error));
        co_return !error;
    }
    co_return true;
}

/// Waits for the first byte of the next request.
template <typename Stream>
Awaitable<bool> HttpConnection<Stream>::hasRequest() {
    if (buffer_.size() > 0) co_return true;
    error_code error;
    isIdle_ = true;
    lowest().expires_after(std::exchange(isFirst_, false) ? headTime : idleTime);
    const auto count =
        co_await stream_.async_read_some(buffer_.prepare(4096), redirect_error(use_awaitable, error));
    isIdle_ = false;
    buffer_.commit(count);
    co_return !error;
}

/// Whether the connection is good for another request.
template <typename Stream>
Awaitable<bool> HttpConnection<Stream>::serveRequest() {
    started_ = std::chrono::steady_clock::now();
    route = "other";
    head_ = {};
    hasSentEvents_ = false;
    parser_.emplace();
    parser_->header_limit(headLimit);
    parser_->body_limit(largestBody);
    error_code error;
    lowest().expires_after(headTime);
    co_await http::async_read_header(stream_, buffer_, *parser_, redirect_error(use_awaitable, error));
    try {
        if (!error) {
            takeHead();
            co_return co_await answer();
        }
        const auto fault = faultOf(error);
        if (!fault) co_return false;
        co_await respond(refusal(*fault));
        co_await linger();
    } catch (const ClientGone&) {
        conclude(clientGoneStatus);
    }
    co_return false;
}

template <typename Stream>
void HttpConnection<Stream>::takeHead() {
    const auto& message = parser_->get();
    const auto field = [&](auto name) {
        return std::string_view(message[name].data(), message[name].size());
    };
    const std::string_view target(message.target().data(), message.target().size());
    head_.method = methodOf(message.method());
    head_.path = target.substr(0, target.find('?'));
    head_.host = field(http::field::host);
    head_.token = bearerToken(field(http::field::authorization));
    head_.address = callerAddress(peer_, field("x-forwarded-for"), context_.trustedProxies);
    head_.language = languageAsked(field("x-dorix-lang"));
    head_.hasOrigin = message.find(http::field::origin) != message.end();
}

template <typename Stream>
Awaitable<bool> HttpConnection<Stream>::answer() {
    Reply reply;
    try {
        reply = co_await context_.handler(*this);
    } catch (const HttpError& error) {
        reply = refusal(error);
    } catch (const std::exception& error) {
        logLine("event=failure route=" + std::string(route) + " what=" + error.what());
        reply = refusal({});
    }
    const bool goesOn = std::holds_alternative<Work>(reply)
                            ? co_await answerWith(std::get<Work>(reply))
                            : co_await respond(std::get<Response>(std::move(reply)));
    if (parser_->is_done()) co_return goesOn;
    // Somebody who is still sending would take the end of the connection for a failure, before the answer.
    co_await linger();
    co_return false;
}

template <typename Stream>
Awaitable<bool> HttpConnection<Stream>::answerWith(const Work& work) {
    using namespace asio::experimental::awaitable_operators;
    lowest().expires_never();
    auto first = co_await (carryOut(work, *this) || watchClient());
    if (first.index() == 1) throw ClientGone();
    auto& worked = std::get<0>(first);
    if (worked.failure && hasSentEvents_) {
        // Nothing more can be said than that the answer is not whole.
        conclude(200);
        co_return false;
    }
    if (worked.failure) {
        try {
            std::rethrow_exception(worked.failure);
        } catch (const HttpError& error) {
            worked.response = refusal(error);
        } catch (const std::exception& error) {
            logLine("event=failure route=" + std::string(route) + " what=" + error.what());
            worked.response = refusal({});
        }
    }
    if (worked.response) co_return co_await respond(std::move(*worked.response));
    if (!hasSentEvents_) co_await send("");
    if (isChunked()) co_await write(http::make_chunk_last());
    conclude(200);
    co_return isChunked() && staysOpen();
}

/// Ends when the client is gone. What it sends meanwhile is the next request.
template <typename Stream>
Awaitable<void> HttpConnection<Stream>::watchClient() {
    error_code error;
    const auto count =
        co_await stream_.async_read_some(buffer_.prepare(1), redirect_error(use_awaitable, error));
    buffer_.commit(count);
    if (error) co_return;
    asio::steady_timer never(co_await asio::this_coro::executor, asio::steady_timer::time_point::max());
    co_await never.async_wait(redirect_error(use_awaitable, error));
}

template <typename Stream>
template <typename Buffers>
Awaitable<void> HttpConnection<Stream>::write(Buffers buffers) {
    error_code error;
    lowest().expires_after(writeTime);
    co_await asio::async_write(stream_, buffers, redirect_error(use_awaitable, error));
    if (error) throw ClientGone();
}

template <typename Stream>
Awaitable<std::string> HttpConnection<Stream>::readBody(std::size_t limit) {
    if (parser_->content_length().value_or(0) > limit) {
        throw HttpError{.status = 413, .message = Message::bodyTooLong};
    }
    parser_->body_limit(limit);
    const auto expectation = parser_->get()[http::field::expect];
    if (beast::iequals(expectation, "100-continue")) {
        static constexpr std::string_view goOn = "HTTP/1.1 100 Continue\r\n\r\n";
        co_await write(asio::buffer(goOn));
    }
    error_code error;
    lowest().expires_after(limit > smallBody ? bodyTime : smallBodyTime);
    co_await http::async_read(stream_, buffer_, *parser_, redirect_error(use_awaitable, error));
    if (const auto fault = error ? faultOf(error) : std::nullopt) throw HttpError{*fault};
    if (error) throw ClientGone();
    co_return std::move(parser_->get().body());
}

template <typename Stream>
Awaitable<void> HttpConnection<Stream>::send(std::string events) {
    if (!std::exchange(hasSentEvents_, true)) {
        http::response<http::empty_body> head(http::status::ok, 11);
        head.set(http::field::content_type, "text/event-stream; charset=utf-8");
        head.set(http::field::cache_control, "no-store");
        head.keep_alive(isChunked() && staysOpen());
        head.chunked(isChunked());
        http::response_serializer<http::empty_body> serializer(head);
        error_code error;
        lowest().expires_after(writeTime);
        co_await http::async_write_header(stream_, serializer, redirect_error(use_awaitable, error));
        if (error) throw ClientGone();
    }
    if (events.empty()) co_return;
    if (isChunked()) {
        co_await write(http::make_chunk(asio::buffer(events)));
    } else {
        co_await write(asio::buffer(events));
    }
}

template <typename Stream>
Response HttpConnection<Stream>::refusal(const HttpError& error) const {
    const Json body = {{"message", say(error.message, head_.language)}};
    return {.status = error.status, .body = body.dump()};
}

template <typename Stream>
Awaitable<bool> HttpConnection<Stream>::respond(Response response) {
    const bool goesOn = parser_->is_done() && staysOpen();
    http::response<http::string_body> message(static_cast<http::status>(response.status), 11);
    message.set(http::field::content_type, response.contentType);
    message.set(http::field::cache_control, "no-store");
    message.set("x-content-type-options", "nosniff");
    for (const auto& [name, value] : response.fields) message.set(name, value);
    message.body() = std::move(response.body);
    message.keep_alive(goesOn);
    message.prepare_payload();
    error_code error;
    lowest().expires_after(writeTime);
    co_await http::async_write(stream_, message, redirect_error(use_awaitable, error));
    if (error) throw ClientGone();
    conclude(response.status);
    co_return goesOn;
}

/// Takes what is still sent, for a while, so that the answer is read before the connection ends.
template <typename Stream>
Awaitable<void> HttpConnection<Stream>::linger() {
    error_code error;
    lowest().socket().shutdown(asio::ip::tcp::socket::shutdown_send, error);
    lowest().expires_after(lingerTime);
    buffer_.consume(buffer_.size());
    for (std::uint64_t taken = 0; !error && taken < largestBody;) {
        taken += co_await lowest().async_read_some(buffer_.prepare(smallBody),
                                                   redirect_error(use_awaitable, error));
    }
}

template <typename Stream>
Awaitable<void> HttpConnection<Stream>::sayFarewell() {
    error_code error;
    lowest().expires_after(farewellTime);
    if constexpr (std::is_same_v<Stream, SecureStream>) {
        co_await stream_.async_shutdown(redirect_error(use_awaitable, error));
    }
    lowest().socket().shutdown(asio::ip::tcp::socket::shutdown_send, error);
}

template <typename Stream>
void HttpConnection<Stream>::conclude(unsigned status) {
    const auto taken = std::chrono::steady_clock::now() - started_;
    context_.metrics.countRequest(route, status, std::chrono::duration<double>(taken).count());
    logRequest(route, status, taken);
}

template <typename Stream>
Awaitable<void> serveOver(Stream stream, ConnectionContext& context, std::string peer) {
    // On the heap: as a part of the coroutine it would be moved with it.
    const auto connection =
        std::make_unique<HttpConnection<Stream>>(std::move(stream), context, std::move(peer));
    co_await connection->serve();
}

}  // namespace

Awaitable<void> serveConnection(asio::ip::tcp::socket socket, ConnectionContext& context) {
    error_code error;
    const auto peer = socket.remote_endpoint(error).address().to_string();
    if (error) co_return;
    // An event is sent when it is there, however short.
    socket.set_option(asio::ip::tcp::no_delay(true), error);
    try {
        if (context.tls == nullptr) {
            co_await serveOver(PlainStream(std::move(socket)), context, peer);
        } else {
            co_await serveOver(SecureStream(PlainStream(std::move(socket)), *context.tls), context, peer);
        }
    } catch (const std::exception& failure) {
        logLine(std::string("event=connection-failure what=") + failure.what());
    }
}

}  // namespace dorix::service
