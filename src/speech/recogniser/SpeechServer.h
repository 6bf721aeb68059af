#pragma once

#include "base/async/Executor.h"
#include "base/async/Task.h"
#include "localdata/ServerKey.h"
#include "recognition/ModelRequest.h"

#include <optional>
#include <string>

namespace dorix {

class Keychain;
class SettingsStore;

/// A server that recognises speech instead of a model on this computer: one of the user's own choosing, by
/// its address in the settings, and none unless there is one. Main executor; what it is given outlives it.
class SpeechServer {
 public:
    /// Of the keychain: the key that the server asks for.
    static constexpr auto keyAccount = "speech-server-key";

    SpeechServer(Executor& executor, SettingsStore& settings, Keychain& keychain)
        : executor_(executor), settings_(settings), key_(keychain, keyAccount) {}

    /// Before the first recognition, when the address has changed, and when the server has failed: a keychain
    /// may have been locked until now.
    Task<void> readKey();

    /// The key of the server that is named, as it was read or saved last.
    std::string key() const;
    /// Keeps it from now on, in place of any other server's; an empty one is none.
    Task<void> saveKey(std::string key);
    /// Whether the key that is kept is another server's.
    bool hasOthersKey() const { return key_.isKept() && key().empty(); }

    std::optional<ModelRequest> request(std::string language) const;

    /// It has failed on what was said, and rests for a minute, in which models come before it.
    void failed(const std::string& why);
    bool isResting() const { return executor_.now() < restsUntil_; }

    /// The name of the server where what is said leaves this computer, and the user has not been told so yet.
    std::optional<std::string> notice() const;
    void noticeShown();

 private:
    Executor& executor_;
    SettingsStore& settings_;
    ServerKey key_;
    double restsUntil_ = 0;
};

}  // namespace dorix
