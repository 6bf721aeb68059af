#include "linux/secret/SecretKeychain.h"

#include "base/Log.h"
#include "base/async/Completion.h"

#include <utility>

namespace dorix {

namespace {
/// Of a secret as the file has it.
std::optional<std::string> textOf(const Json& secret) {
    if (secret.is_null()) return std::nullopt;
    return secret.get<std::string>();
}
}  // namespace

SecretKeychain::SecretKeychain(std::string service, std::filesystem::path file)
    : service_(std::move(service)), file_(std::move(file)) {}

Task<std::optional<std::string>> SecretKeychain::read(std::string account) {
    return runOn(thread_, [this, account = std::move(account)] { return find(account); });
}

Task<void> SecretKeychain::remove(std::string account) {
    return runOn(thread_, [this, account = std::move(account)] { keep(account, nullptr); });
}

Task<void> SecretKeychain::save(std::string account, std::string value) {
    return runOn(thread_,
                 [this, account = std::move(account), value = std::move(value)] { keep(account, value); });
}

std::optional<std::string> SecretKeychain::find(const std::string& account) {
    if (const auto pending = file_.pending(account)) {
        remember(account, textOf(*pending));
        if (handOver(account, *pending)) file_.drop(account);
    } else if (const auto kept = service_.read(account)) {
        remember(account, *kept);
    }
    const auto known = given_.find(account);
    if (known == given_.end()) return std::nullopt;
    return known->second;
}

void SecretKeychain::remember(const std::string& account, const std::optional<std::string>& secret) {
    if (secret) {
        given_.insert_or_assign(account, *secret);
    } else {
        given_.erase(account);
    }
}

/// What the file has of the account is older: until the service has the new secret, a crash must not bring it
/// back.
void SecretKeychain::keep(const std::string& account, const Json& secret) {
    const bool isKnown = given_.contains(account) || file_.pending(account);
    remember(account, textOf(secret));
    if (file_.pending(account)) file_.set(account, secret);
    if (const auto done = handOver(account, secret)) {
        file_.drop(account);
    } else if (isKnown || !secret.is_null() || !service_.isAbsent()) {
        // Where nobody keeps a secret there is nothing to be removed later.
        file_.set(account, secret);
        if (!secret.is_null()) tell(done.error());
    }
}

SecretService::Result<void> SecretKeychain::handOver(const std::string& account, const Json& secret) {
    return secret.is_null() ? service_.remove(account) : service_.save(account, secret.get<std::string>());
}

void SecretKeychain::tell(const std::string& reason) {
    if (std::exchange(told_, reason) == reason) return;
    logLine("the keychain cannot be used (" + reason +
            "); secrets are kept in a file that only its owner can read");
}

}  // namespace dorix
