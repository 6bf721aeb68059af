#include "localdata/ServerKey.h"

#include "base/text/Text.h"
#include "base/text/Url.h"
#include "platform/Keychain.h"

#include <utility>

namespace dorix {

namespace {

/// Scheme, host and port as they are written: what is written otherwise counts as another server.
std::string originOf(const std::string& address) {
    const auto host = address.find("://");
    if (host == std::string::npos) return {};
    return text::lowercase(address.substr(0, address.find_first_of("/?#", host + 3)));
}

std::string filed(const std::string& address, const std::string& key) {
    return originOf(address) + " " + key;
}

bool isFiled(const std::string& kept) { return isWebAddress(kept) && kept.contains(' '); }

}  // namespace

Task<void> ServerKey::read(std::string address) {
    const int saves = saves_;
    auto kept = (co_await keychain_.read(account_)).value_or("");
    if (saves != saves_) co_return;  // the user was faster
    if (!kept.empty() && !isFiled(kept)) {
        if (originOf(address).empty()) co_return;
        kept = filed(address, kept);
        co_await keychain_.save(account_, kept);
        if (saves != saves_) co_return;
    }
    kept_ = std::move(kept);
}

std::string ServerKey::of(const std::string& address) const {
    const auto owner = filed(address, "");
    return !originOf(address).empty() && kept_.starts_with(owner) ? kept_.substr(owner.size()) : "";
}

Task<void> ServerKey::save(std::string address, std::string key) {
    ++saves_;
    kept_ = key.empty() ? "" : filed(address, key);
    if (kept_.empty()) {
        co_await keychain_.remove(account_);
    } else {
        co_await keychain_.save(account_, kept_);
    }
}

}  // namespace dorix
