#pragma once

#include "base/Observable.h"
#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "dictation/AppState.h"
#include "onboarding/OnboardingRow.h"
#include "onboarding/SpeechSetup.h"

#include <functional>
#include <string>
#include <vector>

namespace dorix {

class AudioEngineFactory;
class KeyEventMonitors;
class Permissions;
class SettingsStore;

/// The first run, but for its window: its steps, what each of them shows, and what the user does there. While
/// the window is up, what the computer lets the program do is looked at each second. Main executor.
class Onboarding {
 public:
    enum class Step { welcome, permissions, practice, end };

    struct Means {
        Executor& executor;
        AppState& state;
        SettingsStore& settings;
        Permissions& permissions;
        AudioEngineFactory& audio;
        KeyEventMonitors& keyboard;
        SpeechSetup::Means speech;
    };

    /// All must outlive it.
    explicit Onboarding(const Means& means);
    Onboarding(const Onboarding&) = delete;
    Onboarding& operator=(const Onboarding&) = delete;

    /// Called when the user is through; whoever shows the window closes it.
    std::function<void()> onFinished = [] {};
    /// Called with each look at what the computer has: keys may have been let go of.
    std::function<void()> onLook = [] {};

    const Observable<Step>& step() const { return step_; }
    /// Something was dictated into the field to practise in.
    const Observable<bool>& hasPractised() const { return hasPractised_; }
    /// Tells of every change in what is shown besides, after it.
    Subscription observe(std::function<void()> observer) { return changed_.add(std::move(observer)); }

    /// The window comes up, at the first step or at one that something is missing for; and goes.
    void begin(Step first = Step::welcome);
    void end();

    void next();
    void back();
    /// The end: the user is not led through again.
    void finish();

    // What is shown, in the app language.
    OnboardingChoice appLanguage() const;
    std::vector<OnboardingRow> rows() const;
    OnboardingChoice language() const;
    /// Whether there is a hold key to be chosen; the choice has the keys of this keyboard alone.
    bool needsHoldKey() const;
    OnboardingChoice holdKey() const;
    std::string permissionsText() const;
    std::string practiceText() const;
    /// What is still missing, of which the end reminds; empty when nothing is.
    std::string missing() const;
    std::string endLabel() const;

    // What the user does.
    void chooseAppLanguage(const std::string& code);
    void chooseLanguage(const std::string& id);
    void chooseHoldKey(const std::string& storedName);
    void press(const std::string& row, const std::string& button);
    /// Whether the cursor stands in the field to practise in, and what stands there.
    void setFieldFocused(bool focused) { means_.state.practises.set(focused); }
    void fieldChanged(const std::string& text) { fieldText_ = text; }
    /// What was dictated has arrived in a field of our own.
    void dictated();
    const std::string& fieldText() const { return fieldText_; }

 private:
    void look();
    OnboardingRow microphoneRow() const;
    OnboardingRow accessibilityRow() const;
    OnboardingRow screenRow() const;
    void pressMicrophone();

    const Means means_;
    SpeechSetup speech_;
    Observable<Step> step_;
    Observable<bool> hasPractised_;
    Observers<> changed_;
    std::string fieldText_;
    bool hasMicrophone_ = true;
    bool hasNoSoundSettings_ = false;  // that could be opened
    Timer poll_;
    std::vector<Subscription> subscriptions_;
    TaskScope tasks_;
};

}  // namespace dorix
