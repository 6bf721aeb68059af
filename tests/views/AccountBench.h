#pragma once

#include "cloud/AccountForm.h"
#include "cloud/AccountStore.h"
#include "cloud/DorixAPI.h"
#include "cloud/OwnService.h"
#include "fakes/FakeHttpClient.h"
#include "platform/CompanionService.h"
#include "platform/Keychain.h"

namespace dorix::testing {

/// What the account's window shows, over a web that the test answers for.
struct AccountBench {
    AccountBench(Executor& executor, UserDefaults& defaults)
        : api(executor, http, keychain, std::nullopt),
          account(executor, api, keychain, defaults, "Mesa"),
          own(executor, http, service, api, account),
          form(executor, api, account, own, defaults) {}

    FakeHttpClient http;
    MemoryKeychain keychain;
    UnavailableCompanionService service;
    DorixAPI api;
    AccountStore account;
    OwnService own;
    AccountForm form;
};

}  // namespace dorix::testing
