#pragma once

#include "base/async/ManualExecutor.h"
#include "base/async/TaskScope.h"
#include "cloud/AccountStore.h"
#include "cloud/DorixAPI.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeHttpClient.h"
#include "fakes/FakeLanguageModel.h"
#include "fakes/MemoryUserDefaults.h"
#include "localdata/SettingsStore.h"
#include "platform/Keychain.h"
#include "writing/WritingRouter.h"

#include <functional>
#include <utility>

namespace dorix {

/// All engines and the router over them, in virtual time.
struct WritingBench {
    /// What the service does with each request.
    std::function<void(FakeHttpClient::Exchange&)> service = [](auto& exchange) { exchange.fail(); };

    ManualExecutor executor;
    MemoryUserDefaults defaults;
    FakeLoginItem loginItem;
    SettingsStore settings{defaults, loginItem, {}};
    FakeHttpClient http;
    MemoryKeychain keychain;
    DorixAPI api{executor, http, keychain, "https://dorix.example"};
    AccountStore account{executor, api, keychain, defaults, "Mesa"};
    FakeLanguageModel model;
    LocalPolisher local{model};
    WritingRouter router{settings, account, api, local};
    TaskScope tasks{executor};

    void signIn() {
        tasks.spawn(SessionToken(keychain).keep("token", api.baseURL()));
        executor.runPosted();
        account.loggedIn.set(true);
    }

    /// The task when `seconds` have passed, in which the service did what it does.
    template <typename T>
    TaskHandle<T> run(Task<T> task, double seconds = 60) {
        auto running = tasks.spawn(std::move(task));
        executor.runPosted();
        for (; served_ < http.exchanges.size(); ++served_) {
            service(http.exchanges[served_]);
            executor.runPosted();
        }
        executor.advanceBy(seconds);
        return running;
    }

 private:
    std::size_t served_ = 0;
};

}  // namespace dorix
