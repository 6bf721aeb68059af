#pragma once

#include "base/async/Task.h"

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace dorix {

/// The user's secrets, by account; kept across runs, and from other users. Main executor, which is never
/// blocked: what was begun first is done first, and within some seconds, also when its task is cancelled
/// meanwhile. Nothing throws: a secret that cannot be read is absent, and one that cannot be kept is lost
/// with a line in the log. Values are in UTF-8; one that is not is absent.
class Keychain {
 public:
    virtual ~Keychain() = default;

    virtual Task<std::optional<std::string>> read(std::string account) = 0;
    virtual Task<void> remove(std::string account) = 0;
    /// In place of what the account holds.
    virtual Task<void> save(std::string account, std::string value) = 0;
};

/// Where there is nothing to keep secrets in: they last as long as the program.
class MemoryKeychain final : public Keychain {
 public:
    Task<std::optional<std::string>> read(std::string account) override {
        const auto found = values_.find(account);
        if (found == values_.end()) co_return std::nullopt;
        co_return found->second;
    }
    Task<void> remove(std::string account) override {
        values_.erase(account);
        co_return;
    }
    Task<void> save(std::string account, std::string value) override {
        values_.insert_or_assign(std::move(account), std::move(value));
        co_return;
    }

 private:
    std::map<std::string, std::string> values_;
};

}  // namespace dorix
