#pragma once

#include "base/Observable.h"
#include "base/async/TaskScope.h"

#include <functional>
#include <optional>
#include <string>

namespace dorix {

class AccountStore;
class DorixAPI;
class OwnService;
class UserDefaults;

/// What the account window shows and does: signing in to the service with a code that it sends, signing out,
/// and which service it is. An error stays in its place until the next attempt. Main executor.
class AccountForm {
 public:
    enum class Step {
        thisComputer,  // the service runs here, for this user alone: there is nothing to do
        server,        // which service it is to be
        email,
        code,
        signedIn,
    };

    /// All must outlive it.
    AccountForm(Executor& executor, DorixAPI& api, AccountStore& account, OwnService& own,
                UserDefaults& defaults);
    AccountForm(const AccountForm&) = delete;
    AccountForm& operator=(const AccountForm&) = delete;

    Observable<Step> step{Step::email};
    /// That the code was sent to, or whose session it is.
    Observable<std::string> email;
    /// What went wrong, for the user.
    Observable<std::string> error;
    /// What went well, where nothing else shows it; until the next attempt.
    Observable<std::string> notice;
    /// Whether the service is being asked; what is begun meanwhile is not heard.
    Observable<bool> busy;

    /// The service's address as the user may know it; empty while it is this computer's.
    std::string server() const;

    /// To be called when the window opens: begins with what there is to do.
    void begin();

    void sendCode(const std::string& to);
    void resendCode();
    /// Six digits, in which blanks and hyphens do not count.
    void verify(const std::string& code);
    void changeEmail();
    void signOut();

    /// Asks for another service's address.
    void chooseServer();
    /// Goes over to it. The session with the present one ends.
    void useServer(const std::string& address);
    /// Goes back to the service of this computer.
    void useThisComputer();

 private:
    Task<void> attempt(Task<void> work, std::optional<Step> after, std::string done);
    void begin(Task<void> work, std::optional<Step> after, std::string done = {});
    void complain(const std::string& words);
    Task<void> askForCode(std::string address);
    Task<void> goOverTo(std::string address);
    Step firstStep() const;
    void show(Step next);

    DorixAPI& api_;
    AccountStore& account_;
    OwnService& own_;
    UserDefaults& defaults_;
    std::optional<double> codeSentAt_;  // by the executor's clock
    std::vector<Subscription> subscriptions_;
    TaskScope tasks_;
};

}  // namespace dorix
