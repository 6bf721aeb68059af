#include "service/model/ModelClient.h"

#include "base/Json.h"
#include "base/Log.h"
#include "service/metrics/Metrics.h"
#include "service/model/ModelEvents.h"
#include "service/model/ModelUrl.h"
#include "service/settings/Settings.h"

#include <array>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <chrono>
#include <optional>
#include <stdexcept>

namespace dorix::service {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::redirect_error;
using asio::use_awaitable;
using boost::system::error_code;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

template <typename T>
using Awaitable = asio::awaitable<T>;
using PlainStream = beast::tcp_stream;
using SecureStream = beast::ssl_stream<beast::tcp_stream>;
using Request = http::request<http::string_body>;

constexpr seconds connectTime{5};
// A model on a small computer reads a long document for a while before it says its first word.
constexpr seconds firstByteTime{100};
constexpr seconds gapTime{60};
constexpr std::uint64_t longestAnswer = std::uint64_t{8} * 1024 * 1024;
// Events are short; what waits for them is multiplied by the streams that do.
constexpr std::size_t pieceSize = 2048;
constexpr std::array pauses = {milliseconds(250), milliseconds(1000)};

/// It failed before the answer began; another try may do better.
struct TryAgain {
    std::string detail;
};

std::string statusDetail(unsigned status) { return "status " + std::to_string(status); }

bool mayPass(unsigned status) { return status == 408 || status == 429 || status >= 500; }

/// One call on one connection, up to its answer.
template <typename Stream>
class Call {
 public:
    template <typename... Args>
    explicit Call(Args&&... args) : stream_(std::forward<Args>(args)...) {}

    Awaitable<void> connect(const ModelUrl& url);
    /// Sends the request, and waits for the head of a good answer.
    Awaitable<void> begin(const Request& request, std::chrono::steady_clock::duration firstByte);
    /// The next bytes of the answer; none at its end.
    Awaitable<std::string> readSome();

 private:
    beast::tcp_stream& lowest() { return beast::get_lowest_layer(stream_); }

