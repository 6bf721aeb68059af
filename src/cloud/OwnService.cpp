#include "cloud/OwnService.h"

#include "base/Log.h"
#include "base/async/Sleep.h"
#include "base/text/Url.h"
#include "cloud/AccountStore.h"
#include "cloud/DorixAPI.h"
#include "localdata/Language.h"
#include "platform/HttpClient.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace dorix {

namespace {

// Seconds.
constexpr double longestStart = 10;
constexpr double betweenLooks = 0.05;
constexpr double lookTimeout = 2;  // on this computer
constexpr double farTimeout = 15;
constexpr double firstPause = 1;
constexpr double longestPause = 300;
constexpr double provenAfter = 60;  // it ran for so long that what ended it was something new

/// Ports that are tried, from the address's own on.
constexpr int portsTried = 20;
constexpr int lastPort = 65535;

double longer(double pause) { return std::min(2 * pause, longestPause); }

std::string urlAt(int port) { return "http://127.0.0.1:" + std::to_string(port); }

/// A plain address of this computer.
struct OwnAddress {
    int port = 0;
    std::string_view path;
};

std::optional<OwnAddress> ownAddress(std::string_view url) {
    constexpr std::string_view plain = "http://";
    const auto host = hostOf(url);
    if (!url.starts_with(plain) || (host != "127.0.0.1" && host != "localhost")) return std::nullopt;
    url.remove_prefix(plain.size());
    const auto authority = url.substr(0, url.find('/'));
    const auto hostAndPort = authority.substr(authority.rfind('@') + 1);  // npos + 1 is 0
    const auto colon = hostAndPort.find(':');
    if (colon == std::string_view::npos) return std::nullopt;  // the web's own port is not the user's to take
    OwnAddress own{.path = url.substr(authority.size())};
    const auto digits = hostAndPort.substr(colon + 1);
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), own.port);
    if (read.ec != std::errc() || own.port <= 0 || own.port > lastPort) return std::nullopt;
    return own;
}

}  // namespace

OwnService::OwnService(Executor& executor, HttpClient& http, CompanionService& service, DorixAPI& api,
                       AccountStore& account)
    : http_(http), service_(service), api_(api), account_(account), restart_(executor), tasks_(executor) {
    api_.isAnswered = [this] { return !isResponsible_ || isRunning(); };
}

OwnService::~OwnService() {
    api_.isAnswered = [] { return true; };
}

bool OwnService::isOwn(std::string_view url) { return ownAddress(url).has_value(); }

/// Who else has taken the port hears nothing of what is meant for the service.
bool OwnService::isRunning() const { return secret_ && service_.listensOn(startedPort_); }

void OwnService::start() {
    if (work_) work_->cancel();
    restart_.stop();
    service_.end();
    secret_.reset();
    hasBadSettings.set(false);
    settled_.complete();
    settled_ = {};
    const std::string address = api_.baseURL();
    const auto own = ownAddress(address);
    port_ = own ? std::optional(own->port) : std::nullopt;
    isResponsible_ = port_.has_value();
    if (own) {
        // Whom a name leads to is another question than who listens on the port.
        api_.useServer(urlAt(own->port).append(own->path));
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
    for (int port = *port_; port < *port_ + portsTried && port <= lastPort; ++port) {
        switch (co_await answerAt(urlAt(port), lookTimeout)) {
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
    logLine("there is no free port for this computer's service");
}

Task<bool> OwnService::isServiceAt(std::string url) {
    while (url.ends_with('/')) url.pop_back();
    co_return co_await answerAt(std::move(url), farTimeout) == Answer::service;
}

/// Another user's own service is something else, as is a program that is none.
Task<OwnService::Answer> OwnService::answerAt(std::string url, double timeout) {
    try {
        const auto answer = co_await http_.send({.url = url + "/healthz", .timeout = timeout});
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
    startedAt_ = tasks_.executor().now();
    startedPort_ = port;
    if (!secret_) {
        logLine("this computer's service could not be started");
        co_return startLater();
    }
    co_await signIn();
}

void OwnService::ended(CompanionService::End how) {
    secret_.reset();
    if (work_) work_->cancel();
    if (how == CompanionService::End::badSettings) {
        logLine("this computer's service does not accept its settings");
        hasBadSettings.set(true);
        settled_.complete();
        return;
    }
    logLine("this computer's service has ended");
    settled_.complete();
    startLater();
}

void OwnService::startLater() {
    const bool isNew = tasks_.executor().now() - startedAt_ >= provenAfter;
    pause_ = isNew || pause_ == 0 ? firstPause : longer(pause_);
    restart_.once(pause_, [this] { work_ = tasks_.spawn(work()); });
}

/// However slow the service is, and whatever it stumbles over at first.
Task<void> OwnService::signIn() {
    for (double pause = firstPause; !co_await trySignIn(); pause = longer(pause)) {
        settled_.complete();
        co_await sleep(pause);
    }
}

Task<bool> OwnService::trySignIn() {
    if (!co_await isUp()) {
        logLine("this computer's service does not answer");
        co_return false;
    }
    co_await account_.known();
    // A session of an earlier start still holds, unless the service tells that it does not.
    if (account_.loggedIn.get()) co_await account_.refresh();
    if (account_.loggedIn.get()) co_return true;
    try {
        co_await account_.requestCode(std::string(email));
        co_await account_.verify(std::string(email), secret_.value_or(""));
        co_return true;
    } catch (const Error& error) {
        logLine("no session with this computer's service: " + describedIn(LogLanguage::english, error));
        co_return false;
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
    // While signing in is under way it goes on, at its own pace.
    if (!work_ || work_->isDone()) work_ = tasks_.spawn(signIn());
    return true;
}

}  // namespace dorix
