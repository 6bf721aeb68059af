#include "cloud/AccountStore.h"

#include "localdata/Language.h"
#include "platform/UserDefaults.h"

#include <utility>

namespace dorix {

namespace {

constexpr const char* profileKey = "profile";
constexpr double refreshInterval = 1800;  // seconds
constexpr double authTimeout = 20;        // seconds

using Session = DorixAPI::Session;

/// The service has done what it was asked for.
struct Acknowledgement {
    bool ok = false;
    static Acknowledgement decode(const Json& json, const Decoder&) { return {json.at("ok").get<bool>()}; }
};

struct NewSession {
    std::string token;
    Profile profile;
    static NewSession decode(const Json& json, const Decoder& decoder) {
        return {json.at("token").get<std::string>(), Profile::decode(json.at("profile"), decoder)};
    }
};

std::optional<Profile> storedProfile(const UserDefaults& defaults, const Decoder& decoder) {
    const auto stored = defaults.value(profileKey);
    if (!stored) return std::nullopt;
    try {
        return Profile::decode(*stored, decoder);
    } catch (const Json::exception&) {
        return std::nullopt;  // and it stays as it is, for who can read it
    }
}

}  // namespace

Profile Profile::decode(const Json& json, const Decoder&) { return {json.at("email").get<std::string>()}; }

Json Profile::encoded() const { return {{"email", email}}; }

AccountStore::AccountStore(Executor& executor, DorixAPI& api, Keychain& keychain, UserDefaults& defaults,
                           std::string device)
    : profile(storedProfile(defaults, api.decoder())),
      api_(api),
      token_(keychain),
      defaults_(defaults),
      device_(std::move(device)),
      refreshTimer_(executor),
      tasks_(executor) {
    api_.onFailure = [this](const APIError& error) { failed(error); };
    tasks_.spawn(lookForSession());
}

AccountStore::~AccountStore() {
    api_.onFailure = [](const APIError&) {};
}

Task<void> AccountStore::lookForSession() {
    const auto session = session_;
    const auto token = co_await token_.of(api_.baseURL());
    if (session == session_) loggedIn.set(token.has_value());
    known_.complete();
}

void AccountStore::failed(const APIError& error) {
    if (error == APIError::notLoggedIn()) clearSession();
    onNeedsAttention(error);
}

Task<void> AccountStore::requestCode(std::string email) {
    const Json body{{"email", email}, {"lang", currentAppLanguage()}};
    co_await api_.post<Acknowledgement>("v1/auth/request-code", body, Session::none, authTimeout);
}

// The code is used up when the service answers, and the token comes only once: the tasks are the store's.
Task<void> AccountStore::verify(std::string email, std::string code) {
    co_await tasks_.spawn(signIn(std::move(email), std::move(code)));
}

Task<void> AccountStore::signIn(std::string email, std::string code) {
    const Json body{{"email", email}, {"code", code}, {"device", device_}};
    const auto server = api_.baseURL();
    const auto begun = co_await api_.post<NewSession>("v1/auth/verify", body, Session::none, authTimeout);
    if (server != api_.baseURL()) co_return;  // the session is with another one by now
    const auto session = ++session_;
    co_await token_.keep(begun.token, server);
    if (session != session_) co_return;
    loggedIn.set(true);
    apply(begun.profile);
}

Task<void> AccountStore::refresh() {
    const auto session = session_;
    try {
        const auto current = co_await api_.get<Profile>("v1/me");
        if (session == session_) apply(current);
    } catch (const Error&) {  // NOLINT(bugprone-empty-catch)
        // The next time will do; a session that is none has been told to us.
    }
}

Task<void> AccountStore::logout() { co_await tasks_.spawn(signOut()); }

Task<void> AccountStore::leave() {
    if (loggedIn.get()) co_await logout();
    clearSession();
    co_await token_.forget();
}

Task<void> AccountStore::signOut() {
    const auto session = session_;
    try {
        co_await api_.post<Acknowledgement>("v1/auth/logout", Json::object(), Session::required, authTimeout);
    } catch (const Error&) {  // NOLINT(bugprone-empty-catch)
        // It ends here in any case.
    }
    if (session == session_) clearSession();
}

void AccountStore::startRefreshing() {
    tasks_.spawn(refreshSession());
    refreshTimer_.repeat(refreshInterval, [this] { tasks_.spawn(refreshSession()); });
}

Task<void> AccountStore::refreshSession() {
    if (!loggedIn.get()) co_await lookForSession();
    if (loggedIn.get()) co_await refresh();
}

void AccountStore::apply(const Profile& current) {
    profile.set(current);
    defaults_.set(profileKey, current.encoded());
}

void AccountStore::clearSession() {
    ++session_;
    tasks_.spawn(token_.forget());
    defaults_.remove(profileKey);
    profile.set(std::nullopt);
    loggedIn.set(false);
}

}  // namespace dorix
