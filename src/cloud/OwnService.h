#pragma once

#include "base/Observable.h"
#include "base/async/Completion.h"
#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "platform/CompanionService.h"

#include <optional>
#include <string>
#include <string_view>

namespace dorix {

class AccountStore;
class APIError;
class DorixAPI;
class HttpClient;

/// For whoever uses DORIX alone: where the service's address is this computer's and nobody answers there, the
/// service is run as a child of the program and signed in to, over the ordinary wire, without the user.
/// Starts it again when it dies, each time after a longer wait. While it does not run, calls to it fail as
/// offline and nothing is sent: another user could listen in its place. Main executor.
class OwnService {
 public:
    /// The account that only the program which started the service may begin a session of.
    static constexpr std::string_view email = "local@dorix.localhost";

    /// All must outlive it.
    OwnService(Executor& executor, HttpClient& http, CompanionService& service, DorixAPI& api,
               AccountStore& account);
    OwnService(const OwnService&) = delete;
    OwnService& operator=(const OwnService&) = delete;
    ~OwnService();

    /// Whether it is a plain address of this computer, where the service would be run.
    static bool isOwn(std::string_view url);

    /// Sees to it that the address in force is answered; to be called once at start-up, and when the address
    /// has changed: what ran for an earlier one ends. Where another user's own service answers, the next free
    /// port is taken instead.
    void start();

    /// Done when it is known who answers, and the session with the own service has begun or failed to.
    Completion<void> settled() const { return settled_; }

    /// Whether a session with the service of this computer is all that is needed: the address is this
    /// computer's, and nobody has set up a service there. True also until that is known, and when it cannot
    /// be started: what needs no service works all the same.
    bool isResponsible() const { return isResponsible_; }

    /// Whether the service of this computer will not run until somebody has mended its settings, which are in
    /// the program's environment; the log tells what is wrong with them.
    Observable<bool> hasBadSettings;

    /// Whether a service for several users answers at an address, which may be far away.
    Task<bool> isServiceAt(std::string url);

    /// A session that has ended is begun anew, and the user need not hear of it: then true.
    bool mends(const APIError& error);

 private:
    enum class Answer { none, somethingElse, service };

    Task<void> work();
    Task<void> startAtFreePort();
    Task<Answer> answerAt(std::string url, double timeout);
    Task<void> launch(int port);
    void startLater();
    Task<void> signIn();
    Task<bool> trySignIn();
    Task<bool> isUp();
    bool isRunning() const;
    void ended(CompanionService::End how);

    HttpClient& http_;
    CompanionService& service_;
    DorixAPI& api_;
    AccountStore& account_;
    std::optional<int> port_;  // of the address, which is this computer's
    bool isResponsible_ = false;
    std::optional<std::string> secret_;  // while the service runs
    double startedAt_ = 0;
    int startedPort_ = 0;
    double pause_ = 0;  // seconds before it is started once more
    Timer restart_;
    Completion<void> settled_;
    std::optional<TaskHandle<void>> work_;
    TaskScope tasks_;
};

}  // namespace dorix
