#include "cloud/OwnService.h"

#include "base/Log.h"
#include "base/async/Sleep.h"
#include "base/text/Url.h"
#include "cloud/AccountStore.h"
#include "cloud/DorixAPI.h"
#include "platform/HttpClient.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace dorix {

namespace {

// Seconds.
constexpr double longestStart = 10;
constexpr double betweenLooks = 0.05;
constexpr double lookTimeout = 2;
constexpr double firstPause = 1;
constexpr double longestPause = 300;
constexpr double provenAfter = 60;  // it ran for so long that what ended it was something new

/// Ports that are tried, from the address's own on.
constexpr int portsTried = 20;

std::string urlAt(int port) { return "http://127.0.0.1:" + std::to_string(port); }

/// Where the address is a plain one of this computer.
std::optional<int> ownPort(std::string_view url) {
    constexpr std::string_view plain = "http://";
    const auto host = hostOf(url);
    if (!url.starts_with(plain) || (host != "127.0.0.1" && host != "localhost")) return std::nullopt;
    auto authority = url.substr(plain.size());
    authority = authority.substr(0, authority.find('/'));
    const auto colon = authority.rfind(':');
    if (colon == std::string_view::npos) return std::nullopt;  // the web's own port is not the user's to take
    int port = 0;
    const auto digits = authority.substr(colon + 1);
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    if (read.ec != std::errc() || port <= 0) return std::nullopt;
    return port;
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
    hasBadSettings.set(false);
    settled_.complete();
    settled_ = {};
    port_ = ownPort(api_.baseURL());
    isResponsible_ = port_.has_value();
    if (port_) {
        work_ = tasks_.spawn(work());
    } else {
        settled_.complete();
    }
}

Task<void> OwnService::work() {
    const auto settled = settled_;
    co_await startAtFreePort();
    settled.complete();
}

Task<void> OwnService::startAtFreePort() {
    for (int port = *port_; port < *port_ + portsTried; ++port) {
        switch (co_await answerAt(urlAt(port))) {
            case Answer::none:
                co_return co_await launch(port);
            case Answer::somethingElse:
                break;
            case Answer::service:
                // What is sent there is heard by whoever listens.
                if (port != *port_ || !service_.isTrusted(port)) break;
                // The one that the user, or somebody for them, has set up.
                isResponsible_ = false;
                co_return;
        }
    }
    logLine("no hay un puerto libre para el servicio de este equipo");
}

Task<bool> OwnService::isServiceAt(std::string url) {
    while (url.ends_with('/')) url.pop_back();
    co_return co_await answerAt(std::move(url)) == Answer::service;
}

/// Another user's own service is something else, as is a program that is none.
Task<OwnService::Answer> OwnService::answerAt(std::string url) {
    try {
        const auto answer = co_await http_.send({.url = url + "/healthz", .timeout = lookTimeout});
        const auto body = Json::parse(answer.body, nullptr, false);
        const auto says = [&](const char* what) {
            return body.is_object() && body.value(what, Json(false)) == true;
        };
        co_return says("ok") && !says("private") ? Answer::service : Answer::somethingElse;
    } catch (const HttpError& error) {
        co_return error.kind() == HttpError::Kind::unreachable ? Answer::none : Answer::somethingElse;
    }
}

Task<void> OwnService::launch(int port) {
    api_.useServer(urlAt(port));
    secret_ = service_.start("127.0.0.1:" + std::to_string(port), [this](auto how) { ended(how); });
    if (!secret_) co_return logLine("no se pudo iniciar el servicio de este equipo");
    startedAt_ = tasks_.executor().now();
    startedPort_ = port;
    co_await signIn();
}

void OwnService::ended(CompanionService::End how) {
    secret_.reset();
    if (work_) work_->cancel();
    if (how == CompanionService::End::badSettings) {
        logLine("el servicio de este equipo no admite su configuración");
        hasBadSettings.set(true);
        settled_.complete();
        return;
    }
    const bool isNew = tasks_.executor().now() - startedAt_ >= provenAfter;
    pause_ = isNew || pause_ == 0 ? firstPause : std::min(2 * pause_, longestPause);
    logLine("el servicio de este equipo ha terminado");
    settled_.complete();
    restart_.once(pause_, [this] { work_ = tasks_.spawn(work()); });
}

Task<void> OwnService::signIn() {
    if (!co_await isUp()) co_return logLine("el servicio de este equipo no responde");
    co_await account_.known();
    // A session of an earlier start still holds, unless the service tells that it does not.
    if (account_.loggedIn.get()) co_return co_await account_.refresh();
    try {
        co_await account_.requestCode(std::string(email));
        co_await account_.verify(std::string(email), secret_.value_or(""));
    } catch (const Error& error) {
        logLine("no se pudo entrar en el servicio de este equipo: " + error.localizedDescription());
    }
}

/// The secret is for the service that was started, and for nobody who has taken its port meanwhile.
Task<bool> OwnService::isUp() {
    const double deadline = tasks_.executor().now() + longestStart;
    while (!service_.listensOn(startedPort_)) {
        if (tasks_.executor().now() >= deadline) co_return false;
        co_await sleep(betweenLooks);
    }
    co_return true;
}

bool OwnService::mends(const APIError& error) {
    if (error != APIError::notLoggedIn() || !secret_) return false;
    work_ = tasks_.spawn(signIn());
    return true;
}

}  // namespace dorix
