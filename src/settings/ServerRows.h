#pragma once

#include "base/async/TaskScope.h"
#include "localdata/SettingsStore.h"
#include "settings/SettingsRow.h"
#include "speech/recogniser/SpeechServer.h"

#include <functional>
#include <string>

namespace dorix {

/// A key that is kept for a server which is not named any more. Main executor.
SettingsRow othersKey(std::string id, std::function<void()> remove);

/// The user's own server that recognises speech instead of this computer. Main executor.
class ServerRows {
 public:
    /// All must outlive it. `changed` is called when the rows are others than they were.
    ServerRows(Executor& executor, SettingsStore& settings, SpeechServer& server,
               std::function<void()> changed);

    /// Looks into the keychain.
    void lookAnew() { tasks_.spawn(readKey()); }
    void addTo(SettingsRows& rows);

 private:
    void useServer(const std::string& address);
    SettingsRow address();
    SettingsRow key();
    Task<void> readKey();
    void saveKey(const std::string& key);

    SettingsStore& settings_;
    SpeechServer& server_;
    const std::function<void()> changed_;
    std::string refused_;  // what was entered and is no address
    std::vector<Subscription> subscriptions_;
    TaskScope tasks_;
};

}  // namespace dorix
