#include "linux/curl/CurlLoop.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace dorix {

namespace {

constexpr long connectionsKept = 16;

CURLM* newMulti() {
    static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
    auto* multi = ready == CURLE_OK ? curl_multi_init() : nullptr;
    if (multi == nullptr) throw std::bad_alloc();
    return multi;
}

/// As libcurl takes it, in milliseconds.
int pollTimeout(std::optional<double> seconds) {
    constexpr double day = 86'400'000;
    return static_cast<int>(seconds ? std::min(std::ceil(*seconds * 1000), day) : day);
}

}  // namespace

CurlLoop::CurlLoop() : SerialExecutor(AtEnd::drop), multi_(newMulti()) {
    curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, connectionsKept);
}

CurlLoop::~CurlLoop() {
    stop();
    for (const auto& [handle, running] : std::exchange(running_, {})) {
        curl_multi_remove_handle(multi_.get(), handle);
        running.transfer->fail({HttpError::Kind::broken, "the program ends"});
    }
}

void CurlLoop::begin(std::shared_ptr<CurlTransfer> transfer) {
    post([this, transfer = std::move(transfer)] { add(transfer); });
}

void CurlLoop::drop(std::shared_ptr<CurlTransfer> transfer) {
    post([this, transfer = std::move(transfer)] { remove(transfer->handle()); });
}

void CurlLoop::resume(std::shared_ptr<CurlTransfer> transfer) {
    post([this, transfer = std::move(transfer)] {
        if (running_.contains(transfer->handle())) transfer->resume();
    });
}

void CurlLoop::add(const std::shared_ptr<CurlTransfer>& transfer) {
    try {
        auto* handle = transfer->prepare();
        running_[handle] = {.transfer = transfer};
        curl_multi_add_handle(multi_.get(), handle);
        watchPatience(handle);
    } catch (const HttpError& error) {
        transfer->fail(error);
    }
}

void CurlLoop::watchPatience(CURL* handle) {
    auto& running = running_.at(handle);
    const double left = running.transfer->patience();
    if (left > 0) {
        running.patience = after(left, [this, handle] { watchPatience(handle); });
    } else {
        running.patience = TimerId::none;
        remove(handle)->finish(CURLE_OPERATION_TIMEDOUT);
    }
}

/// nullptr when it does not run.
std::shared_ptr<CurlTransfer> CurlLoop::remove(CURL* handle) {
    const auto found = running_.extract(handle);
    if (found.empty()) return nullptr;
    cancel(found.mapped().patience);
    curl_multi_remove_handle(multi_.get(), handle);
    return found.mapped().transfer;
}

void CurlLoop::finishEnded() {
    int left = 0;
    while (const auto* message = curl_multi_info_read(multi_.get(), &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        const auto result = message->data.result;  // the message goes with the handle
        if (const auto transfer = remove(message->easy_handle)) transfer->finish(result);
    }
}

void CurlLoop::wait(std::optional<double> seconds) {
    int stillRunning = 0;
    curl_multi_poll(multi_.get(), nullptr, 0, pollTimeout(seconds), nullptr);
    curl_multi_perform(multi_.get(), &stillRunning);
    finishEnded();
}

void CurlLoop::wake() { curl_multi_wakeup(multi_.get()); }

}  // namespace dorix
