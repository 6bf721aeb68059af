#include "base/Json.h"
#include "service/api/Background.h"
#include "service/api/MailQueue.h"
#include "service/api/Routes.h"

#include <array>
#include <ctime>
#include <optional>

namespace dorix::service {

namespace {

constexpr std::size_t bodyLimit = 4096;

/// The members of a small body, all strings.
class Members {
 public:
    explicit Members(const std::string& body) : object_(Json::parse(body, nullptr, false)) {
        if (!object_.is_object()) throw HttpError{.status = 400, .message = Message::badBody};
    }

    std::optional<std::string> find(const char* name) const {
        const auto found = object_.find(name);
        if (found == object_.end() || !found->is_string()) return std::nullopt;
        return found->get<std::string>();
    }
    std::string get(const char* name) const {
        auto value = find(name);
        if (!value) throw HttpError{.status = 400, .message = Message::badBody};
        return *value;
    }

 private:
    Json object_;
};

std::string isoTime(std::int64_t seconds) {
    const std::time_t time = seconds;
    std::tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S.000Z", &parts);
    return text.data();
}

Awaitable<Reply> requestCode(Call call) {
    const Members members(co_await call.exchange.readBody(bodyLimit));
    const auto lang = members.find("lang");
    const auto language = lang ? languageAsked(*lang) : call.language();
    const auto outcome =
        co_await call.with.storage.run([&accounts = call.with.accounts, email = members.get("email"),
                                        address = call.exchange.head().address](Database& database) {
            return accounts.requestCode(database, email, address, secondsNow());
        });
    if (!outcome) co_return refusalResponse(outcome.error(), language);
    if (const auto& code = *outcome) {
        call.with.mail.add({.to = code->email, .code = code->code, .language = language});
    }
    co_return jsonResponse({{"ok", true}});
}

Awaitable<Reply> verify(Call call) {
    const Members members(co_await call.exchange.readBody(bodyLimit));
    const auto outcome = co_await call.with.storage.run(
        [&accounts = call.with.accounts, email = members.get("email"), code = members.get("code"),
         device = members.find("device").value_or(""),
         address = call.exchange.head().address](Database& database) {
            return accounts.verify(database, email, code, device, address, secondsNow());
        });
    if (!outcome) co_return refusalResponse(outcome.error(), call.language());
    co_return jsonResponse({{"token", outcome->token}, {"profile", {{"email", outcome->email}}}});
}

Awaitable<OrRefusal<void>> revoke(Call call, std::string id) {
    const auto& accounts = call.with.accounts;
    const auto& session = call.session;
    // The result of a thread cannot be void.
    const auto refusal = co_await call.with.storage.run([&accounts, session, id](Database& database) {
        const auto outcome = accounts.revoke(database, session, id);
        return outcome ? std::nullopt : std::optional(outcome.error());
    });
    if (refusal) co_return std::unexpected(*refusal);
    co_return OrRefusal<void>();
}

Awaitable<Reply> logout(Call call) {
    co_await call.exchange.readBody(bodyLimit);
    // Ended by another call at the same moment, it is ended all the same.
    co_await revoke(call, call.session.id);
    co_return jsonResponse({{"ok", true}});
}

Awaitable<Reply> me(Call call) { co_return jsonResponse({{"email", call.session.email}}); }

Awaitable<Reply> listSessions(Call call) {
    const auto sessions =
        co_await call.with.storage.run([&accounts = call.with.accounts, session = call.session](
                                           Database& database) { return accounts.list(database, session); });
    auto listed = Json::array();
    for (const auto& session : sessions) {
        listed.push_back({{"id", session.id},
                          {"device", session.device},
                          {"created", isoTime(session.created)},
                          {"lastUsed", isoTime(session.used)},
                          {"current", session.id == call.session.id}});
    }
    co_return jsonResponse({{"sessions", listed}});
}

Awaitable<Reply> revokeSession(Call call) {
    const auto outcome = co_await revoke(call, call.parameter);
    if (!outcome) co_return refusalResponse(outcome.error(), call.language());
    co_return jsonResponse({{"ok", true}});
}

}  // namespace

std::vector<Route> authRoutes() {
    return {
        {Method::post, "/v1/auth/request-code", Needs::nothing, &requestCode},
        {Method::post, "/v1/auth/verify", Needs::nothing, &verify},
        {Method::post, "/v1/auth/logout", Needs::session, &logout},
        {Method::get, "/v1/me", Needs::session, &me},
        {Method::get, "/v1/sessions", Needs::session, &listSessions},
        {Method::remove, "/v1/sessions/{id}", Needs::session, &revokeSession},
    };
}

}  // namespace dorix::service
