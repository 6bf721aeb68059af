#include "service/http/Connection.h"

#include "base/Json.h"
#include "base/Log.h"
#include "service/http/ClientStream.h"
#include "service/http/RequestReading.h"
#include "service/metrics/Metrics.h"

#include <boost/asio/experimental/awaitable_operators.hpp>
#include <chrono>
#include <exception>
#include <memory>

namespace dorix::service {

namespace {

using std::chrono::seconds;

constexpr std::uint32_t headLimit = 16 * 1024;
constexpr std::size_t bufferLimit = headLimit + 64 * std::size_t{1024};
constexpr std::uint64_t largestBody = 32 * std::uint64_t{1024} * 1024;
constexpr std::size_t smallBody = 64 * std::size_t{1024};
constexpr seconds firstTime{10};
constexpr seconds idleTime{60};
constexpr seconds smallBodyTime{10};
constexpr seconds bodyTime{120};
constexpr unsigned clientGoneStatus = 499;  // as others log it; never sent

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

void logRequest(std::string_view route, unsigned status, std::chrono::steady_clock::duration taken) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(taken).count();
    logLine("event=request route=" + std::string(route) + " status=" + std::to_string(status) +
            " ms=" + std::to_string(milliseconds));
}

void logFailure(std::string_view route, const std::exception& error) {
    logLine("event=failure route=" + std::string(route) + " what=" + error.what());
}

template <typename Stream>
class HttpConnection final : public Connection, public Exchange, public EventSink {
 public:
    HttpConnection(Stream stream, ConnectionContext& context, std::string peer)
        : client_(std::move(stream)), context_(context), peer_(std::move(peer)) {
        context_.open.insert(this);
        ++context_.metrics.connections;
    }
    ~HttpConnection() override {
        context_.open.erase(this);
        --context_.metrics.connections;
    }

    Awaitable<void> serve() {
        if (!co_await client_.shakeHands()) co_return;
        bool goesOn = true;
        while (goesOn && !context_.isStopping && co_await hasRequest()) goesOn = co_await serveRequest();
        co_await client_.sayFarewell();
    }

    void closeIfIdle() override {
        if (isIdle_) client_.close();
    }

    const RequestHead& head() const override { return head_; }
    Awaitable<std::string> readBody(std::size_t limit) override;
    Awaitable<void> send(std::string events) override;

 private:
    Awaitable<bool> hasRequest();
    Awaitable<bool> serveRequest();
    Awaitable<bool> answer();
    Awaitable<bool> answerWith(const Work& work);
    Awaitable<bool> respond(Response response);
    Response failed(const std::exception_ptr& failure) const;
    Response refusal(const HttpError& error) const;
    /// HTTP/1.0 knows no chunks: there the end of the connection ends the answer.
    bool isChunked() const { return parser_->get().version() >= 11; }
    bool staysOpen() const { return parser_->get().keep_alive() && !context_.isStopping; }
    void conclude(unsigned status);

    ClientStream<Stream> client_;
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

/// Waits for the first byte of the next request.
template <typename Stream>
Awaitable<bool> HttpConnection<Stream>::hasRequest() {
    if (buffer_.size() > 0) co_return true;
    isIdle_ = true;
    const bool hasCome =
        co_await client_.waitForBytes(buffer_, std::exchange(isFirst_, false) ? firstTime : idleTime);
    isIdle_ = false;
    co_return hasCome;
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
    const auto error = co_await client_.readHead(buffer_, *parser_);
    try {
        if (!error) {
            head_ = readHead(parser_->get(), peer_, context_.trustedProxies);
            co_return co_await answer();
        }
        const auto fault = faultOf(error);
        if (!fault) co_return false;
        co_await respond(refusal(*fault));
        co_await client_.linger(buffer_);
    } catch (const ClientGone&) {
        conclude(clientGoneStatus);
    }
    co_return false;
}

template <typename Stream>
Awaitable<bool> HttpConnection<Stream>::answer() {
    Reply reply;
    try {
        reply = co_await context_.handler(*this);
    } catch (...) {
        reply = failed(std::current_exception());
    }
    const bool goesOn = std::holds_alternative<Work>(reply)
                            ? co_await answerWith(std::get<Work>(reply))
                            : co_await respond(std::get<Response>(std::move(reply)));
    if (parser_->is_done()) co_return goesOn;
    // Somebody who is still sending would take the end of the connection for a failure, before the answer.
    co_await client_.linger(buffer_);
    co_return false;
}

template <typename Stream>
Awaitable<bool> HttpConnection<Stream>::answerWith(const Work& work) {
    using namespace asio::experimental::awaitable_operators;
    // It may take long, and thousands may be under way.
    if (buffer_.size() == 0) buffer_.shrink_to_fit();
    auto first = co_await (carryOut(work, *this) || client_.waitForEnd(buffer_));
    if (first.index() == 1) throw ClientGone();
    auto& worked = std::get<0>(first);
    if (worked.failure && hasSentEvents_) {
        // Nothing more can be said than that the answer is not whole.
        conclude(200);
        co_return false;
    }
    if (worked.failure) worked.response = failed(worked.failure);
    if (worked.response) co_return co_await respond(std::move(*worked.response));
    if (!hasSentEvents_) co_await send("");
    if (isChunked()) co_await client_.write(http::make_chunk_last());
    conclude(200);
    co_return isChunked() && staysOpen();
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
        co_await client_.write(asio::buffer(goOn));
    }
    const auto error =
        co_await client_.readBody(buffer_, *parser_, limit > smallBody ? bodyTime : smallBodyTime);
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
        co_await client_.writeHead(head);
    }
    if (events.empty()) co_return;
    if (isChunked()) {
        co_await client_.write(http::make_chunk(asio::buffer(events)));
    } else {
        co_await client_.write(asio::buffer(events));
    }
}

template <typename Stream>
Response HttpConnection<Stream>::refusal(const HttpError& error) const {
    const Json body = {{"message", say(error.message, head_.language)}};
    return {.status = error.status, .body = body.dump()};
}

/// What says that the request could not be answered.
template <typename Stream>
Response HttpConnection<Stream>::failed(const std::exception_ptr& failure) const {
    try {
        std::rethrow_exception(failure);
    } catch (const HttpError& error) {
        return refusal(error);
    } catch (const std::exception& error) {
        logFailure(route, error);
        return refusal({});
    }
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
    co_await client_.write(message);
    conclude(response.status);
    co_return goesOn;
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
