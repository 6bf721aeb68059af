#pragma once

#include "base/Observable.h"
#include "base/async/TaskScope.h"
#include "localdata/ServerKey.h"
#include "modelserver/ModelClient.h"
#include "platform/LanguageModel.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

class Keychain;
class SettingsStore;

/// The language model of a computer whose system has none: that of a server which the user runs here, such
/// as many have one, or has named in the settings. Unless one is named only this computer is looked at, and
/// on it only what the user or the system runs. Who answers, and with which model, is remembered and looked
/// at anew when it is asked for and has not been for some time: nobody waits for that, and at rest nothing is
/// asked of anybody. Main executor.
class ModelServer final : public SystemLanguageModel {
 public:
    /// Of the keychain: the key that the named server asks for.
    static constexpr auto keyAccount = "model-server-key";

    /// What is known of it.
    struct State {
        Availability availability = Availability::deviceNotEligible;
        std::string server;    // its address; empty where there is none
        std::string model;     // the one that writes, or is to
        std::string embedder;  // the one that makes vectors of texts; empty where it has none

        bool operator==(const State&) const = default;
    };

    /// Whether who listens on a port of this computer may hear what the user dictates.
    using IsTrusted = std::function<bool(int port)>;

    /// All must outlive it.
    ModelServer(Executor& executor, SettingsStore& settings, HttpClient& http, Keychain& keychain,
                IsTrusted isTrusted);
    ModelServer(const ModelServer&) = delete;
    ModelServer& operator=(const ModelServer&) = delete;

    /// Looks at once; later looks follow by themselves, also when the settings change.
    void look();
    bool isLooking() const { return looking_ && !looking_->isDone(); }
    const Observable<State>& state() const { return state_; }

    /// Of the server that is named: what was read or kept last. It goes there over https alone, unless the
    /// server is this computer's.
    const Observable<std::string>& key() const { return key_; }
    /// Whether the key that is kept is another server's.
    bool hasOthersKey() const { return keptKey_.isKept() && key_.get().empty(); }
    /// Keeps the key from now on, and looks with it; an empty one is none.
    void useKey(const std::string& key);

    Availability availability() override;
    std::optional<std::string> farHost() const override;
    std::unique_ptr<LanguageModelSession> makeSession(std::string instructions) override;

    /// The vector of a text, by the server's model for that, which it must have. Of the user's documents
    /// nothing leaves the computer: without a server on it `embedder` is "". Throws ModelServerError.
    Task<std::vector<float>> embed(std::string text);
    /// The server's model for that; "" where there is none that may be asked.
    std::string embedder() const;

    /// The name of the server where what is dictated would leave this computer, and the user has not been
    /// told so yet. It is given nothing before.
    std::optional<std::string> notice() const;
    void noticeShown();

 private:
    class Session;

    Task<void> lookAround();
    Task<State> found();
    Task<State> foundHere();
    Task<State> stateOf(ModelEndpoint at);
    ModelEndpoint named(std::string url) const;
    bool isStillTrusted(const std::string& found) const;
    State withModel(State state, const std::vector<std::string>& models) const;
    Task<std::string> write(ModelClient::Chat chat, double timeout);
    ModelEndpoint endpoint() const;

    Executor& executor_;
    SettingsStore& settings_;
    const IsTrusted isTrusted_;
    ModelClient client_;
    Observable<State> state_;
    ServerKey keptKey_;
    Observable<std::string> key_;  // of the server that is named
    double lookedAt_;
    std::vector<Subscription> subscriptions_;
    std::optional<TaskHandle<void>> looking_;
    TaskScope tasks_;
};

}  // namespace dorix
