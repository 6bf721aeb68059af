#pragma once

#include "service/storage/Database.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix::service {

/// How long a code is good for.
inline constexpr std::int64_t codeSeconds = 600;

/// Why somebody does not get what they asked for.
enum class Refusal : std::uint8_t {
    badEmail,
    tooManyCodes,
    tooManyTries,
    codeRefused,  // wrong, too old, tried too often, or never asked for: nobody learns which
    noSession,
    unknownSession,
    dayUsedUp,
};

template <typename T>
using OrRefusal = std::expected<T, Refusal>;

/// A code to send to an address.
struct CodeToSend {
    std::string email;
    std::string code;
};

/// Whoever has a valid token.
struct Session {
    std::string id;  // no secret
    std::string account;
    std::string email;
};

struct SignedIn {
    std::string token;
    std::string email;
};

struct ListedSession {
    std::string id;
    std::string device;
    std::int64_t created = 0;
    std::int64_t used = 0;  // to within an hour
};

/// Codes, sessions and how much of everything. All state is in the database, so that instances can share it.
/// Times are whole seconds since 1970 and come from the caller. Any thread; every call blocks on the database
/// and throws StorageError.
class Accounts {
 public:
    struct Rules {
        /// Whether an address, in the form of cleanEmail, may have an account.
        std::function<bool(std::string_view email)> mayHaveAccount;
        std::int64_t sessionSeconds = 0;  // without use
        std::int64_t requestsPerDay = 0;  // 0: no limit
        /// The secret that is good as the code for localEmail alone, as often as it is shown. Empty: there is
        /// none.
        std::string localSecret;
    };

    explicit Accounts(Rules rules);

    /// Makes a code that takes the place of an older one. Nothing is to be sent to those who may not have an
    /// account, which is not for the caller to learn. `address` is who asks, for the limits.
    OrRefusal<std::optional<CodeToSend>> requestCode(Database& database, std::string_view email,
                                                     std::string_view address, std::int64_t now) const;

    /// A code is good once: of two who show it at the same moment one signs in.
    OrRefusal<SignedIn> verify(Database& database, std::string_view email, std::string_view code,
                               std::string_view device, std::string_view address, std::int64_t now) const;

    OrRefusal<Session> authenticate(Database& database, std::string_view token, std::int64_t now) const;

    /// Whether there is a limit for countRequest to hold.
    bool hasDailyLimit() const { return rules_.requestsPerDay > 0; }
    /// Counts one use of what has a limit a day.
    OrRefusal<void> countRequest(Database& database, const Session& session, std::int64_t now) const;

    std::vector<ListedSession> list(Database& database, const Session& session) const;
    OrRefusal<void> revoke(Database& database, const Session& session, std::string_view id) const;

    /// Drops what is over. To be called now and then.
    void tidy(Database& database, std::int64_t now) const;

 private:
    SignedIn signIn(Database& database, const std::string& email, std::string_view device,
                    std::int64_t now) const;
    /// Who is not allowed any more loses the sessions, too.
    bool isAllowed(std::string_view email) const;
    bool isLocalSecret(std::string_view email, std::string_view code) const;

    Rules rules_;
};

}  // namespace dorix::service
