#pragma once

#include "base/Observable.h"
#include "base/async/Completion.h"
#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "cloud/DorixAPI.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace dorix {

/// Which account it is.
struct Profile {
    std::string email;

    static Profile decode(const Json& json, const Decoder& decoder);
    Json encoded() const;
    bool operator==(const Profile&) const = default;
};

/// The login: whether there is a session with the cloud service, and whose. Main executor, which nothing here
/// blocks. What its verbs begin goes on when their caller does not wait any more.
class AccountStore {
 public:
    /// `device` is what the user calls this computer. All others must outlive the store, which takes the
    /// failures of the API's sessions from now on.
    AccountStore(Executor& executor, DorixAPI& api, Keychain& keychain, UserDefaults& defaults,
                 std::string device);
    ~AccountStore();
    AccountStore(const AccountStore&) = delete;
    AccountStore& operator=(const AccountStore&) = delete;

    /// May be absent for a moment while there is a session.
    Observable<std::optional<Profile>> profile;
    /// Whether there is a session: false until the keychain has been looked into, which `known` waits for.
    Observable<bool> loggedIn;
    const Completion<void>& known() const { return known_; }

    /// The user has to do something about the session, in the error's words.
    std::function<void(const APIError&)> onNeedsAttention = [](const APIError&) {};

    /// Has a code sent to the address. Throws what DorixAPI throws; nothing changes here.
    Task<void> requestCode(std::string email);
    /// Begins a session with the code that was sent. Throws likewise, and then there is the session that was.
    Task<void> verify(std::string email, std::string code);
    /// Asks whose session it is; a failure leaves everything as it is, unless it is that the session is none.
    Task<void> refresh();
    /// Ends the session, whether the service hears of it or not.
    Task<void> logout();
    /// The same before the service's address changes: when it returns nothing of the session is kept, also
    /// where the keychain has yet to tell of one.
    Task<void> leave();

    /// Refreshes now, and every half hour. Without a session nothing is asked of the service, and the
    /// keychain is looked into again: it may have been locked before.
    void startRefreshing();

 private:
    Task<void> lookForSession();
    Task<void> refreshSession();
    Task<void> signIn(std::string email, std::string code);
    Task<void> signOut();
    void apply(const Profile& current);
    void clearSession();
    void failed(const APIError& error);

    DorixAPI& api_;
    SessionToken token_;
    UserDefaults& defaults_;
    const std::string device_;
    Completion<void> known_;
    std::int64_t session_ = 0;  // counts those that have begun or ended: what comes late belongs to another
    Timer refreshTimer_;
    TaskScope tasks_;
};

}  // namespace dorix
