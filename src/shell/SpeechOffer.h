#pragma once

#include "base/Observable.h"
#include "base/async/TaskScope.h"
#include "dictation/AppState.h"
#include "platform/StatusItem.h"
#include "speech/models/ModelInstaller.h"
#include "speech/models/SpeechModels.h"

#include <functional>
#include <optional>
#include <string>

namespace dorix {

class DictationController;
class SettingsStore;

/// The way out where nothing recognises the language of dictation: a message tells which model does, and the
/// icon's menu installs it. What the model asks of the user, a licence that is not clear or much of the
/// computer's memory, is asked before. Main executor; what it is given outlives it.
class SpeechOffer {
 public:
    SpeechOffer(Executor& executor, const AppState& state, const SettingsStore& settings,
                SpeechModels& models, ModelInstaller& installer, DictationController& dictation,
                Observable<std::optional<double>>& progress);
    SpeechOffer(const SpeechOffer&) = delete;
    SpeechOffer& operator=(const SpeechOffer&) = delete;

    /// Called when a model has been installed.
    std::function<void()> onInstalled = [] {};

    /// Nothing recognises the language: told once the error that says so has been read.
    void languageMissing() { isMissing_ = true; }

    /// What the icon's menu has of it, as things stand, with a line below; mostly nothing.
    Menu menu();

 private:
    void follow(const HUDPhase& phase);
    Task<void> tell(std::string text);
    void chosen(const ModelOffer& offer);
    Task<void> install(ModelOffer offer);
    std::optional<ModelOffer> best() const;
    std::string languageLabel() const;

    const SettingsStore& settings_;
    SpeechModels& models_;
    ModelInstaller& installer_;
    DictationController& dictation_;
    Observable<std::optional<double>>& progress_;
    bool isMissing_ = false;
    bool isTold_ = false;     // the error that says so shows
    std::string askedAbout_;  // the model whose conditions the user has been told
    std::string installing_;  // the model that is on its way
    const Subscription hudObserver_;
    TaskScope tasks_;
};

}  // namespace dorix
