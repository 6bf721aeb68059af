#include "service/model/ModelClient.h"

#include "base/Json.h"
#include "service/metrics/Metrics.h"
#include "service/model/ModelCall.h"
#include "service/model/ModelEvents.h"
#include "service/settings/Settings.h"

#include <algorithm>
#include <array>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <chrono>
#include <stdexcept>

namespace dorix::service {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;
using Request = http::request<http::string_body>;

// A model on a small computer reads a long document for a while before it says its first word.
constexpr std::chrono::seconds firstByteTime{100};
constexpr std::array pauses = {milliseconds(250), milliseconds(1000)};

/// How long a call may take.
struct Patience {
    Clock::duration firstByte;
    Clock::time_point deadline = Clock::time_point::max();
};

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
    Awaitable<void> ask(std::string body, Patience patience, Answered answered) {
        auto request = requestWith(std::move(body));
        if (url_.isSecure) {
            co_await tryCalls<SecureStream>(request, patience, answered);
        } else {
            co_await tryCalls<PlainStream>(request, patience, answered);
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
    Awaitable<void> tryCalls(Request& request, const Patience& patience, Answered& answered) {
        ++metrics_.modelCalls;
        // Whoever waits for the answer does not wait once more for each attempt.
        const auto firstByteBy = std::min(patience.deadline, Clock::now() + patience.firstByte);
        for (std::size_t attempt = 0;; ++attempt) {
            ModelCall<Stream> call(newStream<Stream>(co_await asio::this_coro::executor), patience.deadline);
            std::string fault;
            try {
                co_await call.connect(url_);
                co_await call.begin(request, firstByteBy - Clock::now());
            } catch (const TryAgain& again) {
                fault = again.detail;
            }
            if (fault.empty()) {
                // It may be large, and the answer may take long.
                request.body() = std::string();
                co_await answered(call);
                co_return;
            }
            const bool hasTime = attempt < pauses.size() && Clock::now() + pauses.at(attempt) < firstByteBy;
            if (!hasTime) throw ModelError(ModelError::Kind::down, fault);
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
    const std::chrono::seconds whole(seconds);
    co_await impl_->ask(std::move(body), {.firstByte = whole, .deadline = Clock::now() + whole}, read);
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
    co_await impl_->ask(std::move(body), {.firstByte = firstByteTime}, read);
}

}  // namespace dorix::service
