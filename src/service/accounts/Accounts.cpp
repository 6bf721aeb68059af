#include "service/accounts/Accounts.h"

#include "base/Uuid.h"
#include "base/text/Text.h"
#include "service/accounts/Email.h"
#include "service/accounts/Limits.h"
#include "service/accounts/Secrets.h"

#include <algorithm>
#include <utility>

namespace dorix::service {

namespace {

constexpr std::int64_t quarterHour = 900;
constexpr std::int64_t hour = 3600;
constexpr std::int64_t day = 86400;
constexpr std::size_t tokenBytes = 32;
constexpr std::size_t saltBytes = 16;
constexpr std::size_t longestDevice = 100;

constexpr Limit codesToEmail{"codes to", 5, quarterHour};
constexpr Limit codesFromAddress{"codes from", 30, quarterHour};
constexpr Limit triesForEmail{"tries for", 15, quarterHour};
// Six digits would be guessed in time by who is patient.
constexpr Limit triesForEmailInDay{"tries in a day for", 30, day};
constexpr Limit triesFromAddress{"tries from", 60, quarterHour};

/// The name that a computer gives itself, fit to be listed.
std::string cleanDevice(std::string_view device) {
    std::string clean(text::prefix(device, longestDevice));
    std::erase_if(clean,
                  [](char character) { return (character >= 0 && character < ' ') || character == '\x7f'; });
    return clean;
}

std::string codeHash(std::string_view salt, std::string_view email, std::string_view code) {
    return hashOf(std::string(salt) + "\n" + std::string(email) + "\n" + std::string(code));
}

void keepCode(Database& database, const CodeToSend& code, std::int64_t now) {
    const auto salt = randomHex(saltBytes);
    database.run(
        "INSERT INTO codes (email, salt, hash, expires, tries) VALUES ($1, $2, $3, $4, 0) "
        "ON CONFLICT (email) DO UPDATE SET salt = excluded.salt, hash = excluded.hash, "
        "expires = excluded.expires, tries = 0",
        {code.email, salt, codeHash(salt, code.email, code.code), std::to_string(now + codeSeconds)});
}

/// The hash of the code that is good for the address, when it is this one. Counts the try before it looks, so
/// that tries at the same moment count each.
std::optional<std::string> tryCode(Database& database, const std::string& email, std::string_view code,
                                   std::int64_t now) {
    const auto rows = database.run(
        "UPDATE codes SET tries = tries + 1 WHERE email = $1 AND tries < 5 AND expires > $2 "
        "RETURNING salt, hash",
        {email, std::to_string(now)});
    if (rows.empty()) return std::nullopt;
    const auto& salt = rows.front().at(0);
    const auto& hash = rows.front().at(1);
    if (!isSameSecret(hash, codeHash(salt, email, code))) return std::nullopt;
    return hash;
}

std::string accountOf(Database& database, const std::string& email, std::int64_t now) {
    database.run(
        "INSERT INTO accounts (id, email, created) VALUES ($1, $2, $3) ON CONFLICT (email) DO NOTHING",
        {makeUuid(), email, std::to_string(now)});
    return database.run("SELECT id FROM accounts WHERE email = $1", {email}).at(0).at(0);
}

/// A stolen mailbox or a program that signs in over and over fills no disk.
void dropSessionsBeyondMost(Database& database, const std::string& account) {
    database.run(
        "DELETE FROM sessions WHERE account = $1 AND token_hash NOT IN "
        "(SELECT token_hash FROM sessions WHERE account = $1 ORDER BY used DESC, created DESC LIMIT 100)",
        {account});
}

}  // namespace

Accounts::Accounts(Rules rules) : rules_(std::move(rules)) {}

OrRefusal<std::optional<CodeToSend>> Accounts::requestCode(Database& database, std::string_view email,
                                                           std::string_view address, std::int64_t now) const {
    const auto clean = cleanEmail(email);
    if (!clean) return std::unexpected(Refusal::badEmail);
    // The secret is there already.
    if (*clean == localEmail && !rules_.localSecret.empty()) return std::nullopt;
    if (!countWithin(database, codesFromAddress, address, now) ||
        !countWithin(database, codesToEmail, *clean, now)) {
        return std::unexpected(Refusal::tooManyCodes);
    }
    // Kept for those who may not have an account, too: the time that an answer takes is an answer.
    CodeToSend code{.email = *clean, .code = randomCode()};
    keepCode(database, code, now);
    return isAllowed(*clean) ? std::optional(std::move(code)) : std::nullopt;
}

bool Accounts::isAllowed(std::string_view email) const {
    return email == localEmail ? !rules_.localSecret.empty() : rules_.mayHaveAccount(email);
}

bool Accounts::isLocalSecret(std::string_view email, std::string_view code) const {
    return !rules_.localSecret.empty() && email == localEmail && isSameSecret(code, rules_.localSecret);
}

OrRefusal<SignedIn> Accounts::verify(Database& database, std::string_view email, std::string_view code,
                                     std::string_view device, std::string_view address,
                                     std::int64_t now) const {
    const auto clean = cleanEmail(email);
    if (!clean) return std::unexpected(Refusal::badEmail);
    // Before the limits, or anybody on this computer could keep its user out.
    if (isLocalSecret(*clean, code)) return signIn(database, *clean, device, now);
    if (!countWithin(database, triesFromAddress, address, now) ||
        !countWithin(database, triesForEmail, *clean, now) ||
        !countWithin(database, triesForEmailInDay, *clean, now)) {
        return std::unexpected(Refusal::tooManyTries);
    }
    const auto hash = tryCode(database, *clean, text::trim(code), now);
    if (!hash || !isAllowed(*clean)) return std::unexpected(Refusal::codeRefused);
    OrRefusal<SignedIn> outcome = std::unexpected(Refusal::codeRefused);
    database.transaction(Database::Turn::beside, [&] {
        const auto used =
            database.run("DELETE FROM codes WHERE email = $1 AND hash = $2 RETURNING email", {*clean, *hash});
        if (!used.empty()) outcome = signIn(database, *clean, device, now);
    });
    return outcome;
}

SignedIn Accounts::signIn(Database& database, const std::string& email, std::string_view device,
                          std::int64_t now) const {
    SignedIn signedIn{.token = randomHex(tokenBytes), .email = email};
    const auto account = accountOf(database, email, now);
    database.run(
        "INSERT INTO sessions (token_hash, id, account, device, created, used) VALUES ($1, $2, $3, $4, $5, "
        "$6)",
        {hashOf(signedIn.token), makeUuid(), account, cleanDevice(device), std::to_string(now),
         std::to_string(now)});
    dropSessionsBeyondMost(database, account);
    return signedIn;
}

OrRefusal<Session> Accounts::authenticate(Database& database, std::string_view token,
                                          std::int64_t now) const {
    if (token.size() != 2 * tokenBytes) return std::unexpected(Refusal::noSession);
    const auto hash = hashOf(token);
    const auto rows = database.run(
        "SELECT sessions.token_hash, sessions.id, sessions.account, accounts.email, sessions.used FROM "
        "sessions "
        "JOIN accounts ON accounts.id = sessions.account WHERE sessions.token_hash = $1",
        {hash});
    if (rows.empty()) return std::unexpected(Refusal::noSession);
    const auto& row = rows.front();
    const auto used = std::stoll(row.at(4));
    const bool isOver = used < now - rules_.sessionSeconds;
    if (!isSameSecret(row.at(0), hash) || isOver || !isAllowed(row.at(3))) {
        return std::unexpected(Refusal::noSession);
    }
    if (used < now - hour) {
        database.run("UPDATE sessions SET used = $1 WHERE token_hash = $2", {std::to_string(now), hash});
    }
    return Session{.id = row.at(1), .account = row.at(2), .email = row.at(3)};
}

OrRefusal<void> Accounts::countRequest(Database& database, const Session& session, std::int64_t now) const {
    if (rules_.requestsPerDay == 0) return {};
    const Limit limit{"requests of", rules_.requestsPerDay, day};
    if (!countWithin(database, limit, session.account, now)) return std::unexpected(Refusal::dayUsedUp);
    return {};
}

std::vector<ListedSession> Accounts::list(Database& database, const Session& session) const {
    std::vector<ListedSession> sessions;
    for (const auto& row : database.run("SELECT id, device, created, used FROM sessions WHERE account = $1 "
                                        "ORDER BY created DESC, id",
                                        {session.account})) {
        sessions.push_back({.id = row.at(0),
                            .device = row.at(1),
                            .created = std::stoll(row.at(2)),
                            .used = std::stoll(row.at(3))});
    }
    return sessions;
}

OrRefusal<void> Accounts::revoke(Database& database, const Session& session, std::string_view id) const {
    const auto gone = database.run("DELETE FROM sessions WHERE account = $1 AND id = $2 RETURNING id",
                                   {session.account, std::string(id)});
    if (gone.empty()) return std::unexpected(Refusal::unknownSession);
    return {};
}

void Accounts::tidy(Database& database, std::int64_t now) const {
    database.run("DELETE FROM codes WHERE expires <= $1", {std::to_string(now)});
    database.run("DELETE FROM counters WHERE ends <= $1", {std::to_string(now)});
    database.run("DELETE FROM sessions WHERE used < $1", {std::to_string(now - rules_.sessionSeconds)});
}

}  // namespace dorix::service
