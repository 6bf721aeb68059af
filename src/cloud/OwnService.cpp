#include "cloud/OwnService.h"

#include "base/Log.h"
#include "base/async/Sleep.h"
#include "base/text/Url.h"
#include "cloud/AccountStore.h"
#include "cloud/DorixAPI.h"
#include "platform/HttpClient.h"

#include <algorithm>
#include <array>

namespace dorix {

namespace {

// Seconds.
constexpr double longestStart = 10;
constexpr double betweenLooks = 0.05;
constexpr double lookTimeout = 2;
constexpr double firstPause = 1;
constexpr double longestPause = 300;
constexpr double provenAfter = 60;  // it ran for so long that what ended it was something new

/// "127.0.0.1:8787", where the address is a plain one of this computer.
std::optional<std::string> listenAddress(std::string_view url) {
    constexpr std::string_view plain = "http://";
    if (!url.starts_with(plain)) return std::nullopt;
    const auto host = hostOf(url);
    if (host != "127.0.0.1" && host != "localhost") return std::nullopt;
    auto authority = url.substr(plain.size());
    authority = authority.substr(0, authority.find('/'));
    const auto colon = authority.rfind(':');
    const auto port = colon == std::string_view::npos ? std::string_view("80") : authority.substr(colon + 1);
    return "127.0.0.1:" + std::string(port);
}

}  // namespace

OwnService::OwnService(Executor& executor, HttpClient& http, CompanionService& service, DorixAPI& api,
                       AccountStore& account)
    : http_(http), service_(service), api_(api), account_(account), restart_(executor), tasks_(executor) {}

void OwnService::start() {
    if (work_) work_->cancel();
    restart_.stop();
    service_.end();
    secret_.reset();
    settled_.complete();
    settled_ = {};
    if (const auto address = listenAddress(api_.baseURL())) {
        work_ = tasks_.spawn(startWhereNobodyAnswers(*address));
    } else {
        settled_.complete();
    }
}

Task<void> OwnService::startWhereNobodyAnswers(std::string address) {
    // Whoever answers there is the one that the user, or somebody for them, has set up.
    if (!co_await isAnswered()) co_await launch(std::move(address));
    settled_.complete();
}

/// Whether anybody is there at all.
Task<bool> OwnService::isAnswered() {
    try {
        co_await http_.send({.url = api_.baseURL() + "/healthz", .timeout = lookTimeout});
        co_return true;
    } catch (const HttpError& error) {
        co_return error.kind() != HttpError::Kind::unreachable;
    }
}

Task<void> OwnService::launch(std::string address) {
    secret_ = service_.start(address, [this, address] { ended(address); });
    if (!secret_) co_return logLine("no se pudo iniciar el servicio de este equipo");
    startedAt_ = tasks_.executor().now();
    co_await signIn(*secret_);
}

void OwnService::ended(const std::string& address) {
    secret_.reset();
    if (work_) work_->cancel();
    const bool isNew = tasks_.executor().now() - startedAt_ >= provenAfter;
    pause_ = isNew || pause_ == 0 ? firstPause : std::min(2 * pause_, longestPause);
    logLine("el servicio de este equipo ha terminado");
    restart_.once(pause_, [this, address] { work_ = tasks_.spawn(startWhereNobodyAnswers(address)); });
}

Task<void> OwnService::signIn(std::string secret) {
    const double deadline = tasks_.executor().now() + longestStart;
    while (!co_await isAnswered()) {
        if (tasks_.executor().now() >= deadline) co_return logLine("el servicio de este equipo no responde");
        co_await sleep(betweenLooks);
    }
    co_await account_.known();
    // A session of an earlier start still holds, unless the service tells that it does not.
    if (account_.loggedIn.get()) co_return co_await account_.refresh();
    try {
        co_await account_.requestCode(std::string(email));
        co_await account_.verify(std::string(email), std::move(secret));
    } catch (const Error& error) {
        logLine("no se pudo entrar en el servicio de este equipo: " + error.localizedDescription());
    }
}

bool OwnService::mends(const APIError& error) {
    if (error != APIError::notLoggedIn() || !secret_) return false;
    work_ = tasks_.spawn(signIn(*secret_));
    return true;
}

}  // namespace dorix
