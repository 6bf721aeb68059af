#pragma once

#include "base/Observable.h"
#include "base/async/TaskScope.h"
#include "dictation/AppState.h"
#include "platform/StatusItem.h"
#include "speech/models/ModelInstalls.h"

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
                const SpeechModels& models, const ModelInstaller& installer, ModelInstalls& installs,
                DictationController& dictation, Observable<std::optional<double>>& progress);
    SpeechOffer(const SpeechOffer&) = delete;
    SpeechOffer& operator=(const SpeechOffer&) = delete;

    /// Shows the user all the models that there are to choose from; false where there is no window for that,
    /// and the menu installs the best by itself.
    std::function<bool()> showModels = [] { return false; };

    /// Nothing recognises the language: told once the error that says so has been read.
    void languageMissing() { isMissing_ = true; }

    /// What the icon's menu has of it, as things stand, with a line below; mostly nothing.
    Menu menu();

 private:
    void follow(const HUDPhase& phase);
    Task<void> tell(std::string text);
    void chosen(const ModelOffer& offer);
    void install(const ModelOffer& offer);
    void installChanged(const std::string& id);
    std::optional<ModelOffer> best() const;
    std::string languageLabel() const;

    const SettingsStore& settings_;
    const SpeechModels& models_;
    const ModelInstaller& installer_;
    ModelInstalls& installs_;
    DictationController& dictation_;
    Observable<std::optional<double>>& progress_;
    bool isMissing_ = false;
    bool isTold_ = false;     // the error that says so shows
    std::string askedAbout_;  // the model whose conditions the user has been told
    std::string begun_;       // the model whose install was begun here, and goes on
    std::string language_;    // that it is for
    const Subscription hudObserver_;
    const Subscription installObserver_;
    TaskScope tasks_;
};

}  // namespace dorix
