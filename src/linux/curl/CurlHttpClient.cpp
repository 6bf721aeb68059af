#include "linux/curl/CurlHttpClient.h"

#include "linux/curl/DownloadFile.h"

#include <charconv>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace dorix {

namespace {

std::optional<std::uint64_t> numberAt(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    return number;
}

/// Where the bytes of a 200 or 206 belong; none for a 206 that does not say so.
std::optional<std::uint64_t> startOf(const HttpHead& head) {
    if (head.status == 200) return 0;
    constexpr std::string_view unit = "bytes ";
    const auto range = head.header("content-range");
    if (!range || !range->starts_with(unit)) return std::nullopt;
    return numberAt(range->substr(unit.size()));
}

}  // namespace

/// A transfer for as long as somebody waits for it, or the client is there.
class CurlHttpClient::Hold {
 public:
    Hold(std::weak_ptr<CurlLoop> loop, std::shared_ptr<CurlTransfer> transfer)
        : loop_(std::move(loop)), transfer_(std::move(transfer)) {}
    Hold(Hold&&) = default;
    Hold& operator=(Hold&&) = delete;
    ~Hold() {
        const auto loop = transfer_ ? loop_.lock() : nullptr;
        if (loop) loop->drop(std::move(transfer_));
    }

    CurlTransfer* operator->() const { return transfer_.get(); }
    void resume() const {
        if (const auto loop = loop_.lock()) loop->resume(transfer_);
    }

 private:
    std::weak_ptr<CurlLoop> loop_;
    std::shared_ptr<CurlTransfer> transfer_;
};

class CurlHttpClient::Body final : public HttpBody {
 public:
    explicit Body(Hold transfer) : transfer_(std::move(transfer)) {}

    Task<std::optional<std::string>> next() override {
        while (true) {
            auto taken = transfer_->body.take();
            if (taken.madeRoom) transfer_.resume();
            if (!taken.bytes.empty()) co_return std::move(taken.bytes);
            if (taken.isEnd) co_return std::nullopt;
            co_await *taken.news;
        }
    }

 private:
    const Hold transfer_;
};

CurlHttpClient::CurlHttpClient(std::filesystem::path authorities) : authorities_(std::move(authorities)) {}

CurlHttpClient::Hold CurlHttpClient::begin(HttpRequest request, CurlTransfer::Answer answer) {
    auto transfer = std::make_shared<CurlTransfer>(std::move(request), answer, *loop_, authorities_);
    loop_->begin(transfer);
    return {loop_, std::move(transfer)};
}

void CurlHttpClient::connect(std::string url) {
    constexpr double patience = 20;  // seconds
    loop_->begin(std::make_shared<CurlTransfer>(HttpRequest{.url = std::move(url), .timeout = patience},
                                                CurlTransfer::Answer::none, *loop_, authorities_));
}

Task<HttpResponse> CurlHttpClient::send(HttpRequest request) {
    const auto transfer = begin(std::move(request), CurlTransfer::Answer::whole);
    co_return co_await std::move(transfer->whole);
}

Task<HttpStream> CurlHttpClient::open(HttpRequest request) {
    auto transfer = begin(std::move(request), CurlTransfer::Answer::streamed);
    auto head = co_await std::move(transfer->head);
    co_return HttpStream{std::move(head), std::make_unique<Body>(std::move(transfer))};
}

Task<HttpResponse> CurlHttpClient::download(HttpRequest request, HttpDownload to) {
    const auto largestBody = request.largestBody;
    const auto wanted = request.range ? request.range->first : 0;
    auto stream = co_await open(std::move(request));
    HttpResponse response{HttpHead(stream), {}};
    const bool isContent = stream.status == 200 || stream.status == 206;
    if (!isContent || (to.accepts && !to.accepts(stream))) {
        response.body = co_await wholeBody(*stream.body, largestBody);
        co_return response;
    }
    const auto start = startOf(stream);
    if (!start || (stream.status == 206 && *start != wanted)) {
        throw HttpError(HttpError::Kind::broken, "not the range that was asked for");
    }
    co_await write(stream, std::move(to), *start);
    co_return response;
}

Task<void> CurlHttpClient::write(HttpStream& stream, HttpDownload to, std::uint64_t start) {
    const auto file = co_await runOn(
        files_, [path = to.file, start] { return std::make_shared<DownloadFile>(path, start); });
    auto whole = numberAt(stream.header("content-length").value_or(""));
    if (whole) *whole += start;
    auto held = start;
    while (auto bytes = co_await stream.body->next()) {
        const auto at = std::exchange(held, held + bytes->size());
        co_await runOn(files_, [file, look = to.onPiece, at, piece = *std::move(bytes)] {
            if (look) look(at, piece);
            file->write(piece);
        });
        if (to.onProgress) to.onProgress(held, whole);
    }
    co_await runOn(files_, [file] { file->sync(); });
}

}  // namespace dorix
