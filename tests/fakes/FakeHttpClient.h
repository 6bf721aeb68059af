#pragma once

#include "base/async/AsyncStream.h"
#include "base/async/Completion.h"
#include "platform/HttpClient.h"

#include <deque>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dorix {

/// A web that the test answers for.
class FakeHttpClient final : public HttpClient {
 public:
    /// A request that was made, in whatever form, and what becomes of it.
    class Exchange {
     public:
        explicit Exchange(HttpRequest asked) : request(std::move(asked)) {}

        const HttpRequest request;

        std::string_view header(std::string_view name) const {
            for (const auto& [known, value] : request.headers) {
                if (known == name) return value;
            }
            return {};
        }

        /// The whole answer; of one that is streamed too.
        void respond(int status, const std::string& body = {}) {
            begin(status);
            if (!body.empty()) send(body);
            end();
        }
        void fail(HttpError::Kind kind = HttpError::Kind::unreachable) {
            const auto error = std::make_exception_ptr(HttpError(kind, "told by the test"));
            head_.fail(error);
            body_.finish(error);
        }

        // Piece by piece.
        void begin(int status) { head_.complete(HttpHead{status, {}}); }
        void send(std::string bytes) { body_.push(std::move(bytes)); }
        void end() { body_.finish(); }

        /// Whether nobody waits for it any more.
        bool isOver() const { return isOver_; }

     private:
        friend FakeHttpClient;

        Completion<HttpHead> head_;
        AsyncStream<std::string> body_;
        bool isOver_ = false;
    };

    std::deque<Exchange> exchanges;
    Exchange& last() { return exchanges.back(); }
    std::vector<std::string> connections;  // that were opened ahead

    void connect(std::string url) override { connections.push_back(std::move(url)); }

    Task<HttpResponse> send(HttpRequest request) override {
        auto stream = co_await open(std::move(request));
        HttpResponse response{HttpHead(stream), {}};
        while (auto bytes = co_await stream.body->next()) response.body += *bytes;
        co_return response;
    }
    Task<HttpStream> open(HttpRequest request) override {
        auto body = std::make_unique<Body>(exchanges.emplace_back(std::move(request)));
        auto head = co_await body->exchange.head_;
        co_return HttpStream{std::move(head), std::move(body)};
    }
    Task<HttpResponse> download(HttpRequest request, HttpDownload) override {
        return send(std::move(request));
    }

 private:
    struct Body final : HttpBody {
        explicit Body(Exchange& held) : exchange(held) {}
        ~Body() override { exchange.isOver_ = true; }
        Body(const Body&) = delete;
        Body& operator=(const Body&) = delete;
        Task<std::optional<std::string>> next() override { co_return co_await exchange.body_.next(); }

        Exchange& exchange;
    };
};

}  // namespace dorix
