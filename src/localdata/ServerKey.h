#pragma once

#include "base/async/Task.h"

#include <string>
#include <utility>

namespace dorix {

class Keychain;

/// The key that a server of the user's asks for, in the keychain. It stands there with whose it is, and no
/// other server is given it when the address in the settings has become another. Main executor.
class ServerKey {
 public:
    /// The keychain must outlive it. `account` is where it is kept there.
    ServerKey(Keychain& keychain, std::string account) : keychain_(keychain), account_(std::move(account)) {}

    /// Looks at what is kept. A key of which nobody has told whose it is, as another program may have put it
    /// there, is taken for that of the server at `address`, and no other's from then on.
    Task<void> read(std::string address);

    /// The key of the server at that address, by what was read or saved last; empty where there is none.
    std::string of(const std::string& address) const;

    /// Whether there is one, whosever it is.
    bool isKept() const { return !kept_.empty(); }

    /// Keeps it from now on, in place of any other; an empty one is none.
    Task<void> save(std::string address, std::string key);

 private:
    Keychain& keychain_;
    const std::string account_;
    std::string kept_;  // as the keychain has it
    int saves_ = 0;
};

}  // namespace dorix
