#pragma once

#include "base/async/Task.h"

#include <optional>
#include <string>

namespace dorix {

class Keychain;

/// The token of the session in the keychain, which no server gets but the one that gave it. Beside it stands
/// whose it is, with the token once more: whatever a crash leaves of the two, or somebody changes by hand,
/// they do not go together then, and there is no session. Main executor.
class SessionToken {
 public:
    /// The account that the token is kept under.
    static constexpr const char* account = "session-token";
    /// Where it is told whose that is.
    static constexpr const char* ownerAccount = "session-server";

    /// The keychain must outlive it.
    explicit SessionToken(Keychain& keychain) : keychain_(keychain) {}

    /// The token, if it is of the server with that address. One of which nothing is told, as another program
    /// may have put it there, is taken for that server's, and no other's from then on.
    Task<std::optional<std::string>> of(std::string server);
    Task<void> keep(std::string token, std::string server);
    Task<void> forget();

 private:
    Keychain& keychain_;
    std::string known_;  // the last that was found in order: what is kept need not be asked for again
};

}  // namespace dorix
