#pragma once

#include "platform/PrivacyGrants.h"

#include <functional>

namespace dorix {

/// A Linux desktop has no grants to give: what is there may be used. So each answer tells whether the means
/// is there, and a request does what little can be done about it. Only the microphone comes and
/// goes while the program runs: that there is none now is no refusal, and shows when one is to be opened.
class LinuxPrivacyGrants final : public PrivacyGrants {
 public:
    /// Each is asked on the main executor whenever the grant is read, and answers at once.
    struct Means {
        std::function<bool()> hasRecogniser;
        /// Other applications can be looked into and typed into.
        std::function<bool()> canUseOtherApplications;
        std::function<bool()> canCaptureScreen;
        /// Accessibility may have been switched off in the desktop's settings.
        std::function<void()> switchOnAccessibility;
        /// False where no program for that is known.
        std::function<bool()> openSoundSettings;
    };

    explicit LinuxPrivacyGrants(Means means) : means_(std::move(means)) {}

    AuthorizationStatus microphoneStatus() const override { return AuthorizationStatus::authorized; }
    SpeechAuthorizationStatus speechStatus() const override {
        return means_.hasRecogniser() ? SpeechAuthorizationStatus::authorized
                                      : SpeechAuthorizationStatus::denied;
    }
    bool isProcessTrusted() const override { return means_.canUseOtherApplications(); }
    bool preflightScreenCaptureAccess() const override { return means_.canCaptureScreen(); }

    Task<void> requestMicrophone() override { co_return; }
    Task<void> requestSpeech() override { co_return; }
    void promptForTrust() override { means_.switchOnAccessibility(); }
    bool requestScreenCaptureAccess() override { return means_.canCaptureScreen(); }
    bool openPane(std::string_view name) override { return hasPane(name) && means_.openSoundSettings(); }
    bool hasPane(std::string_view name) const override { return name == "Privacy_Microphone"; }

 private:
    Means means_;
};

}  // namespace dorix
