#pragma once

#include "base/Observable.h"
#include "base/async/TaskScope.h"
#include "speech/models/ModelInstaller.h"
#include "speech/models/SpeechModels.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace dorix {

/// The models that are on their way, for all who begin, show and stop installs. Main executor.
class ModelInstalls {
 public:
    struct State {
        std::optional<double> progress;  // 0 to 1 while it goes on
        bool isRemoving = false;
        std::string failure;  // of the last attempt, for the user

        bool operator==(const State&) const = default;
    };

    /// All must outlive it.
    ModelInstalls(Executor& executor, SpeechModels& models, ModelInstaller& installer);
    ModelInstalls(const ModelInstalls&) = delete;
    ModelInstalls& operator=(const ModelInstalls&) = delete;

    /// Tells of every change in the state of a model, after it.
    Subscription observe(std::function<void(const std::string& id)> observer) {
        return changes_.add(std::move(observer));
    }
    /// Called when a model has been installed or removed, before the observers are.
    std::function<void()> onModelsChanged = [] {};

    State of(const std::string& id) const;
    /// One that is on its way; "" when none is.
    std::string underWay() const;

    /// Begins an install; the user has accepted the licence. One that is on its way goes on.
    void install(const std::string& id);
    void cancel(const std::string& id) { installer_.cancel(id); }
    /// Takes a model off this computer.
    void remove(const std::string& id);

 private:
    Task<void> runInstall(std::string id);
    Task<void> runRemove(std::string id);
    bool isBusy(const std::string& id) const;
    void set(const std::string& id, State state);

    SpeechModels& models_;
    ModelInstaller& installer_;
    std::map<std::string, State> states_;
    Observers<std::string> changes_;
    TaskScope tasks_;
};

}  // namespace dorix
