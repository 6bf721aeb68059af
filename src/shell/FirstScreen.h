#pragma once

#include "base/Observable.h"
#include "base/async/TaskScope.h"
#include "onboarding/Onboarding.h"

namespace dorix {

struct AppState;
struct AppWindows;
class AccountStore;
class FirstRunHint;
class OwnService;
class Permissions;
class SettingsStore;
class SpeechPreparation;
class UserDefaults;

/// What the user meets when the program starts: the first run, what has gone missing since, the account where
/// there is no session, or the hint on how to begin. Main executor.
class FirstScreen {
 public:
    struct Parts {
        Executor& executor;
        const AppWindows& windows;
        AppState& state;
        SettingsStore& settings;
        UserDefaults& defaults;
        Permissions& permissions;
        AccountStore& account;
        OwnService& ownService;
        Onboarding& onboarding;
        FirstRunHint& hint;
        SpeechPreparation& speech;
    };

    /// What the parts refer to must outlive it.
    explicit FirstScreen(const Parts& parts);
    FirstScreen(const FirstScreen&) = delete;
    FirstScreen& operator=(const FirstScreen&) = delete;

    /// Once, at start-up.
    void show();

    /// Nobody is stopped before it is known whether there is a session.
    bool mayUse() const;
    /// Without a session there is first of all one to be begun.
    bool accountReady();

    void showAccount();
    /// One that is open goes on where the user is.
    void showOnboarding(Onboarding::Step first);

 private:
    Task<void> showWhatIsDue();
    Task<void> getReady();
    Task<bool> lacksGrants();
    void finished();
    void closed();

    const Parts parts_;
    const Subscription closing_;
    TaskScope tasks_;
};

}  // namespace dorix
