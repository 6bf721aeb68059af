#pragma once

#include "onboarding/OnboardingRow.h"
#include "speech/models/ModelInstalls.h"

#include <functional>
#include <optional>
#include <string>

namespace dorix {

class SettingsStore;

/// What recognises the language of dictation, or how that is to be had. Main executor.
class SpeechSetup {
 public:
    struct Means {
        const SettingsStore& settings;
        const SpeechModels& models;
        const ModelInstaller& installer;
        ModelInstalls& installs;
        /// The program recognises speech by itself, and not the system for it.
        bool needsModels = true;
    };

    /// All must outlive it.
    explicit SpeechSetup(const Means& means) : means_(means) {}

    /// Looks at what is there by now: some milliseconds on the disk.
    void look();

    bool isReady() const { return isReady_; }
    /// The language can be had neither now nor after an install.
    bool isHopeless() const { return !isReady_ && !offer_; }

    OnboardingRow row() const;
    void press(const std::string& button);

 private:
    void addOffer(OnboardingRow& row) const;

    const Means means_;
    bool isReady_ = false;
    std::optional<ModelOffer> offer_;  // where it is not
};

}  // namespace dorix