    Stream stream_;
    beast::flat_buffer buffer_;
    http::response_parser<http::buffer_body> parser_;
};

Awaitable<asio::ip::tcp::resolver::results_type> resolve(const ModelUrl& url) {
    asio::ip::tcp::resolver resolver(co_await asio::this_coro::executor);
    error_code error;
    auto found = co_await resolver.async_resolve(url.host, url.port, redirect_error(use_awaitable, error));
    if (error) throw TryAgain{"name: " + error.message()};
    co_return found;
}

template <typename Stream>
Awaitable<void> Call<Stream>::connect(const ModelUrl& url) {
    const auto endpoints = co_await resolve(url);
    error_code error;
    lowest().expires_after(connectTime);
    co_await lowest().async_connect(endpoints, redirect_error(use_awaitable, error));
    if (error) throw TryAgain{"connect: " + error.message()};
    lowest().socket().set_option(asio::ip::tcp::no_delay(true), error);
    if constexpr (std::is_same_v<Stream, SecureStream>) {
        SSL_set_tlsext_host_name(stream_.native_handle(), url.host.c_str());
        stream_.set_verify_mode(asio::ssl::verify_peer);
        stream_.set_verify_callback(asio::ssl::host_name_verification(url.host));
        co_await stream_.async_handshake(asio::ssl::stream_base::client,
                                         redirect_error(use_awaitable, error));
        if (error) throw ModelError(ModelError::Kind::down, "tls: " + error.message());
    }
}

template <typename Stream>
Awaitable<void> Call<Stream>::begin(const Request& request, std::chrono::steady_clock::duration firstByte) {
    error_code error;
    lowest().expires_after(firstByte);
    co_await http::async_write(stream_, request, redirect_error(use_awaitable, error));
    parser_.body_limit(longestAnswer);
    if (!error)
        co_await http::async_read_header(stream_, buffer_, parser_, redirect_error(use_awaitable, error));
    // Time that is used up is not spent twice.
    if (error == beast::error::timeout) throw ModelError(ModelError::Kind::down, "no answer in time");
    if (error) throw TryAgain{"head: " + error.message()};
    const auto status = parser_.get().result_int();
    if (status == 200) co_return;
    if (mayPass(status)) throw TryAgain{statusDetail(status)};
    throw ModelError(ModelError::Kind::down, statusDetail(status));
}

template <typename Stream>
Awaitable<std::string> Call<Stream>::readSome() {
    std::string bytes(pieceSize, '\0');
    while (!parser_.is_done()) {
        parser_.get().body().data = bytes.data();
        parser_.get().body().size = bytes.size();
        error_code error;
        lowest().expires_after(gapTime);
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

Awaitable<void> pause(milliseconds time) {
    asio::steady_timer timer(co_await asio::this_coro::executor, time);
    co_await timer.async_wait(use_awaitable);
}

}  // namespace

class ModelClient::Impl {
 public:
    Impl(const Settings& settings, Metrics& metrics)
        : url_(parseModelUrl(settings.modelUrl).value()),
          model_(settings.model),
          key_(settings.modelKey),
          metrics_(metrics),
          tls_(asio::ssl::context::tls_client) {
        tls_.set_default_verify_paths();
    }

    std::string requestBody(const std::string& messages, Answer answer) const {
        // The messages are put in as they are: they may be long, and are JSON already.
        return R"({"model":)" + Json(model_).dump() + R"(,"stream":)" +
               (answer == Answer::streamed ? "true" : "false") + R"(,"messages":)" + messages + "}";
    }

    /// `answer` gets the call as soon as its answer has begun.
    template <typename Answered>
    Awaitable<void> ask(std::string body, std::chrono::steady_clock::duration firstByte, Answered answered) {
        auto request = requestWith(std::move(body));
        if (url_.isSecure) {
            co_await tryCalls<SecureStream>(request, firstByte, answered);
        } else {
            co_await tryCalls<PlainStream>(request, firstByte, answered);
        }
    }

 private:
    Request requestWith(std::string body) const {
        Request request(http::verb::post, url_.path + "/chat/completions", 11);
        const auto host = url_.host.find(':') == std::string::npos ? url_.host : "[" + url_.host + "]";
        request.set(http::field::host, host + ":" + url_.port);
        request.set(http::field::content_type, "application/json");
        request.set(http::field::accept, "text/event-stream, application/json");
        if (!key_.empty()) request.set(http::field::authorization, "Bearer " + key_);
        request.keep_alive(false);
        request.body() = std::move(body);
        request.prepare_payload();
        return request;
    }

    template <typename Stream>
    Stream newStream(const asio::any_io_executor& network) {
        if constexpr (std::is_same_v<Stream, SecureStream>) {
            return SecureStream(beast::tcp_stream(network), tls_);
        } else {
            return PlainStream(network);
        }
    }

    template <typename Stream, typename Answered>
    Awaitable<void> tryCalls(Request& request, std::chrono::steady_clock::duration firstByte,
                             Answered& answered) {
        ++metrics_.modelCalls;
        for (std::size_t attempt = 0;; ++attempt) {
            Call<Stream> call(newStream<Stream>(co_await asio::this_coro::executor));
            std::string fault;
            try {
                co_await call.connect(url_);
                co_await call.begin(request, firstByte);
            } catch (const TryAgain& again) {
                fault = again.detail;
            }
            if (fault.empty()) {
                // It may be large, and the answer may take long.
                request.body() = std::string();
                co_await answered(call);
                co_return;
            }
            if (attempt == pauses.size()) throw ModelError(ModelError::Kind::down, fault);
            ++metrics_.modelRetries;
            co_await pause(pauses.at(attempt));
        }
    }

    ModelUrl url_;
    std::string model_;
    std::string key_;
    Metrics& metrics_;
    asio::ssl::context tls_;
};

ModelClient::ModelClient(const Settings& settings, Metrics& metrics) {
    if (!parseModelUrl(settings.modelUrl)) throw std::runtime_error("DORIX_SERVICE_MODEL_URL is no address");
    impl_ = std::make_unique<Impl>(settings, metrics);
}

ModelClient::~ModelClient() = default;

std::string ModelClient::requestBody(const std::string& messages, Answer answer) const {
    return impl_->requestBody(messages, answer);
}

Awaitable<std::string> ModelClient::complete(std::string body, int seconds) {
    std::string answer;
    const auto read = [&answer](auto& call) -> Awaitable<void> {
        for (auto bytes = co_await call.readSome(); !bytes.empty(); bytes = co_await call.readSome())
            answer += bytes;
    };
    co_await impl_->ask(std::move(body), std::chrono::seconds(seconds), read);
    co_return textOfAnswer(answer);
}

Awaitable<void> ModelClient::stream(std::string body, OnTexts onTexts) {
    const auto read = [&onTexts](auto& call) -> Awaitable<void> {
        ModelEvents events;
        for (bool isEnd = false; !isEnd;) {
            const auto bytes = co_await call.readSome();
            isEnd = bytes.empty();
            auto texts = isEnd ? events.finish() : events.read(bytes);
            if (!texts.empty()) co_await onTexts(std::move(texts));
            if (events.hasFailed()) throw ModelError(ModelError::Kind::cutOff, "the model did not finish");
            if (events.isDone()) co_return;
        }
        if (!events.isWhole()) throw ModelError(ModelError::Kind::cutOff, "the answer ended early");
    };
    co_await impl_->ask(std::move(body), firstByteTime, read);
}

}  // namespace dorix::service
