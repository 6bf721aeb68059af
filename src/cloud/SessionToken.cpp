#include "cloud/SessionToken.h"

#include "platform/Keychain.h"

namespace dorix {

namespace {
std::string ownerOf(const std::string& token, const std::string& server) { return server + " " + token; }
}  // namespace

Task<std::optional<std::string>> SessionToken::of(std::string server) {
    // A session that begins meanwhile is whole at the second look.
    for (int look = 0; look < 2; ++look) {
        auto token = co_await keychain_.read(account);
        if (!token) co_return std::nullopt;
        const auto wanted = ownerOf(*token, server);
        if (wanted == known_) co_return token;
        const auto owner = co_await keychain_.read(ownerAccount);
        if (!owner) co_await keychain_.save(ownerAccount, wanted);
        if (owner && *owner != wanted) continue;
        known_ = wanted;
        co_return token;
    }
    co_return std::nullopt;
}

Task<void> SessionToken::keep(std::string token, std::string server) {
    co_await keychain_.save(ownerAccount, ownerOf(token, server));
    co_await keychain_.save(account, std::move(token));
}

Task<void> SessionToken::forget() {
    co_await keychain_.remove(account);
    co_await keychain_.remove(ownerAccount);
}

}  // namespace dorix
